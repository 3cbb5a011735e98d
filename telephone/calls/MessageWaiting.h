// How many messages wait for each line: subscribed (event package "message-summary", RFC 3842) or told unasked. One
// event a change. Owned by the engine; called with the phone lock held.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "platform/sfi/SfiTypes.h"
#include "telephone/calls/CallHost.h"
#include "telephone/calls/LineDirectory.h"
#include "telephone/sip/Subscription.h"
#include "telephone/sip/Timer.h"
#include "telephone/sip/UserAgent.h"

namespace telephone {

class MessageWaiting final : private sip::SubscriptionObserver
{
public:
    using Changed = std::function<void(int lineNumber, sfiMessageWaitingRecord const& record)>;

    // How long after its end a subscription is tried again.
    static constexpr std::chrono::seconds kRetry{60};

    MessageWaiting(CallHost& host, sip::UserAgent& agent, std::string voiceMail, Changed changed);
    ~MessageWaiting() override;

    // Subscribes for a line; nothing where that runs already.
    void subscribe(LineAccount const& line);
    void clear();
    // A document that came without a subscription.
    void told(LineAccount const& line, std::string const& document);
    // Nothing: the line has been told nothing yet.
    std::optional<sfiMessageWaitingRecord> of(int lineNumber) const;

private:
    struct Mailbox
    {
        explicit Mailbox(sip::EventLoop& loop)
            : retry(loop)
        {}

        LineAccount line;
        std::unique_ptr<sip::Subscription> subscription;
        sip::Timer retry;
        std::optional<sfiMessageWaitingRecord> record;
    };

    void onNotify(sip::Subscription& subscription, sip::Notification const& notification) override;
    void onTerminated(sip::Subscription& subscription, int status, std::string const& reason) override;
    Mailbox* find(sip::Subscription const& subscription);
    Mailbox& of(LineAccount const& line);
    void begin(Mailbox& mailbox);
    void update(Mailbox& mailbox, std::string const& document);

    CallHost& host_;
    sip::UserAgent& agent_;
    std::string voiceMail_;
    Changed changed_;
    std::map<int, Mailbox> mailboxes_;  // by line number
};

}  // namespace telephone
