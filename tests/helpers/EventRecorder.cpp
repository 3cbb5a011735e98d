#include "EventRecorder.h"

#include <utility>

#include "telephone/protocol/Vocabulary.h"
#include "telephone/sip/Uri.h"

namespace telephone::test {

namespace {

std::string join(std::initializer_list<std::string> words)
{
    std::string line;
    for (std::string const& word : words) {
        if (!line.empty()) {
            line += ' ';
        }
        line += word.empty() ? "-" : word;
    }
    return line;
}

std::string number(int value)
{
    return std::to_string(value);
}

}  // namespace

EventPoster EventRecorder::poster()
{
    return [this](Event event) {
        std::lock_guard const guard(mutex_);
        queue_.push_back(std::move(event));
        posted_.notifyAll();
    };
}

std::string EventRecorder::next(std::chrono::milliseconds deadline)
{
    Event event;
    {
        std::unique_lock lock(mutex_);
        if (!posted_.waitFor(lock, deadline, [this] { return !queue_.empty(); })) {
            return "nothing came";
        }
        event = std::move(queue_.front());
        queue_.pop_front();
    }
    line_.clear();
    event(*this);
    textCheck_.check(event);
    return line_;
}

std::vector<std::string> EventRecorder::next(std::size_t count)
{
    std::vector<std::string> lines;
    while (lines.size() < count) {
        lines.push_back(next(kDeadline));
        if (lines.back() == "nothing came") {
            break;
        }
    }
    return lines;
}

bool EventRecorder::waitFor(std::string const& line, std::vector<std::string>* skipped)
{
    auto const end = SteadyClock::now() + kDeadline;
    for (;;) {
        auto const left = std::chrono::duration_cast<std::chrono::milliseconds>(end - SteadyClock::now());
        std::string const came = next(std::max(left, std::chrono::milliseconds(0)));
        if (came == line) {
            return true;
        }
        if (skipped != nullptr) {
            skipped->push_back(came);
        }
        if (came == "nothing came") {
            return false;
        }
    }
}

std::vector<std::string> EventRecorder::rest()
{
    std::vector<std::string> lines;
    for (;;) {
        lines.push_back(next(std::chrono::milliseconds(0)));
        if (lines.back() == "nothing came") {
            lines.pop_back();
            return lines;
        }
    }
}

void EventRecorder::callStateChange(std::string const& lineURI, int callID, sfiCallState state, sfiReason reason,
                                    sfiSendOptions sendOptions, std::string const& uri, std::string const&,
                                    sfiReplacesDisplay* replaces, sfiResourcePriority, sfiPreemptionCause cause,
                                    std::string const&, bool callBackPossible, sfiAdditionalCallInfo)
{
    lastCallBackPossible_ = callBackPossible;
    lastReplaces_ = *replaces;
    lastPreemption_ = cause;
    lastSendOptions_ = sendOptions;
    line_ = join({"state", lineURI, number(callID), nameOfValue(enumerations::kCallState, state),
                  nameOfValue(enumerations::kReason, reason), sip::userOf(uri)});
}

void EventRecorder::registrationStateChange(std::string const& lineURI, int callID, bool registered,
                                            sfiRegistrationResult result)
{
    line_ = join({"registration", lineURI, number(callID), registered ? "yes" : "no", number(result)});
}

void EventRecorder::incomingCall(std::string const& lineURI, int callID, std::string const& uri,
                                 std::string const& name, std::string const& alertURI, std::string const& infoParam,
                                 bool automatic, sfiCallType callType, std::string const& diversionURI,
                                 std::string const&, sfiForwardReason diversionReason, bool,
                                 sfiResourcePriority priority, sfiAdditionalCallInfo, bool)
{
    lastAlert_ = {alertURI, infoParam, automatic, priority};
    line_ = join({"incoming", lineURI, number(callID), sip::userOf(uri), name, number(callType),
                  sip::userOf(diversionURI), number(diversionReason)});
}

void EventRecorder::incomingPickupCall(std::string const& lineURI, int callID, std::string const& uri,
                                       std::string const& name)
{
    line_ = join({"pickup", lineURI, number(callID), sip::userOf(uri), name});
}

void EventRecorder::callHeld(std::string const& lineURI, int callID)
{
    line_ = join({"held", lineURI, number(callID)});
}

void EventRecorder::callRetrieved(std::string const& lineURI, int callID, std::string const& uri, std::string const&,
                                  sfiAdditionalCallInfo, bool)
{
    line_ = join({"retrieved", lineURI, number(callID), sip::userOf(uri)});
}

void EventRecorder::featureSuccess(std::string const& lineURI, int callID, sfiFeature feature)
{
    line_ = join({"success", lineURI, number(callID), nameOfValue(enumerations::kFeature, feature)});
}

void EventRecorder::featureFailed(std::string const& lineURI, int callID, sfiFeature feature, sfiFeatureFailure failure)
{
    line_ = join({"failed", lineURI, number(callID), nameOfValue(enumerations::kFeature, feature), number(failure)});
}

void EventRecorder::remoteEndpointDetailsChanged(std::string const& lineURI, int callID, std::string const& uri,
                                                 std::string const&, bool exitConf, bool jointCall)
{
    line_ = join({"party", lineURI, number(callID), sip::userOf(uri), number(exitConf), number(jointCall)});
}

void EventRecorder::incomingCallMissed(std::string const& lineURI, int callID, std::string const& uri,
                                       std::string const&, sfiReason reason, std::string const& diversionURI,
                                       std::string const&, sfiForwardReason diversionReason)
{
    line_ = join({"missed", lineURI, number(callID), sip::userOf(uri), nameOfValue(enumerations::kReason, reason),
                  sip::userOf(diversionURI), number(diversionReason)});
}

void EventRecorder::callForwarded(std::string const& lineURI, int callID, std::string const& callingParty,
                                  std::string const&, std::string const& newDestination, sfiForwardReason reason)
{
    line_ = join(
        {"forwarded", lineURI, number(callID), sip::userOf(callingParty), sip::userOf(newDestination), number(reason)});
}

void EventRecorder::incomingAssociatedCall(std::string const& lineURI, int currentCallID, int newCallID)
{
    line_ = join({"associated", lineURI, number(currentCallID), number(newCallID)});
}

void EventRecorder::devicesChanged()
{
    line_ = "devices";
}

void EventRecorder::messageWaiting(std::string const& lineURI, sfiMWIServiceType type, unsigned int newMessages,
                                   unsigned int oldMessages, unsigned int newUrgentMessages,
                                   unsigned int oldUrgentMessages, sfiMWIMessageReturnType returnType,
                                   sfiMWIAvailableInfo availInfo, sfiMessagesWaiting messagesWaiting,
                                   std::string const& voiceMailNumber)
{
    line_ = join({"messages", lineURI, number(type), std::to_string(newMessages), std::to_string(oldMessages),
                  std::to_string(newUrgentMessages), std::to_string(oldUrgentMessages), number(returnType),
                  number(availInfo), number(messagesWaiting), voiceMailNumber});
}

void EventRecorder::doNotDisturbSet(std::string const& deviceId, bool on)
{
    line_ = join({"dnd", deviceId, number(on)});
}

void EventRecorder::agentStateSet(std::string const& deviceId, std::string const& agentState)
{
    line_ = join({"agent", deviceId, agentState});
}

void EventRecorder::securityStatusChanged(std::string const& lineURI, int callID, sfiSecurityStatus status,
                                          std::vector<int>&, std::vector<std::string>&)
{
    line_ = join({"security", lineURI, number(callID), number(status)});
}

void EventRecorder::callRecordingStatus(std::string const& lineURI, int callID, std::string const& recorded)
{
    line_ = join({"recording", lineURI, number(callID), recorded});
}

void EventRecorder::preemptionStatusChanged(std::string const& lineURI, int callID, sfiResourcePriority priority,
                                            sfiPreemptionCause cause, std::string const& reason)
{
    line_ = join({"preemption", lineURI, number(callID), number(priority), number(cause), reason});
}

void EventRecorder::impactLevelChanged(std::string const& lineURI, int callID, sfiAdditionalCallInfo)
{
    line_ = join({"impact", lineURI, number(callID)});
}

void EventRecorder::systemStatusChange(std::string const& status, std::string const& statusInfo)
{
    line_ = join({"system", status, statusInfo});
}

void EventRecorder::serverFeatureStatusChange(std::string const& lineURI, std::string const& status)
{
    line_ = join({"server", lineURI, status});
}

void EventRecorder::b2buaCSTAResponse(std::string const& lineURI, bool success, std::string const& body)
{
    lastDocument_ = body;
    line_ = join({"csta-response", lineURI, number(success)});
}

void EventRecorder::b2buaCSTAEventOrRequest(std::string const& lineURI, std::string const& body)
{
    lastDocument_ = body;
    line_ = join({"csta", lineURI});
}

void EventRecorder::conferenceStatusEvent(std::string const& lineURI, int callID, std::string const& xmlContent)
{
    lastDocument_ = xmlContent;
    line_ = join({"conference", lineURI, number(callID)});
}

void EventRecorder::callCompletionEvent(std::string const& lineURI, std::string const& uri, sfiCallCompletionType type,
                                        sfiCallCompletionState state, bool displayOutcome)
{
    line_ = join({"completion", lineURI, sip::userOf(uri), number(type), number(state), number(displayOutcome)});
}

void EventRecorder::callCompletionFailedEvent(std::string const& lineURI, std::string const& uri,
                                              sfiCallCompletionFailureType failure)
{
    line_ = join({"completion-failed", lineURI, sip::userOf(uri), number(failure)});
}

void EventRecorder::bluetoothAudioStatusChanged(std::string const& lineURI, int callID, bool, bool, bool)
{
    line_ = join({"bluetooth", lineURI, number(callID)});
}

void EventRecorder::csCommunicationsServiceEvent(std::string const&)
{
    line_ = "service";
}

}  // namespace telephone::test
