// Subscribes to nothing but recording events, and keeps each as one line of text. `post` is called as the dispatcher's,
// on any thread; a test waits for what it expects.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

#include "CommunicationsServiceEventIfc.h"

class EventLog : public CommunicationsServiceEventIfc
{
public:
    virtual ~EventLog() = default;

    template <typename Event>
    void post(Event const& event)
    {
        std::lock_guard const guard(mutex_);
        event(*this);
        arrived_.notify_all();
    }
    std::vector<std::string> lines() const
    {
        std::lock_guard const guard(mutex_);
        return lines_;
    }
    bool waitFor(std::size_t count)
    {
        std::unique_lock guard(mutex_);
        return arrived_.wait_for(guard, std::chrono::seconds(20), [&] { return lines_.size() >= count; });
    }

    void callRecordingStatus(std::string const& lineURI, int callID, std::string const& recorded) override
    {
        lines_.push_back("recording " + lineURI + " " + std::to_string(callID) + " " + recorded);
    }
    void securityStatusChanged(std::string const& lineURI, int callID, sfiSecurityStatus status,
                               std::vector<int>& callIDs, std::vector<std::string>& lineURIs) override
    {
        std::string line = "security " + lineURI + " " + std::to_string(callID) + " " + std::to_string(status) + " of";
        for (std::size_t i = 0; i < callIDs.size(); ++i) {
            line += " " + lineURIs[i] + ":" + std::to_string(callIDs[i]);
        }
        lines_.push_back(line);
    }

    void callStateChange(std::string const&, int, sfiCallState, sfiReason, sfiSendOptions, std::string const&,
                         std::string const&, sfiReplacesDisplay*, sfiResourcePriority, sfiPreemptionCause,
                         std::string const&, bool, sfiAdditionalCallInfo) override
    {}
    void registrationStateChange(std::string const&, int, bool, sfiRegistrationResult) override {}
    void incomingCall(std::string const&, int, std::string const&, std::string const&, std::string const&,
                      std::string const&, bool, sfiCallType, std::string const&, std::string const&, sfiForwardReason,
                      bool, sfiResourcePriority, sfiAdditionalCallInfo, bool) override
    {}
    void incomingPickupCall(std::string const&, int, std::string const&, std::string const&) override {}
    void callHeld(std::string const&, int) override {}
    void callRetrieved(std::string const&, int, std::string const&, std::string const&, sfiAdditionalCallInfo,
                       bool) override
    {}
    void featureSuccess(std::string const&, int, sfiFeature) override {}
    void featureFailed(std::string const&, int, sfiFeature, sfiFeatureFailure) override {}
    void remoteEndpointDetailsChanged(std::string const&, int, std::string const&, std::string const&, bool,
                                      bool) override
    {}
    void incomingCallMissed(std::string const&, int, std::string const&, std::string const&, sfiReason,
                            std::string const&, std::string const&, sfiForwardReason) override
    {}
    void callForwarded(std::string const&, int, std::string const&, std::string const&, std::string const&,
                       sfiForwardReason) override
    {}
    void incomingAssociatedCall(std::string const&, int, int) override {}
    void devicesChanged() override {}
    void messageWaiting(std::string const&, sfiMWIServiceType, unsigned int, unsigned int, unsigned int, unsigned int,
                        sfiMWIMessageReturnType, sfiMWIAvailableInfo, sfiMessagesWaiting, std::string const&) override
    {}
    void doNotDisturbSet(std::string const&, bool) override {}
    void agentStateSet(std::string const&, std::string const&) override {}
    void preemptionStatusChanged(std::string const&, int, sfiResourcePriority, sfiPreemptionCause,
                                 std::string const&) override
    {}
    void impactLevelChanged(std::string const&, int, sfiAdditionalCallInfo) override {}
    void systemStatusChange(std::string const&, std::string const&) override {}
    void serverFeatureStatusChange(std::string const&, std::string const&) override {}
    void b2buaCSTAResponse(std::string const&, bool, std::string const&) override {}
    void b2buaCSTAEventOrRequest(std::string const&, std::string const&) override {}
    void conferenceStatusEvent(std::string const&, int, std::string const&) override {}
    void callCompletionEvent(std::string const&, std::string const&, sfiCallCompletionType, sfiCallCompletionState,
                             bool) override
    {}
    void callCompletionFailedEvent(std::string const&, std::string const&, sfiCallCompletionFailureType) override {}
    void bluetoothAudioStatusChanged(std::string const&, int, bool, bool, bool) override {}
    void csCommunicationsServiceEvent(std::string const&) override {}

private:
    mutable std::mutex mutex_;
    std::condition_variable arrived_;
    std::vector<std::string> lines_;
};
