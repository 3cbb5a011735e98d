// Every event with arbitrary values: its text is that of a plain writer, and the extractors read the values back.
#include <sstream>
#include <utility>
#include <vector>

#include "FuzzInput.h"
#include "platform/framework/FrameworkContext.h"
#include "platform/framework/ProxyRequest.h"
#include "platform/framework/Serializer.h"
#include "src/CommunicationsServiceEventProxy.h"
#include "src/CommunicationsServiceInvoker.h"

namespace {
class Request final : public ProxyRequest
{
public:
    void setProtocol(std::string const& protocolName) override
    {
        require(protocolName == "CommunicationsServiceProtocol", "the protocol's name");
    }
    void sendEvent(std::string const& message) override { sent.push_back(message); }
    FrameworkContext& context() override { return context_; }

    std::vector<std::string> sent;

private:
    FrameworkContext context_;
};

// The expected fields of one event, in order.
class Expected
{
public:
    explicit Expected(char const* method) { add("Method", method); }

    template <class Value>
    Expected& add(char const* tag, Value const& value)
    {
        std::ostringstream text;
        text << value;
        fields_.emplace_back(tag, text.str());
        return *this;
    }
    Expected& body(std::string const& text)
    {
        body_ = text;
        return *this;
    }
    // Compares the one event that was sent since the last comparison.
    void compare(Request& request)
    {
        require(request.sent.size() == 1, "an event is not one message");
        auto const text = request.sent.front();
        request.sent.clear();
        std::string whole;
        bool plain = true;
        for (auto const& [tag, value] : fields_) {
            whole += "<" + tag + ">" + value + "</" + tag + ">";
            plain = plain && value.find('<') == std::string::npos;
        }
        requireEqual(text, whole + body_, "the text of an event");
        for (auto const& [tag, value] : fields_) {
            if (plain) {
                requireEqual(CommunicationsServiceInvoker::getParamAsString("<" + tag + ">", text, "</" + tag + ">"),
                             value, tag);
            }
        }
    }

private:
    std::vector<std::pair<std::string, std::string>> fields_;
    std::string body_;
};

class Events
{
public:
    explicit Events(FuzzInput& input)
        : line(input.text())
        , one(input.text())
        , two(input.text())
        , three(input.text())
        , four(input.text())
        , call(input.number())
        , number(input.number())
        , other(input.number())
        , yes(input.flag())
        , no(input.flag())
        , info{input.number(), input.number()}
    {
        proxy.initProxy(request);
    }

    template <class Enumeration>
    Enumeration as(int value) const
    {
        return static_cast<Enumeration>(value);
    }
    std::string cut() const { return line.c_str(); }

    void calls();
    void moreCalls();
    void features();
    void settings();

