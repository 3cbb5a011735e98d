// The inside of CallEngine: the list of calls and what is done with them, one source a subject. All members are called
// with the phone lock held.
#pragma once

#include <atomic>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "telephone/calls/Call.h"
#include "telephone/calls/CallBacks.h"
#include "telephone/calls/CallEngine.h"
#include "telephone/calls/CallHost.h"
#include "telephone/calls/CallObserver.h"
#include "telephone/calls/DialogPublisher.h"
#include "telephone/calls/HeardRecorder.h"
#include "telephone/calls/MessageWaiting.h"
#include "telephone/calls/PickupSearch.h"
#include "telephone/calls/Registrations.h"
#include "telephone/calls/ServerLink.h"
#include "telephone/media/AudioSources.h"
#include "telephone/sip/EventLoop.h"
#include "telephone/sip/Timer.h"

namespace telephone {

// A call of ours that did not get through, for a call-back to it.
struct EndedCall
{
    int lineNumber = 0;
    std::string target;
    bool busy = false;
    bool rang = false;
};

struct CallEngine::Impl final : CallHost, sip::UserAgentObserver
{
    Impl(sip::EventLoop& loop, EngineConfiguration configuration, LineDirectory& lines, CallPolicy& policy,
         EventPoster post);
    ~Impl() override;

    // --- CallEngineImpl.cpp: life and what there is
    sfiResult activate();
    sfiResult deactivate();
    Call* find(int callID) const;
    // The call of an operation; null, with the reason logged, when there is none.
    Call* require(int callID, char const* operation);
    sfiResult refused(std::string const& reason);
    std::optional<LineAddress> requireLine(int recordLine, int appearance, char const* operation);
    std::optional<LineAccount> accountOf(int lineNumber) const;
    int freeCallID();
    bool isLimitReached() const;
    void bury();  // what ended while something ran in it
    // Makes the object of a call; the caller adds it when it has begun.
    std::unique_ptr<Call> newCall(int callID, LineAddress const& line, bool incoming);
    Call& add(std::unique_ptr<Call> call);

    // --- EngineOutgoing.cpp
    sfiResult make(int recordLine, int appearance, int callID, std::string const& destination, CallPurpose purpose);
    // The start of every call that goes out.
    sfiResult begin(std::unique_ptr<Call> call, sip::CallRequest request);
    // Dials for a call that is announced, once no other one speaks.
    void dialWhenAlone(Call& call, sip::CallRequest request);
    std::optional<std::string> targetOf(std::string const& destination, sip::Account const& account) const;
    std::optional<sfiFeature> pickupOf(std::string const& destination) const;
    // Why no call may begin with that id on that line; empty: it may.
    std::string obstacle(int callID) const;
    std::vector<Call*> speakingCalls(Call const* besides) const;
    // Puts every call that speaks, but that one, on hold; then goes on, at once where there is none.
    void afterHoldingOthers(Call& call, sfiFeature feature, std::function<void(Call&, bool)> then);

    // --- EngineOperations.cpp
    sfiResult ring(int callID);
    sfiResult answer(int callID);
    sfiResult refuse(int callID, sfiRefuseCall reason);
    sfiResult deflect(int callID, std::string const& destination);
    sfiResult clear(int callID, CSTAEventCause cause);
    sfiResult hold(int callID, sfiFeature feature);
    sfiResult retrieve(int callID, sfiFeature feature);
    sfiResult alternate(int recordLine);
    sfiResult sendDigits(int callID, std::string const& digits);
    sfiResult changeSecurity(int callID, bool secure);
    void setMicrophoneMute(bool mute);
    void setServiceState(sfiServiceState state);
    void featureFailed(int recordLine, sfiFeature feature, sfiFeatureFailure failure);

    // --- EngineTransfer.cpp: calls that meet
    sfiResult blindTransfer(int callID, std::string const& destination);
    sfiResult attendedTransfer(int callID);
    sfiResult conference(int callID);
    void joinConference(Call& first, Call& second);
    Call* otherInConference(Call const& call) const;
    // A conference that only one party is left in is none.
    void endConferenceOfOne();
    void postConferenceStatus();  // there is one
    // Whom that call can be connected with: the call that speaks, else the one held last.
    Call* partnerOf(Call const& call) const;

    // --- EnginePickup.cpp
    sfiResult pickup(int recordLine, int appearance, int callID, PickupTarget const& target);
    sfiResult groupPickup(int recordLine, int appearance, int callID);
    sfiResult directedPickup(int recordLine, int appearance, int callID, std::string const& number);
    // Null, with the reason logged: it cannot begin. Fills in whose account the request is.
    std::unique_ptr<Call> newPickup(int recordLine, int appearance, int callID, sfiFeature feature,
                                    sip::CallRequest& request);
    void pickupFound(int callID, sip::CallRequest request, std::optional<PickupTarget> const& found, int status);

