#include "CommunicationsServiceInvoker.h"

#include <algorithm>
#include <cstddef>
#include <typeinfo>

#include "CommunicationsServiceFactories.h"
#include "RequestTable.h"
#include "RequestText.h"
#include "TaggedText.h"
#include "platform/framework/Executable.h"
#include "platform/framework/FrameworkContext.h"
#include "platform/framework/InvokerResponse.h"
#include "platform/framework/Logging.h"
#include "platform/framework/Proxy.h"

namespace {
constexpr char const* kComponent = "SIP Communications Service";
constexpr char const* kSource = "src/CommunicationsServiceInvoker";

constexpr std::string_view kSignallingEvent = "SigEvent";
constexpr char kPayloadSeparator = ':';

// Whether the text up to its first ":" is the word of a signalling event.
bool isSignallingEvent(std::string_view message)
{
    std::string_view const rest = message.substr(std::min(message.size(), kSignallingEvent.size()));
    return message.substr(0, kSignallingEvent.size()) == kSignallingEvent &&
           (rest.empty() || rest.front() == kPayloadSeparator);
}

// The offset of the service's interface in objects of one type.
struct InterfacePlace
{
    std::type_info const* type{};  // null: the type lacks the interface
    std::ptrdiff_t offset{};
};

char* startOf(Executable& executable)
{
    return static_cast<char*>(dynamic_cast<void*>(&executable));
}

InterfacePlace findInterface(Executable& executable)
{
    auto* const service = dynamic_cast<CommunicationsServiceIfc*>(&executable);
    if (service == nullptr) {
        return {};
    }
    return {&typeid(executable), reinterpret_cast<char*>(service) - startOf(executable)};
}

// A checked cast. It takes as long as reading half a request, and the requests of one process go to services of one
// type: the offset is found once, for the first type; for any other type the cast is made each time.
CommunicationsServiceIfc* interfaceOf(Executable& executable)
{
    static InterfacePlace const kFirst = findInterface(executable);
    if (&typeid(executable) != kFirst.type) {
        return dynamic_cast<CommunicationsServiceIfc*>(&executable);
    }
    return reinterpret_cast<CommunicationsServiceIfc*>(startOf(executable) + kFirst.offset);
}
}  // namespace

extern "C" __attribute__((visibility("default"))) CommunicationsServiceInvoker* createCommunicationsServiceInvoker()
{
    return new CommunicationsServiceInvoker();
}

void CommunicationsServiceInvoker::initInvoker(FrameworkContext* context)
{
    context_ = context;
}

void CommunicationsServiceInvoker::handleMessage(Executable* service, char const* message, int length,
                                                 InvokerResponse* response)
{
    auto* const communications = service == nullptr ? nullptr : interfaceOf(*service);
    std::string_view const counted(message, static_cast<std::size_t>(length));
    if (loggingOnAppUni(kComponent, kLogDetail)) {
        logAppUni(kComponent, kSource, kLogDetail, __LINE__, "handleMessage(msg = \"%s\")", message);
    }
    if (isSignallingEvent(counted)) {
        passSignallingEvent(communications, std::string(counted));
    } else {
        handleRequest(communications, message, counted, response);
    }
    if (response != nullptr) {
        response->finish();
    }
}

// The count passed on has always been one more than the bytes of the payload; the NUL behind the payload keeps that
// readable.
void CommunicationsServiceInvoker::passSignallingEvent(CommunicationsServiceIfc* service, std::string const& notice)
{
    if (service == nullptr) {
        return;
    }
    auto const separator = notice.find(kPayloadSeparator);
    int const position = separator == std::string::npos ? -1 : static_cast<int>(separator);
    service->processSignallingComponentEvent(notice.c_str() + position + 1, static_cast<int>(notice.size()) - position);
}

void CommunicationsServiceInvoker::handleRequest(CommunicationsServiceIfc* service, char const* message,
                                                 std::string_view counted, InvokerResponse* response)
{
    // The method is read within the given length, the parameters up to the text's NUL. Nearly always the two are the
    // same.
    RequestText const request(message);
    auto const method = request.whole().size() == counted.size()
                            ? request.value("Method")
                            : tagged_text::valueBetween("<Method>", counted, "</Method>");
    RequestTable::Row const* const row = RequestTable::find(method.value_or(std::string_view()));
    std::string answer;
    if (row != nullptr && service != nullptr) {
        answer = row->handle(*this, service, request, response);
    }
    if (loggingOnAppUni(kComponent, kLogDetail)) {
        logAppUni(kComponent, kSource, kLogDetail, __LINE__, "handleMessage - exiting with response: \"%s\")",
                  answer.c_str());
    }
    bool const silent = row != nullptr && !row->answers;
    if (silent || response == nullptr) {
        return;
    }
    if (answer.empty()) {
        answer = genterateReturnString(sfiFailure);
    }
    response->sendResponse(answer.c_str(), static_cast<int>(answer.size()));
}

std::string CommunicationsServiceInvoker::getParamAsString(std::string const& opening, std::string const& message,
                                                           std::string const& closing)
{
    return std::string(tagged_text::valueBetween(opening, message, closing).value_or(std::string_view()));
}

int CommunicationsServiceInvoker::getParamAsLong(std::string const& opening, std::string const& message,
                                                 std::string const& closing)
{
    auto const value = tagged_text::valueBetween(opening, message, closing);
    return value ? tagged_text::decimal(*value) : RequestText::kMissingInteger;
}

sfiServiceState CommunicationsServiceInvoker::getParamAsServiceState(std::string const& opening,
                                                                     std::string const& message,
                                                                     std::string const& closing)
{
    return tagged_text::serviceStateBetween(opening, message, closing);
}

std::string CommunicationsServiceInvoker::genterateReturnString(sfiResult result)
{
    switch (result) {
    case sfiSuccess:
        return "sfiSuccess";
    case sfiFailureCallBackInvalidState:
        return "sfiFailureCallBackInvalidState";
    case sfiFailureCallBackNoCallInfo:
        return "sfiFailureCallBackNoCallInfo";
    case sfiFailureCallBackToMany:
        return "sfiFailureCallBackToMany";
    case sfiFailureCallBackAllreadyExists:
        return "sfiFailureCallBackAllreadyExists";
    case sfiFailure:
        break;
    }
    return "sfiFailure";
}

std::string CommunicationsServiceInvoker::SystemStatus(CommunicationsServiceIfc* service, RequestText const& request,
                                                       InvokerResponse* /*response*/)
{
    std::string const status = request.text("SystemStatus");
    std::string const info = request.text("SystemStatusInfo");
    return genterateReturnString(service->systemStatus(status.c_str(), info.c_str()));
}

std::string CommunicationsServiceInvoker::Subscribe(CommunicationsServiceIfc* service, RequestText const& /*request*/,
                                                    InvokerResponse* response)
{
    static std::string const kEventInterface = "CommunicationsServiceEventIfc";
    if (context_ == nullptr || response == nullptr) {
        return genterateReturnString(sfiFailure);
    }
    Proxy* const proxy = context_->findProxy(kEventInterface, response->channelName());
    if (proxy == nullptr) {
        return genterateReturnString(sfiFailure);
    }
    return genterateReturnString(service->subscribe(proxy));
}
