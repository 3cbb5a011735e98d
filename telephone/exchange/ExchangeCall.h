// One call of one of the exchange's own numbers, handled according to the number's behaviour. Owned by ExchangeCalls,
// which destroys it some time after it has ended. Used under the lock.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "telephone/exchange/AudioRelay.h"
#include "telephone/exchange/NumberBehaviour.h"
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
    // The number wants to call its caller.
    virtual void callBackRequested(std::string const& number, sip::NameAddr const& caller,
                                   std::string const& contact) = 0;
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
    // longestRinging: after this time, an outgoing call that is not answered ends.
    ExchangeCall(sip::UserAgent& agent, ExchangeCallObserver& observer, std::string number,
                 NumberBehaviour const& behaviour, milliseconds longestRinging);
    ~ExchangeCall() override;

    // --- beginnings
    // Takes an incoming call as the number's behaviour says.
    void take(std::unique_ptr<sip::Session> session);
    // Answers at once and then ends the call that it replaces (RFC 3891).
    void takeInsteadOf(std::unique_ptr<sip::Session> session, ExchangeCall& replaced);
    // Answers both this call and the ringing one, and connects them.
    void pickUp(std::unique_ptr<sip::Session> session, ExchangeCall& ringing);
    // Calls out. A call that refuses has ended.
    [[nodiscard]] Outcome<> dial(Dialling dialling);
    // Takes a call, which is answered and connected once the outgoing one is answered.
    void takeFor(std::unique_ptr<sip::Session> session, ExchangeCall& outgoing);

    std::string const& number() const { return number_; }
    // With which it called out.
    std::string const& displayName() const { return displayName_; }
    bool isEnded() const { return ended_; }
    bool hasSession() const { return session_ != nullptr; }
    bool isRinging() const;
    bool matches(sip::Replaces const& wanted) const;
    sip::DialogEntry dialogEntry() const;

private:
    void adopt(std::unique_ptr<sip::Session> session);
    void answer();
    void proceed();
    void giveUp();
    void hangUp();
    void end();
    void connect(ExchangeCall& other);
    void disconnect();
    void notifyTransfer(int status, std::string const& reason);
    void modify(sip::Direction direction);

    void onProgress(sip::Session&, sip::Response const& response, bool earlyMedia) override;
    void onEstablished(sip::Session&) override;
    void onModified(sip::Session&, bool accepted, int status, std::string const& reason) override;
    void onInfo(sip::Session&, sip::Content const& content) override;
    void onTransferRequested(sip::Session&, std::unique_ptr<sip::Transfer> transfer) override;
    void onClosed(sip::Session&, sip::Closing const& closing) override;

    sip::UserAgent& agent_;
    ExchangeCallObserver& observer_;
    std::string number_;
    std::string displayName_;
    NumberBehaviour behaviour_;
    milliseconds longestRinging_;
    std::string id_;
    std::unique_ptr<sip::Session> session_;
    sip::Timer step_;
    sip::Timer hangUpTimer_;
    AudioRelay heard_;
    ExchangeCall* partner_ = nullptr;        // the other call of a pick-up
    std::weak_ptr<ExchangeCall*> replaced_;  // hung up when this one is established
    std::shared_ptr<ExchangeCall*> self_ = std::make_shared<ExchangeCall*>(this);
    std::unique_ptr<sip::Transfer> transfer_;
    bool answered_ = false;
    bool waitsForPartner_ = false;
    bool ended_ = false;
};

}  // namespace telephone::exchange
