#include "CommunicationsServiceEventProxy.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string_view>

#include "CommunicationsServiceFactories.h"
#include "Elements.h"
#include "platform/framework/FrameworkContext.h"
#include "platform/framework/ProxyRequest.h"
#include "platform/framework/Serializer.h"

using elements::Body;
using elements::element;
using elements::method;

namespace {
// Some events carry their line only up to its first NUL.
std::string_view upToNul(std::string const& text)
{
    return text.c_str();
}

// A party's text; without a NUL it ends with the array.
std::string_view party(char const (&text)[sfiReplacesDisplay::kPartySize])
{
    auto const* const end = std::find(std::begin(text), std::end(text), '\0');
    return {text, static_cast<std::size_t>(end - text)};
}
}  // namespace

extern "C" __attribute__((visibility("default"))) CommunicationsServiceEventProxy*
createCommunicationsServiceEventProxy()
{
    return new CommunicationsServiceEventProxy();
}

void CommunicationsServiceEventProxy::initProxy(ProxyRequest& request)
{
    request_ = &request;
    request.setProtocol("CommunicationsServiceProtocol");
}

void CommunicationsServiceEventProxy::setCallBackChan(Executable* executable)
{
    callBackChan_.clear();
    if (executable != nullptr && request_ != nullptr) {
        callBackChan_ = request_->context().findChannel(executable);
    }
}

template <typename... Pieces>
[[gnu::always_inline]] inline void CommunicationsServiceEventProxy::send(Pieces const&... pieces)
{
    request_->sendEvent(elements::join(pieces...));
}

void CommunicationsServiceEventProxy::callStateChange(std::string const& lineURI, int callID, sfiCallState state,
                                                      sfiReason reason, sfiSendOptions sendOptions,
                                                      std::string const& uri, std::string const& name,
                                                      sfiReplacesDisplay* replacesDisplay, sfiResourcePriority priority,
                                                      sfiPreemptionCause preemptionCause,
                                                      std::string const& preemptionText, bool callbackFeatureAvailable,
                                                      sfiAdditionalCallInfo info)
{
    send(method("CallStateChangeEvent"), element("LineID", lineURI), element("CallID", callID),
         element("CallState", state), element("Reason", reason), element("SendOptions", sendOptions),
         element("URI", uri), element("Name", name), element("GPUCLG", party(replacesDisplay->calling)),
         element("GPUCLGName", party(replacesDisplay->callingName)), element("GPUCLD", party(replacesDisplay->called)),
         element("GPUCLDName", party(replacesDisplay->calledName)), element("ResourcePriority", priority),
         element("PreemptionCause", preemptionCause), element("PreemptionText", preemptionText),
         element("CallBackFearureAvailable", callbackFeatureAvailable), element("ILCallLevel", info.callImpactLevel),
         element("ILLocalLevel", info.localImpactLevel));
}

void CommunicationsServiceEventProxy::registrationStateChange(std::string const& lineURI, int callID, bool registered,
                                                              sfiRegistrationResult result)
{
    send(method("RegistrationStateChangeEvent"), element("LineID", lineURI), element("CallID", callID),
         element("Registered", registered), element("RegistrationResult", result));
}

void CommunicationsServiceEventProxy::incomingCall(std::string const& lineURI, int callID, std::string const& uri,
                                                   std::string const& name, std::string const& alertURI,
                                                   std::string const& infoParam, bool autoAnswer, sfiCallType callType,
                                                   std::string const& diversionURI, std::string const& diversionName,
                                                   sfiForwardReason diversionReason, bool zipAutoAnswer,
                                                   sfiResourcePriority priority, sfiAdditionalCallInfo info,
                                                   bool isVideoCall)
{
    send(method("IncomingCallEvent"), element("LineID", lineURI), element("CallID", callID), element("URI", uri),
         element("Name", name), element("AlertInformation_AlertURI", alertURI),
         element("AlertInformation_InfoParam", infoParam), element("AlertInformation_AutoAnswer", autoAnswer),
         element("CallType", callType), element("DiversionURI", diversionURI), element("DiversionName", diversionName),
         element("DiversionReason", diversionReason), element("AICSZIPAutoAnswer", zipAutoAnswer),
         element("ResourcePriority", priority), element("ILCallLevel", info.callImpactLevel),
         element("ILLocalLevel", info.localImpactLevel), element("IsVideoCall", isVideoCall));
}

