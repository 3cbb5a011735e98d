// The inside of CallEngine: the list of calls and what is done with them, one source a subject. All members are called
// with the phone lock held.
#pragma once

#include "Call.h"
#include "CallEngine.h"
#include "CallHost.h"
#include "Registrations.h"
#include "media/AudioSources.h"
#include "sip/EventLoop.h"
#include "sip/Timer.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace telephone {

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
    Call* require(int callID, const char* operation);
    sfiResult refused(const std::string& reason);
    std::optional<LineAddress> requireLine(int recordLine, int appearance, const char* operation);
    std::optional<LineAccount> accountOf(int lineNumber) const;
    int freeCallID();
    bool isLimitReached() const;
    // Makes the object of a call; the caller adds it when it has begun.
    std::unique_ptr<Call> newCall(int callID, const LineAddress& line, bool incoming);
    Call& add(std::unique_ptr<Call> call);

    // --- EngineOutgoing.cpp
    sfiResult make(int recordLine, int appearance, int callID, const std::string& destination, CallPurpose purpose);
    // The start of every call that goes out. whyNot: empty when it has begun.
    sfiResult begin(std::unique_ptr<Call> call, sip::CallRequest request);
    std::optional<std::string> targetOf(const std::string& destination, const sip::Account& account) const;
    // Why no call may begin with that id on that line; empty: it may.
    std::string obstacle(int callID) const;
    std::vector<Call*> speakingCalls(const Call* besides) const;
    // Puts every call that speaks, but that one, on hold; then goes on, at once where there is none.
    void afterHoldingOthers(Call& call, sfiFeature feature, std::function<void(Call&, bool)> then);

    // --- EngineOperations.cpp
    sfiResult ring(int callID);
    sfiResult answer(int callID);
    sfiResult refuse(int callID, sfiRefuseCall reason);
    sfiResult deflect(int callID, const std::string& destination);
    sfiResult clear(int callID, CSTAEventCause cause);
    sfiResult hold(int callID, sfiFeature feature);
    sfiResult retrieve(int callID, sfiFeature feature);
    sfiResult alternate(int recordLine);
    sfiResult sendDigits(int callID, const std::string& digits);
    sfiResult changeSecurity(int callID, bool secure);
    void setMicrophoneMute(bool mute);
    void setServiceState(sfiServiceState state);
    void featureFailed(int recordLine, sfiFeature feature, sfiFeatureFailure failure);

    // --- EngineTransfer.cpp: calls that meet
    sfiResult blindTransfer(int callID, const std::string& destination);
    sfiResult attendedTransfer(int callID);
    sfiResult conference(int callID);
    void joinConference(Call& first, Call& second);
    Call* otherInConference(const Call& call) const;
    // A conference that only one party is left in is none.
    void endConferenceOfOne();
    void postConferenceStatus();  // there is one
    // Whom that call can be connected with: the call that speaks, else the one held last.
    Call* partnerOf(const Call& call) const;

    // --- EngineIncoming.cpp
    bool knowsUser(const std::string& user) override;
    void onIncomingCall(std::unique_ptr<sip::Session> session) override;
    void onTransferRequested(std::unique_ptr<sip::Transfer> transfer) override;
    void replaceCall(std::unique_ptr<sip::Session> session);
    bool turnedAway(sip::Session& session, const LineAccount& line);
    bool forwarded(sip::Session& session, const LineAccount& line, sfiForwardReason reason);
    std::optional<ForwardingRule> ruleFor(const LineAccount& line, bool internal, sfiForwardReason reason) const;
    void offer(std::unique_ptr<sip::Session> session, const LineAccount& line, int callID, const LineAddress& place);
    void armNoReply(Call& call, const LineAccount& line);
    bool isInternal(const sip::NameAddr& caller, const LineAccount& line) const;
    bool isLineBusy(int lineNumber) const;
    void postForwarded(const std::string& lineURI, int callID, const sip::NameAddr& caller,
                       const std::string& destination, sfiForwardReason reason);

    // --- CallHost
    sip::EventLoop& loop() override { return loop_; }
    void log(sip::LogLevel level, const std::string& text) override;
    void post(Event event) override { post_(std::move(event)); }
    void callChanged(Call& call, const CallSnapshot& before) override;
    void callEnded(Call& call) override;
    bool callBackPossible(const Call& call) const override;
    void infoReceived(Call& call, const sip::Content& content) override;
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
    std::map<int, sip::Timer> noReplyTimers_;   // by call id
    std::map<int, int> transferPeers_;          // the other call of an attended transfer, by call id
    std::vector<int> holdOrder_;                // ids of the held calls, the last one at the end
    int conferenceVersion_ = 0;
    int lastCallID_;
    bool active_ = false;
    bool muted_ = false;
    bool associatedCalls_ = false;
    sfiServiceState serviceState_ = sfiServiceInService;
    std::unique_ptr<Registrations> registrations_;
};

}  // namespace telephone
