// Writes each event of an engine as one short line of text, which tests compare literally; states, reasons and features
// have the names of the protocol's vocabulary. An event whose text contradicts the description of the protocol fails
// the test. Events are delivered by the thread that waits for them, with no lock held.
#pragma once

#include <chrono>
#include <deque>
#include <mutex>
#include <string>
#include <vector>

#include "CommunicationsServiceEventIfc.h"
#include "EventTextCheck.h"
#include "telephone/calls/CallEngine.h"
#include "telephone/time/Condition.h"

namespace telephone::test {

class EventRecorder final : private CommunicationsServiceEventIfc
{
public:
    static constexpr std::chrono::seconds kDeadline{8};

    // The part of an incoming call that its line omits.
    struct Alert
    {
        std::string uri;
        std::string infoParam;
        bool automatic = false;
        sfiResourcePriority priority = sfiResourcePriorityNone;
    };

    EventPoster poster();

    // The next event; "nothing came" after the deadline.
    std::string next(std::chrono::milliseconds deadline = kDeadline);
    // That many next events.
    std::vector<std::string> next(std::size_t count);
    // Skips events until that one arrives; false after the deadline. `skipped` receives the others.
    bool waitFor(std::string const& line, std::vector<std::string>* skipped = nullptr);
    // The events that were not read yet.
    std::vector<std::string> rest();
    // The XML of the last conferenceStatusEvent, the body of the last CSTA event.
    std::string const& lastDocument() const { return lastDocument_; }
    Alert const& lastAlert() const { return lastAlert_; }
    // Of the last change of a call's state.
    sfiPreemptionCause lastPreemption() const { return lastPreemption_; }
    sfiSendOptions lastSendOptions() const { return lastSendOptions_; }
    sfiReplacesDisplay lastReplaces() const { return lastReplaces_; }
    bool lastCallBackPossible() const { return lastCallBackPossible_; }

private:
    void callStateChange(std::string const& lineURI, int callID, sfiCallState state, sfiReason reason,
                         sfiSendOptions sendOptions, std::string const& uri, std::string const& name,
                         sfiReplacesDisplay* replacesDisplay, sfiResourcePriority priority,
                         sfiPreemptionCause preemptionCause, std::string const& preemptionText,
                         bool callbackFeatureAvailable, sfiAdditionalCallInfo info) override;
    void registrationStateChange(std::string const& lineURI, int callID, bool registered,
                                 sfiRegistrationResult result) override;
    void incomingCall(std::string const& lineURI, int callID, std::string const& uri, std::string const& name,
                      std::string const& alertURI, std::string const& infoParam, bool autoAnswer, sfiCallType callType,
                      std::string const& diversionURI, std::string const& diversionName,
                      sfiForwardReason diversionReason, bool zipAutoAnswer, sfiResourcePriority priority,
                      sfiAdditionalCallInfo info, bool isVideoCall) override;
    void incomingPickupCall(std::string const& lineURI, int callID, std::string const& uri,
                            std::string const& name) override;
    void callHeld(std::string const& lineURI, int callID) override;
    void callRetrieved(std::string const& lineURI, int callID, std::string const& uri, std::string const& name,
                       sfiAdditionalCallInfo info, bool connectedToMediaServer) override;
    void featureSuccess(std::string const& lineURI, int callID, sfiFeature feature) override;
    void featureFailed(std::string const& lineURI, int callID, sfiFeature feature, sfiFeatureFailure failure) override;
    void remoteEndpointDetailsChanged(std::string const& lineURI, int callID, std::string const& uri,
                                      std::string const& name, bool exitConf, bool jointCall) override;
    void incomingCallMissed(std::string const& lineURI, int callID, std::string const& uri, std::string const& name,
                            sfiReason reason, std::string const& diversionURI, std::string const& diversionName,
                            sfiForwardReason diversionReason) override;
    void callForwarded(std::string const& lineURI, int callID, std::string const& callingParty,
                       std::string const& callingPartyName, std::string const& newDestination,
                       sfiForwardReason reason) override;
    void incomingAssociatedCall(std::string const& lineURI, int currentCallID, int newCallID) override;
    void devicesChanged() override;
    void messageWaiting(std::string const& lineURI, sfiMWIServiceType type, unsigned int newMessages,
                        unsigned int oldMessages, unsigned int newUrgentMessages, unsigned int oldUrgentMessages,
                        sfiMWIMessageReturnType returnType, sfiMWIAvailableInfo availInfo,
                        sfiMessagesWaiting messagesWaiting, std::string const& voiceMailNumber) override;
    void doNotDisturbSet(std::string const& deviceId, bool on) override;
    void agentStateSet(std::string const& deviceId, std::string const& agentState) override;
    void securityStatusChanged(std::string const& lineURI, int callID, sfiSecurityStatus status,
                               std::vector<int>& callIDs, std::vector<std::string>& lineURIs) override;
    void callRecordingStatus(std::string const& lineURI, int callID, std::string const& recorded) override;
    void preemptionStatusChanged(std::string const& lineURI, int callID, sfiResourcePriority priority,
                                 sfiPreemptionCause cause, std::string const& reason) override;
    void impactLevelChanged(std::string const& lineURI, int callID, sfiAdditionalCallInfo info) override;
    void systemStatusChange(std::string const& status, std::string const& statusInfo) override;
    void serverFeatureStatusChange(std::string const& lineURI, std::string const& status) override;
    void b2buaCSTAResponse(std::string const& lineURI, bool success, std::string const& body) override;
    void b2buaCSTAEventOrRequest(std::string const& lineURI, std::string const& body) override;
    void conferenceStatusEvent(std::string const& lineURI, int callID, std::string const& xmlContent) override;
    void callCompletionEvent(std::string const& lineURI, std::string const& uri, sfiCallCompletionType type,
                             sfiCallCompletionState state, bool displayOutcome) override;
    void callCompletionFailedEvent(std::string const& lineURI, std::string const& uri,
                                   sfiCallCompletionFailureType failure) override;
    void bluetoothAudioStatusChanged(std::string const& lineURI, int callID, bool audioEnabled, bool audioGateway,
                                     bool inBandRinging) override;
    void csCommunicationsServiceEvent(std::string const& unused) override;

    std::mutex mutex_;
    Condition posted_{"an event"};
    std::deque<Event> queue_;
    std::string line_;  // of the event that is being delivered
    std::string lastDocument_;
    Alert lastAlert_;
    sfiSendOptions lastSendOptions_ = sfiSendOptionsNone;
    sfiPreemptionCause lastPreemption_ = sfiPreemptionCauseNone;
    sfiReplacesDisplay lastReplaces_{};
    bool lastCallBackPossible_ = false;
    EventTextCheck textCheck_;
};

}  // namespace telephone::test