void CommunicationsServiceEventProxy::incomingPickupCall(std::string const& lineURI, int callID, std::string const& uri,
                                                         std::string const& name)
{
    send(method("IncomingPickupCallEvent"), element("LineID", lineURI), element("CallID", callID), element("URI", uri),
         element("Name", name));
}

void CommunicationsServiceEventProxy::callHeld(std::string const& lineURI, int callID)
{
    send(method("CallHeldEvent"), element("LineID", lineURI), element("CallID", callID));
}

void CommunicationsServiceEventProxy::callRetrieved(std::string const& lineURI, int callID, std::string const& uri,
                                                    std::string const& name, sfiAdditionalCallInfo info,
                                                    bool connectedToMediaServer)
{
    send(method("CallRetrievedEvent"), element("LineID", lineURI), element("CallID", callID), element("URI", uri),
         element("Name", name), element("ILCallLevel", info.callImpactLevel),
         element("ILLocalLevel", info.localImpactLevel), element("ConnectedToMediaServer", connectedToMediaServer));
}

void CommunicationsServiceEventProxy::featureSuccess(std::string const& lineURI, int callID, sfiFeature feature)
{
    send(method("FeatureSuccessEvent"), element("LineID", lineURI), element("CallID", callID),
         element("Feature", feature));
}

void CommunicationsServiceEventProxy::featureFailed(std::string const& lineURI, int callID, sfiFeature feature,
                                                    sfiFeatureFailure failure)
{
    send(method("FeatureFailedEvent"), element("LineID", lineURI), element("CallID", callID),
         element("Feature", feature), element("FeatureFailure", failure));
}

void CommunicationsServiceEventProxy::remoteEndpointDetailsChanged(std::string const& lineURI, int callID,
                                                                   std::string const& uri, std::string const& name,
                                                                   bool exitConf, bool jointCall)
{
    send(method("RemoteEndpointDetailsChangedEvent"), element("LineID", lineURI), element("CallID", callID),
         element("URI", uri), element("Name", name), element("exitConf", exitConf), element("jointCall", jointCall));
}

void CommunicationsServiceEventProxy::incomingCallMissed(std::string const& lineURI, int callID, std::string const& uri,
                                                         std::string const& name, sfiReason reason,
                                                         std::string const& diversionURI,
                                                         std::string const& diversionName,
                                                         sfiForwardReason diversionReason)
{
    send(method("IncomingCallMissedEvent"), element("LineID", lineURI), element("CallID", callID), element("URI", uri),
         element("Name", name), element("Reason", reason), element("DiversionURI", diversionURI),
         element("DiversionName", diversionName), element("DiversionReason", diversionReason));
}

void CommunicationsServiceEventProxy::callForwarded(std::string const& lineURI, int callID,
                                                    std::string const& callingParty,
                                                    std::string const& callingPartyName,
                                                    std::string const& newDestination, sfiForwardReason reason)
{
    send(method("CallForwardedEvent"), element("LineID", lineURI), element("CallID", callID),
         element("CallingParty", callingParty), element("CallingPartyName", callingPartyName),
         element("NewDestination", newDestination), element("Reason", reason));
}

void CommunicationsServiceEventProxy::devicesChanged()
{
    send(method("DevicesChangedEvent"));
}

void CommunicationsServiceEventProxy::doNotDisturbSet(std::string const& deviceId, bool on)
{
    send(method("DoNotDisturbEvent"), element("deviceId", deviceId), element("doNotDisturbOn", on));
}

void CommunicationsServiceEventProxy::agentStateSet(std::string const& deviceId, std::string const& agentState)
{
    send(method("AgentStateEvent"), element("deviceId", deviceId), element("agentState", agentState));
}

void CommunicationsServiceEventProxy::preemptionStatusChanged(std::string const& lineURI, int callID,
                                                              sfiResourcePriority priority, sfiPreemptionCause cause,
                                                              std::string const& reason)
{
    send(method("preemptionStatusChanged"), element("lineURI", lineURI), element("callId", callID),
         element("priority", priority), element("cause", cause), element("reason", reason));
}

void CommunicationsServiceEventProxy::impactLevelChanged(std::string const& lineURI, int callID,
                                                         sfiAdditionalCallInfo info)
{
    send(method("impactLevelChanged"), element("lineURI", lineURI), element("callId", callID),
         element("ILCallLevel", info.callImpactLevel), element("ILLocalLevel", info.localImpactLevel));
}

