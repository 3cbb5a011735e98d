// One call of a number that the exchange plays: it follows the number's steps (Steps.h). Owned by ExchangeCalls, which
// destroys it some time after it has ended. Used under the lock.
//
// A call that is taken has a session from the beginning; one that is made has it from its step "call" on. Steps that
// are left when a call has ended become those of a new call.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "telephone/exchange/AudioRelay.h"
#include "telephone/exchange/ExchangeNumber.h"
#include "telephone/exchange/StepPlayer.h"
#include "telephone/media/WavSource.h"
#include "telephone/sip/DialogInfo.h"
#include "telephone/sip/Session.h"
#include "telephone/sip/Timer.h"
#include "telephone/sip/UserAgent.h"

namespace telephone::exchange {

class ExchangeCall;

class ExchangeCallObserver
{
public:
    virtual ~ExchangeCallObserver() = default;
    // The call began, rang, was answered or ended.
    virtual void callChanged(ExchangeCall const& call) = 0;
    // Destroy the call, but not within this function.
    virtual void callEnded(ExchangeCall& call) = 0;
    // The far end asks the number to call somebody else.
    virtual void transferRequested(ExchangeCall const& call, std::unique_ptr<sip::Transfer> transfer) = 0;
    // The call has ended before its steps, of which these are left. lastParty: the URI at which "caller" is called.
    virtual void stepsLeft(ExchangeCall const& call, Steps steps, std::string lastParty) = 0;
    // The URI of a number: of its telephone if one is registered, else here.
    virtual std::string uriOf(std::string const& number) const = 0;
    // The URI at which the far end of a call can be called: of its telephone if one is registered, else its contact.
    virtual std::string contactOf(sip::Session const& session) const = 0;
    // An appearance of the number's shared line, from 1; 0: it is not shared. kLimit: none is free. It is the call's
    // until its end.
    [[nodiscard]] virtual Outcome<int> takeAppearance(ExchangeCall const& call) = 0;
};

// A call to make.
struct Dialling
{
    std::string target;                          // URI
    std::string displayName = {};                // of the caller; may be empty
    std::optional<sip::Replaces> replaces = {};  // the call at the target that it replaces
    std::string referredBy = {};
    std::unique_ptr<sip::Transfer> requestedBy = {};  // told the progress; null: no transfer
};

class ExchangeCall final : private sip::SessionObserver
{
public:
    // longestRinging: after this time, an outgoing call that is not answered ends. lastParty: see stepsLeft.
    ExchangeCall(sip::UserAgent& agent, ExchangeCallObserver& observer, ExchangeNumber number,
                 std::chrono::milliseconds longestRinging, std::string lastParty);
    ~ExchangeCall() override;

    // --- beginnings
    // Takes an incoming call as the number's steps and forwarding say.
    void take(std::unique_ptr<sip::Session> session);
    // Answers at once and then ends the call that it replaces (RFC 3891).
    void takeInsteadOf(std::unique_ptr<sip::Session> session, ExchangeCall& replaced);
    // Answers both this call and the ringing one, and connects them.
    void pickUp(std::unique_ptr<sip::Session> session, ExchangeCall& ringing);
    // Answers and makes a call of three with one that is established (RFC 3911), which outlives this one.
    void join(std::unique_ptr<sip::Session> session, ExchangeCall& established);
    // Calls out. A call that refuses has ended.
    [[nodiscard]] Outcome<> dial(Dialling dialling);
    // Takes a call, which is answered and connected once the outgoing one is answered.
    void takeFor(std::unique_ptr<sip::Session> session, ExchangeCall& outgoing);
    // Plays steps instead of those that are left. Refused if the first of them ended the call before it began.
    [[nodiscard]] Outcome<> play(Steps steps);

    std::string const& number() const { return number_.number; }
    // With which it called out.
    std::string const& displayName() const { return number_.name; }
    bool isEnded() const { return ended_; }
    bool hasSession() const { return session_ != nullptr; }
    // Whether watchers see it: it has a session, or has seized its line.
    bool isVisible() const { return session_ != nullptr || seized_; }
    bool isPrivate() const { return private_; }
    bool canBeJoined() const { return phase() == CallPhase::kConnected && !partner_; }
    std::string const& id() const { return id_; }
    bool isRinging() const;
    bool matches(sip::Replaces const& wanted) const;
    bool hasCallId(std::string const& callId) const { return session_ && session_->dialogId().callId == callId; }
    CallPhase phase() const;
    sip::DialogEntry dialogEntry() const;

private:
    using Pause = std::optional<std::chrono::milliseconds>;  // as StepPlayer::Perform

    Pause perform(Step const& step);
    Pause performUnanswered(Step const& step);
    Pause say(Step const& step);
    Pause call(Step const& step);
    // False: none is free, and the call is abandoned.
    bool takeAppearance();
    // The call is over before it began.
    void abandon(Refusal refusal);
    void seize();
    void setPrivate(bool isPrivate);
    void fallSilent();
    void sendGarbage();
    // Nothing, if the operation goes on; a refusal is logged, and ends the step.
    Pause pendingIf(Outcome<> const& begun);
    void report(Outcome<> const& result) const;

    void adopt(std::unique_ptr<sip::Session> session);
    sip::Headers identity() const;
    sip::DialogState dialogState() const;
    void answer();
    void refuseCall(int status);
    void redirect(std::string const& number, std::string const& diversionReason);
    void stopSound();
    void giveUp();
    // Both end the call with these steps left.
    void hangUp(Steps left, std::string const& reason = {});
    void end(Steps left);
    void connect(ExchangeCall& other);
    void disconnect();
    void notifyTransfer(int status, std::string const& reason);

    void onProgress(sip::Session&, sip::Response const& response, bool earlyMedia) override;
    void onEstablished(sip::Session&) override;
    void onModified(sip::Session&, bool accepted, int status, std::string const& reason) override;
    void onInfo(sip::Session&, sip::Content const& content) override;
    void onTransferRequested(sip::Session&, std::unique_ptr<sip::Transfer> transfer) override;
    void onTransferProgress(sip::Session&, int status, std::string const& reason, bool ended) override;
    void onClosed(sip::Session&, sip::Closing const& closing) override;
    void announce();

    sip::UserAgent& agent_;
    ExchangeCallObserver& observer_;
    ExchangeNumber number_;
    std::chrono::milliseconds longestRinging_;
    std::string lastParty_;
    std::string id_;
    std::unique_ptr<sip::Session> session_;
    StepPlayer player_;
    sip::Timer noReply_;  // incoming: until it is forwarded; outgoing: until it gives up
    sip::Timer soundEnd_;
    std::unique_ptr<WavSource> sound_;
    AudioRelay heard_;
    ExchangeCall* partner_ = nullptr;        // the other call of a pick-up
    std::weak_ptr<ExchangeCall*> replaced_;  // hung up when this one is established
    std::shared_ptr<ExchangeCall*> self_ = std::make_shared<ExchangeCall*>(this);
    std::unique_ptr<sip::Transfer> transfer_;
    std::optional<Refusal> refusal_;  // why it was abandoned
    bool announced_ = false;          // watchers know of it
    bool early_ = false;
    bool answered_ = false;
    bool silent_ = false;
    bool seized_ = false;
    bool private_ = false;
    int appearance_ = 0;
    bool waitsForPartner_ = false;
    bool joins_ = false;  // its partner stays when it ends
    bool ended_ = false;
};

}  // namespace telephone::exchange