    CommunicationsServiceEventProxy proxy;
    Request request;
    std::string const line;
    std::string const one;
    std::string const two;
    std::string const three;
    std::string const four;
    int const call;
    int const number;
    int const other;
    bool const yes;
    bool const no;
    sfiAdditionalCallInfo const info;
};

template <std::size_t kSize>
void fill(char (&array)[kSize], std::string const& text)
{
    auto const size = std::min(text.size(), kSize);
    std::copy_n(text.begin(), size, array);
    std::fill(array + size, array + kSize, '\0');
}

// The text in such an array: up to its first NUL or its end.
std::string shown(std::string const& text)
{
    return std::string(text.substr(0, sfiReplacesDisplay::kPartySize).c_str());
}

void Events::calls()
{
    sfiReplacesDisplay replaces{};
    fill(replaces.calledName, one);
    fill(replaces.called, two);
    fill(replaces.callingName, three);
    fill(replaces.calling, four);
    proxy.callStateChange(line, call, as<sfiCallState>(number), as<sfiReason>(other), as<sfiSendOptions>(number), one,
                          two, &replaces, as<sfiResourcePriority>(other), as<sfiPreemptionCause>(call), three, yes,
                          info);
    Expected("CallStateChangeEvent")
        .add("LineID", line)
        .add("CallID", call)
        .add("CallState", number)
        .add("Reason", other)
        .add("SendOptions", number)
        .add("URI", one)
        .add("Name", two)
        .add("GPUCLG", shown(four))
        .add("GPUCLGName", shown(three))
        .add("GPUCLD", shown(two))
        .add("GPUCLDName", shown(one))
        .add("ResourcePriority", other)
        .add("PreemptionCause", call)
        .add("PreemptionText", three)
        .add("CallBackFearureAvailable", yes)
        .add("ILCallLevel", info.callImpactLevel)
        .add("ILLocalLevel", info.localImpactLevel)
        .compare(request);
    proxy.incomingCall(line, call, one, two, three, four, yes, as<sfiCallType>(number), two, one,
                       as<sfiForwardReason>(other), no, as<sfiResourcePriority>(call), info, yes);
    Expected("IncomingCallEvent")
        .add("LineID", line)
        .add("CallID", call)
        .add("URI", one)
        .add("Name", two)
        .add("AlertInformation_AlertURI", three)
        .add("AlertInformation_InfoParam", four)
        .add("AlertInformation_AutoAnswer", yes)
        .add("CallType", number)
        .add("DiversionURI", two)
        .add("DiversionName", one)
        .add("DiversionReason", other)
        .add("AICSZIPAutoAnswer", no)
        .add("ResourcePriority", call)
        .add("ILCallLevel", info.callImpactLevel)
        .add("ILLocalLevel", info.localImpactLevel)
        .add("IsVideoCall", yes)
        .compare(request);
    proxy.incomingCallMissed(line, call, one, two, as<sfiReason>(number), three, four, as<sfiForwardReason>(other));
    Expected("IncomingCallMissedEvent")
        .add("LineID", line)
        .add("CallID", call)
        .add("URI", one)
        .add("Name", two)
        .add("Reason", number)
        .add("DiversionURI", three)
        .add("DiversionName", four)
        .add("DiversionReason", other)
        .compare(request);
    proxy.incomingPickupCall(line, call, one, two);
    Expected("IncomingPickupCallEvent")
        .add("LineID", line)
        .add("CallID", call)
        .add("URI", one)
        .add("Name", two)
        .compare(request);
    proxy.incomingAssociatedCall(line, call, number);
    Expected("IncomingAssociatedCallEvent")
        .add("LineID", cut())
        .add("CurrentCallID", call)
        .add("NewCallID", number)
        .compare(request);
}

void Events::moreCalls()
{
    proxy.callHeld(line, call);
    Expected("CallHeldEvent").add("LineID", line).add("CallID", call).compare(request);
    proxy.callRetrieved(line, call, one, two, info, yes);
    Expected("CallRetrievedEvent")
        .add("LineID", line)
        .add("CallID", call)
        .add("URI", one)
        .add("Name", two)
        .add("ILCallLevel", info.callImpactLevel)
        .add("ILLocalLevel", info.localImpactLevel)
        .add("ConnectedToMediaServer", yes)
        .compare(request);
    proxy.callForwarded(line, call, one, two, three, as<sfiForwardReason>(number));
    Expected("CallForwardedEvent")
        .add("LineID", line)
        .add("CallID", call)
        .add("CallingParty", one)
        .add("CallingPartyName", two)
        .add("NewDestination", three)
        .add("Reason", number)
        .compare(request);
    proxy.remoteEndpointDetailsChanged(line, call, one, two, yes, no);
    Expected("RemoteEndpointDetailsChangedEvent")
        .add("LineID", line)
        .add("CallID", call)
        .add("URI", one)
        .add("Name", two)
        .add("exitConf", yes)
        .add("jointCall", no)
        .compare(request);
    proxy.conferenceStatusEvent(line, call, one);
    Expected("conferenceStatusEvent").add("LineID", cut()).add("CallID", call).add("XMLContent", one).compare(request);
    proxy.callRecordingStatus(line, call, one);
    Expected("callRecordingStatusEvent")
        .add("LineID", line)
        .add("callId", call)
        .add("callRecorded", one)
        .compare(request);
    proxy.impactLevelChanged(line, call, info);
    Expected("impactLevelChanged")
        .add("lineURI", line)
        .add("callId", call)
        .add("ILCallLevel", info.callImpactLevel)
        .add("ILLocalLevel", info.localImpactLevel)
        .compare(request);
    proxy.preemptionStatusChanged(line, call, as<sfiResourcePriority>(number), as<sfiPreemptionCause>(other), one);
    Expected("preemptionStatusChanged")
        .add("lineURI", line)
        .add("callId", call)
        .add("priority", number)
        .add("cause", other)
        .add("reason", one)
        .compare(request);
    std::vector<int> ids = {call, number};
    std::vector<std::string> lines = {one, two};
    proxy.securityStatusChanged(line, call, as<sfiSecurityStatus>(number), ids, lines);
    Expected("securityStatusChanged")
        .add("lineURI", line)
        .add("callId", call)
        .add("securityStatus", number)
        .add("CallIDsRecorded", Serializer::serialize(ids))
        .add("CallLineURIsRecorded", Serializer::serialize(lines))
        .compare(request);
}

void Events::features()
{
    proxy.featureSuccess(line, call, as<sfiFeature>(number));
    Expected("FeatureSuccessEvent").add("LineID", line).add("CallID", call).add("Feature", number).compare(request);
    proxy.featureFailed(line, call, as<sfiFeature>(number), as<sfiFeatureFailure>(other));
    Expected("FeatureFailedEvent")
        .add("LineID", line)
        .add("CallID", call)
        .add("Feature", number)
        .add("FeatureFailure", other)
        .compare(request);
    proxy.callCompletionEvent(line, one, as<sfiCallCompletionType>(number), as<sfiCallCompletionState>(other), no);
    Expected("callCompletionEvent")
        .add("LineID", cut())
        .add("URI", one)
        .add("CallCompletionType", number)
        .add("CallCompletionState", other)
        .add("DisplayOutcomeCallUI", no)
        .compare(request);
    proxy.callCompletionFailedEvent(line, one, as<sfiCallCompletionFailureType>(number));
    Expected("callCompletionFailedEvent")
        .add("LineID", cut())
        .add("URI", one)
        .add("CallCompletionFailureType", number)
        .compare(request);
    proxy.bluetoothAudioStatusChanged(line, call, yes, no, yes);
    Expected("bluetoothAudioStatusChanged")
        .add("LineID", cut())
        .add("CallID", call)
        .add("AudioEnabled", yes)
        .add("AudioGateway", no)
        .add("InBandRinging", yes)
        .compare(request);
    proxy.serverFeatureStatusChange(line, one);
    Expected("serverFeatureStatusEvent").add("lineURI", line).add("status", one).compare(request);
    proxy.b2buaCSTAResponse(line, yes, one);
    Expected("b2buaCSTAResponse").add("lineURI", line).add("success", yes).body(one).compare(request);
    proxy.b2buaCSTAEventOrRequest(line, one);
    Expected("b2buaCSTAEventOrRequest").add("lineURI", line).body(one).compare(request);
}

void Events::settings()
{
    auto const count = static_cast<unsigned int>(number);
    proxy.registrationStateChange(line, call, yes, as<sfiRegistrationResult>(number));
    Expected("RegistrationStateChangeEvent")
        .add("LineID", line)
        .add("CallID", call)
        .add("Registered", yes)
        .add("RegistrationResult", number)
        .compare(request);
    proxy.messageWaiting(line, as<sfiMWIServiceType>(number), count, count + 1, count + 2, 0,
                         as<sfiMWIMessageReturnType>(other), as<sfiMWIAvailableInfo>(call),
                         as<sfiMessagesWaiting>(number), one);
    Expected("messageWaitingEvent")
        .add("LineID", line)
        .add("type", number)
        .add("new_messages", count)
        .add("old_messages", count + 1)
        .add("new_urgent_messages", count + 2)
        .add("old_urgent_messages", 0)
        .add("return_type", other)
        .add("avail_info", call)
        .add("messages_waiting", number)
        .add("voiceMailNumber", one)
        .compare(request);
    proxy.doNotDisturbSet(one, yes);
    Expected("DoNotDisturbEvent").add("deviceId", one).add("doNotDisturbOn", yes).compare(request);
    proxy.agentStateSet(one, two);
    Expected("AgentStateEvent").add("deviceId", one).add("agentState", two).compare(request);
    proxy.systemStatusChange(one, two);
    Expected("systemStatusEvent").add("status", one).add("statusInfo", two).compare(request);
    proxy.devicesChanged();
    Expected("DevicesChangedEvent").compare(request);
    proxy.csCommunicationsServiceEvent(one);
    require(request.sent.empty(), "an event that carries nothing was sent");
}
}  // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    FuzzInput input(data, size);
    Events events(input);
    events.calls();
    events.moreCalls();
    events.features();
    events.settings();
    return 0;
}
