// Loads the given library and drives everything that crosses its edge: the factories, casts between interfaces, texts
// and lists both ways, an exception, virtual calls in each direction, and the exported tool class. Uses only the public
// headers; prints each fault and fails.
#include <cstddef>
#include <cstdio>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include <dlfcn.h>

#include "CommunicationsServiceEventIfc.h"
#include "CommunicationsServiceIfc.h"
#include "MediaRecordingServiceIfc.h"
#include "ParamaterExtractor.h"
#include "TeamServiceIfc.h"
#include "platform/framework/FrameworkContext.h"
#include "platform/framework/Invoker.h"
#include "platform/framework/InvokerResponse.h"
#include "platform/framework/Proxy.h"
#include "platform/framework/ProxyRequest.h"
#include "platform/framework/Service.h"
#include "platform/management/ManageableData.h"
#include "platform/management/MgmtAgentIfc.h"
#include "platform/physical/physicalEventObserver.h"
#include "tests/model/FakePlatform.h"
#include "tests/model/World.h"

namespace {
int failures = 0;

void check(bool holds, char const* what)
{
    if (!holds) {
        std::printf("wrong: %s\n", what);
        ++failures;
    }
}

void checkText(std::string const& actual, std::string const& expected)
{
    if (actual != expected) {
        std::printf("wrong: is \"%s\", expected \"%s\"\n", actual.c_str(), expected.c_str());
        ++failures;
    }
}

class Response final : public InvokerResponse
{
public:
    void finish() override { ++finished; }
    void sendResponse(char const* text, int length) override { answer.assign(text, static_cast<std::size_t>(length)); }
    std::string const& channelName() override { return channel; }

    int finished = 0;
    std::string answer;
    std::string channel = "application";
};

class Request final : public ProxyRequest
{
public:
    void setProtocol(std::string const& protocolName) override { protocol = protocolName; }
    void sendEvent(std::string const& message) override { event = message; }
    FrameworkContext& context() override { return context_; }

    std::string protocol;
    std::string event;

private:
    FrameworkContext context_;
};

class Library
{
public:
    explicit Library(char const* path)
        : handle_(dlopen(path, RTLD_NOW | RTLD_LOCAL))
    {
        if (handle_ == nullptr) {
            throw std::runtime_error(dlerror());
        }
    }
    ~Library() { dlclose(handle_); }
    Library(Library const&) = delete;
    Library& operator=(Library const&) = delete;

