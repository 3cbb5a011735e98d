// One call of one of the exchange's own numbers, and what that number does with it. Owned by the exchange, which drops
// it some time after it has ended. On the loop's thread, or under the lock.
#pragma once

#include <memory>
#include <string>

#include "telephone/exchange/AudioRelay.h"
#include "telephone/exchange/NumberBehaviour.h"
#include "telephone/sip/DialogInfo.h"
#include "telephone/sip/Session.h"
#include "telephone/sip/Timer.h"

namespace telephone::exchange {

struct ExchangeCore;

class ExchangeCall final : private sip::SessionObserver
{
public:
    ExchangeCall(ExchangeCore& core, std::string number, NumberBehaviour const& behaviour);
    ~ExchangeCall() override;

    // --- how a call begins
    // As the number's behaviour says.
    void take(std::unique_ptr<sip::Session> session);
    // Answers at once in the place of a call that ends by it (RFC 3891).
    void takeInsteadOf(std::unique_ptr<sip::Session> session, ExchangeCall& replaced);
    // Answers both, this call and the one that rings, and lets them hear each other.
    void pickUp(std::unique_ptr<sip::Session> session, ExchangeCall& ringing);
    // Calls out; a transfer that asked for it is told how it goes. False when nothing could be sent.
    bool dial(std::string const& target, std::optional<sip::Replaces> const& replaces, std::string const& referredBy,
              std::unique_ptr<sip::Transfer> askedBy);
    // Takes a call, keeps it unanswered, calls out, and connects the two when that call is answered.
    void takeFor(std::unique_ptr<sip::Session> session, ExchangeCall& outgoing);

    std::string const& number() const { return number_; }
    bool isEnded() const { return ended_; }
    bool hasSession() const { return session_ != nullptr; }
    bool isRinging() const;
    bool matches(sip::Replaces const& wanted) const;
    sip::DialogEntry dialogEntry() const;

private:
    void adopt(std::unique_ptr<sip::Session> session);
    void answer();
    void proceed();
    void hangUp();
    void end();
    void connect(ExchangeCall& other);
    void disconnect();
    void tellTransfer(int status, std::string const& reason);

    void onProgress(sip::Session&, sip::Response const& response, bool earlyMedia) override;
    void onEstablished(sip::Session&) override;
    void onModified(sip::Session&, bool accepted, int status, std::string const& reason) override;
    void onInfo(sip::Session&, sip::Content const& content) override;
    void onTransferRequested(sip::Session&, std::unique_ptr<sip::Transfer> transfer) override;
    void onClosed(sip::Session&, sip::Closing const& closing) override;

    ExchangeCore& core_;
    std::string number_;
    NumberBehaviour behaviour_;
    std::string id_;
    std::unique_ptr<sip::Session> session_;
    sip::Timer step_;
    sip::Timer hangUpTimer_;
    AudioRelay heard_;
    ExchangeCall* partner_ = nullptr;        // the other end of a call that was picked up
    std::weak_ptr<ExchangeCall*> replaced_;  // ends when this one is through
    std::shared_ptr<ExchangeCall*> self_ = std::make_shared<ExchangeCall*>(this);
    std::unique_ptr<sip::Transfer> transfer_;
    bool answered_ = false;
    bool waitsForPartner_ = false;
    bool ended_ = false;
};

}  // namespace telephone::exchange