    // --- EngineServer.cpp: call-backs, messages and the server
    sfiResult callBack(int callID, sfiCallCompletionType type);
    sfiResult cancelCallBacks(int callID, std::string const& target, sfiCancelCallBackType type, bool displayOutcome);
    void remember(Call const& call, CallSnapshot const& before);
    std::optional<LineAccount> lineNamed(std::string const& name) const;
    std::optional<sfiMessageWaitingRecord> messageWaiting(std::string const& phoneNumber) const;
    sfiResult sendCsta(std::string const& lineURI, std::string const& body);
    sfiResult serverFeatures(std::string const& lineURI, bool initialize);
    void tellAgentState(std::string const& lineURI, std::string const& state);
    void registrationChanged(LineAccount const& line, bool registered);
    void onSubscribe(std::unique_ptr<sip::Notifier> notifier) override;
    void onUnsolicitedNotify(sip::NameAddr const& from, sip::NameAddr const& to,
                             sip::Notification const& notification) override;
    void onRequest(std::unique_ptr<sip::IncomingRequest>& request) override;

    // --- EngineIncoming.cpp
    bool knowsUser(std::string const& user) override;
    void onIncomingCall(std::unique_ptr<sip::Session> session) override;
    void onTransferRequested(std::unique_ptr<sip::Transfer> transfer) override;
    void replaceCall(std::unique_ptr<sip::Session> session);
    bool turnedAway(sip::Session& session, LineAccount const& line);
    bool forwarded(sip::Session& session, LineAccount const& line, sfiForwardReason reason);
    std::optional<ForwardingRule> ruleFor(LineAccount const& line, bool internal, sfiForwardReason reason);
    void offer(std::unique_ptr<sip::Session> session, LineAccount const& line, int callID, LineAddress const& place);
    void armNoReply(Call& call, LineAccount const& line);
    bool isInternal(sip::NameAddr const& caller, LineAccount const& line) const;
    bool isLineBusy(int lineNumber) const;
    void postForwarded(std::string const& lineURI, int callID, sip::NameAddr const& caller,
                       std::string const& destination, sfiForwardReason reason);

    // --- CallHost
    sip::EventLoop& loop() override { return loop_; }
    void log(sip::LogLevel level, std::string const& text) override;
    void post(Event event) override { post_(std::move(event)); }
    std::chrono::milliseconds reinviteTimeout() const override { return configuration_.reinviteTimeout; }
    void callChanged(Call& call, CallSnapshot const& before) override;
    void callEnded(Call& call) override;
    bool callBackPossible(Call const& call) const override;
    void infoReceived(Call& call, sip::Content const& content) override;
    void transferRequested(Call& call, std::unique_ptr<sip::Transfer> transfer) override;
    void transferEnded(Call& call, int status) override;

    sip::EventLoop& loop_;
    EngineConfiguration configuration_;
    LineDirectory& lines_;
    CallPolicy& policy_;
    EventPoster post_;
    AudioSources sources_;
    std::unique_ptr<sip::UserAgent> agent_;
    std::vector<CallObserver*> observers_;
    std::vector<std::unique_ptr<Call>> calls_;  // in the order in which they came
    std::vector<std::unique_ptr<Call>> over_;   // until the callback that runs is over
    sip::Timer burial_;
    sip::Timer quiet_;                         // since the last call ended
    std::map<int, sip::Timer> noReplyTimers_;  // by call id
    std::map<int, int> transferPeers_;         // the other call of an attended transfer, by call id
    std::vector<int> holdOrder_;               // ids of the held calls, the last one at the end
    int conferenceVersion_ = 0;
    int lastCallID_;
    bool active_ = false;
    bool muted_ = false;
    bool associatedCalls_ = false;
    std::atomic<sfiServiceState> serviceState_{sfiServiceInService};  // changed under the lock, read without
    std::map<int, EndedCall> endedCalls_;                             // by call id
    std::deque<int> endedOrder_;                                      // the latest at the end
    std::map<int, std::unique_ptr<PickupSearch>> pickups_;            // by call id
    std::vector<std::unique_ptr<PickupSearch>> oldPickups_;
    std::unique_ptr<HeardRecorder> heard_;
    std::unique_ptr<Registrations> registrations_;
    std::unique_ptr<MessageWaiting> messages_;
    std::unique_ptr<CallBacks> callBacks_;
    std::unique_ptr<DialogPublisher> publisher_;
    std::unique_ptr<ServerLink> server_;
};

}  // namespace telephone