    template <class Function>
    Function* function(char const* name) const
    {
        void* const found = dlsym(handle_, name);
        if (found == nullptr) {
            throw std::runtime_error(dlerror());
        }
        return reinterpret_cast<Function*>(found);
    }

private:
    void* handle_;
};

std::string ask(Invoker& invoker, Executable& service, std::string const& request)
{
    Response response;
    invoker.handleMessage(&service, request.c_str(), static_cast<int>(request.size()), &response);
    check(response.finished == 1, "a request is finished once");
    return response.answer;
}

void driveRequests(Library const& library, Service& service, FakeContext& context)
{
    std::unique_ptr<Invoker> const invoker(library.function<Invoker*()>("createCommunicationsServiceInvoker")());
    invoker->initInvoker(&context);
    checkText(ask(*invoker, service, "<Method>GetDevices</Method>"),
              "a device with a name that is longer than any short text<groupPickup:10.0.0.1>");
    World::current().effects.clear();
    checkText(ask(*invoker, service,
                  "<Method>HoldCall</Method><Line>4712</Line><CallID>7</CallID><HoldCallReason>5</HoldCallReason>"
                  "<Manual>1</Manual>"),
              "sfiSuccess");
    check(World::current().effects ==
              std::vector<std::string>({"Lock()", "SetManualHold(2/1/7/0,1)", "CallFeature(2/1/7/0,5,,1)", "Unlock()"}),
          "the calls of a hold");
    checkText(ask(*invoker, service, "<Method>none</Method>"), "sfiFailure");
}

void driveInterfaces(Service& service)
{
    auto* const calls = dynamic_cast<CommunicationsServiceIfc*>(&service);
    auto* const team = dynamic_cast<TeamServiceIfc*>(&service);
    auto* const management = dynamic_cast<MgmtAgentIfc*>(&service);
    auto* const recording = dynamic_cast<MediaRecordingServiceIfc*>(&service);
    auto* const keys = dynamic_cast<physicalEventObserver*>(&service);
    check(calls && team && management && recording && keys, "a cast to an interface of the service");
    check(dynamic_cast<TeamServiceIfc*>(calls) == team, "a cast from one interface to another");

    std::vector<std::string> devices;
    check(calls->getDevices(devices) == sfiSuccess && devices.size() == 2, "a list that the library fills");
    checkText(devices.front(), "a device with a name that is longer than any short text");
    checkText(team->getShortDescription("4711"), "description of 4711");
    checkText(team->getEACockpitData("item"), "value of item");
    try {
        calls->systemStatus("MessagesPhonelet-Normal", nullptr);
        check(false, "a status text that must not be null was taken");
    } catch (std::logic_error const&) {
    }

    ManageableData data;
    data.setRootId("cfu-address", nullptr);
    World::current().serverFeatures = true;
    check(management->setData(data) == 0, "an item that the server owns");
    World::current().effects.clear();
    keys->buttonPressedEvent(PhysDefs::keyFunctionHold, 1, PhysDefs::actionPressed, "text");
    check(World::current().effects == std::vector<std::string>({"HandleKeyFunction(57)"}), "a key press");
    check(recording->activateRecording("4711"), "recording");
}

void driveEvents(Library const& library)
{
    Request request;
    std::unique_ptr<Proxy> const proxy(library.function<Proxy*()>("createCommunicationsServiceEventProxy")());
    proxy->initProxy(request);
    checkText(request.protocol, "CommunicationsServiceProtocol");
    auto* const events = dynamic_cast<CommunicationsServiceEventIfc*>(proxy.get());
    check(events != nullptr, "a cast to the events");
    events->featureFailed("line1", 4, sfiFeatureRetrieve, sfiFeatureFailureTimeout);
    checkText(request.event, "<Method>FeatureFailedEvent</Method><LineID>line1</LineID><CallID>4</CallID>"
                             "<Feature>7</Feature><FeatureFailure>2</FeatureFailure>");
    sfiReplacesDisplay replaces{};
    replaces.calling[0] = '5';
    events->callStateChange("4711", -1, sfiCallStateConnected, sfiReasonNormal, sfiSendOptionsInfo, "sip:a", "A",
                            &replaces, sfiResourcePriorityNone, sfiPreemptionCauseNone, "", true, {1, -2});
    checkText(request.event,
              "<Method>CallStateChangeEvent</Method><LineID>4711</LineID><CallID>-1</CallID><CallState>6</CallState>"
              "<Reason>0</Reason><SendOptions>2</SendOptions><URI>sip:a</URI><Name>A</Name><GPUCLG>5</GPUCLG>"
              "<GPUCLGName></GPUCLGName><GPUCLD></GPUCLD><GPUCLDName></GPUCLDName>"
              "<ResourcePriority>0</ResourcePriority><PreemptionCause>0</PreemptionCause>"
              "<PreemptionText></PreemptionText><CallBackFearureAvailable>1</CallBackFearureAvailable>"
              "<ILCallLevel>1</ILCallLevel><ILLocalLevel>-2</ILLocalLevel>");
    std::vector<int> ids = {1, 2};
    std::vector<std::string> lines = {"4711"};
    events->securityStatusChanged("4711", 1, sfiSecurityStatusSecure, ids, lines);
    checkText(request.event, "<Method>securityStatusChanged</Method><lineURI>4711</lineURI><callId>1</callId>"
                             "<securityStatus>2</securityStatus><CallIDsRecorded>2</CallIDsRecorded>"
                             "<CallLineURIsRecorded>1</CallLineURIsRecorded>");
}

// The tool class, by the symbols that a program linked against the library would use.
void driveTool(Library const& library)
{
    using Make = void(void*, std::string const&);
    using Number = int(void const*, std::string const&);
    auto* const make =
        library.function<Make>("_ZN18ParamaterExtractorC1ERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE");
    auto* const number = library.function<Number>(
        "_ZNK18ParamaterExtractor18getParamaterAsLongERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE");
    alignas(ParamaterExtractor) std::byte place[sizeof(ParamaterExtractor)];
    make(place, "a=1::b=22");
    auto* const extractor = std::launder(reinterpret_cast<ParamaterExtractor*>(place));
    check(number(extractor, "b") == 22, "a number of the tool class");
    // Through its virtual table.
    extractor->~ParamaterExtractor();
}

void drive(char const* path)
{
    World::current() = World();
    World::current().deviceList = {"a device with a name that is longer than any short text"};
    Library const library(path);
    FakeContext context;
    std::unique_ptr<Service> const service(library.function<Service*()>("createCommunicationsService")());
    service->init(context);
    service->timerEvent(4200);
    driveRequests(library, *service, context);
    driveInterfaces(*service);
    driveEvents(library);
    driveTool(library);
    service->shutdown();
}
}  // namespace

int main(int count, char** arguments)
{
    if (count != 2) {
        std::printf("usage: compat_driver LIBRARY\n");
        return 2;
    }
    World world;
    world.enter();
    try {
        drive(arguments[1]);
        drive(arguments[1]);  // a second time, after unloading
    } catch (std::exception const& error) {
        check(false, error.what());
    }
    for (auto const& violation : world.violations) {
        check(false, violation.c_str());
    }
    return failures == 0 ? 0 : 1;
}