void CommunicationsServiceEventProxy::securityStatusChanged(std::string const& lineURI, int callID,
                                                            sfiSecurityStatus status, std::vector<int>& callIDs,
                                                            std::vector<std::string>& lineURIs)
{
    std::string const recordedCalls = Serializer::serialize(callIDs);
    std::string const recordedLines = Serializer::serialize(lineURIs);
    send(method("securityStatusChanged"), element("lineURI", lineURI), element("callId", callID),
         element("securityStatus", status), element("CallIDsRecorded", recordedCalls),
         element("CallLineURIsRecorded", recordedLines));
}

void CommunicationsServiceEventProxy::callRecordingStatus(std::string const& lineURI, int callID,
                                                          std::string const& recorded)
{
    send(method("callRecordingStatusEvent"), element("LineID", lineURI), element("callId", callID),
         element("callRecorded", recorded));
}

void CommunicationsServiceEventProxy::messageWaiting(std::string const& lineURI, sfiMWIServiceType type,
                                                     unsigned int newMessages, unsigned int oldMessages,
                                                     unsigned int newUrgentMessages, unsigned int oldUrgentMessages,
                                                     sfiMWIMessageReturnType returnType, sfiMWIAvailableInfo availInfo,
                                                     sfiMessagesWaiting messagesWaiting,
                                                     std::string const& voiceMailNumber)
{
    send(method("messageWaitingEvent"), element("LineID", lineURI), element("type", type),
         element("new_messages", newMessages), element("old_messages", oldMessages),
         element("new_urgent_messages", newUrgentMessages), element("old_urgent_messages", oldUrgentMessages),
         element("return_type", returnType), element("avail_info", availInfo),
         element("messages_waiting", messagesWaiting), element("voiceMailNumber", voiceMailNumber));
}

void CommunicationsServiceEventProxy::systemStatusChange(std::string const& status, std::string const& statusInfo)
{
    send(method("systemStatusEvent"), element("status", status), element("statusInfo", statusInfo));
}

void CommunicationsServiceEventProxy::serverFeatureStatusChange(std::string const& lineURI, std::string const& status)
{
    send(method("serverFeatureStatusEvent"), element("lineURI", lineURI), element("status", status));
}

void CommunicationsServiceEventProxy::b2buaCSTAResponse(std::string const& lineURI, bool success,
                                                        std::string const& body)
{
    send(method("b2buaCSTAResponse"), element("lineURI", lineURI), element("success", success), Body{body});
}

void CommunicationsServiceEventProxy::b2buaCSTAEventOrRequest(std::string const& lineURI, std::string const& body)
{
    send(method("b2buaCSTAEventOrRequest"), element("lineURI", lineURI), Body{body});
}

void CommunicationsServiceEventProxy::conferenceStatusEvent(std::string const& lineURI, int callID,
                                                            std::string const& xmlContent)
{
    send(method("conferenceStatusEvent"), element("LineID", upToNul(lineURI)), element("CallID", callID),
         element("XMLContent", xmlContent));
}

void CommunicationsServiceEventProxy::incomingAssociatedCall(std::string const& lineURI, int currentCallID,
                                                             int newCallID)
{
    send(method("IncomingAssociatedCallEvent"), element("LineID", upToNul(lineURI)),
         element("CurrentCallID", currentCallID), element("NewCallID", newCallID));
}

void CommunicationsServiceEventProxy::callCompletionEvent(std::string const& lineURI, std::string const& uri,
                                                          sfiCallCompletionType type, sfiCallCompletionState state,
                                                          bool displayOutcome)
{
    send(method("callCompletionEvent"), element("LineID", upToNul(lineURI)), element("URI", uri),
         element("CallCompletionType", type), element("CallCompletionState", state),
         element("DisplayOutcomeCallUI", displayOutcome));
}

void CommunicationsServiceEventProxy::callCompletionFailedEvent(std::string const& lineURI, std::string const& uri,
                                                                sfiCallCompletionFailureType failure)
{
    send(method("callCompletionFailedEvent"), element("LineID", upToNul(lineURI)), element("URI", uri),
         element("CallCompletionFailureType", failure));
}

void CommunicationsServiceEventProxy::bluetoothAudioStatusChanged(std::string const& lineURI, int callID,
                                                                  bool audioEnabled, bool audioGateway,
                                                                  bool inBandRinging)
{
    send(method("bluetoothAudioStatusChanged"), element("LineID", upToNul(lineURI)), element("CallID", callID),
         element("AudioEnabled", audioEnabled), element("AudioGateway", audioGateway),
         element("InBandRinging", inBandRinging));
}

void CommunicationsServiceEventProxy::csCommunicationsServiceEvent(std::string const& /*unused*/) {}
