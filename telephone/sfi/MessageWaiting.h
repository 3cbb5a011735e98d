// How many messages wait for each line: subscribed (event package "message-summary", RFC 3842) or told unasked. One
// event a change. Owned by the engine; called with the phone lock held.
#pragma once

#include "CallHost.h"
#include "LineDirectory.h"
#include "sfi/SfiTypes.h"
#include "sip/Subscription.h"
#include "sip/Timer.h"
#include "sip/UserAgent.h"

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace telephone {

class MessageWaiting final : private sip::SubscriptionObserver
{
public:
    using Changed = std::function<void(int lineNumber, const sfiMessageWaitingRecord& record)>;

    // How long after its end a subscription is tried again.
    static constexpr std::chrono::seconds kRetry{60};

    MessageWaiting(CallHost& host, sip::UserAgent& agent, std::string voiceMail, Changed changed);
    ~MessageWaiting() override;

    // Subscribes for a line; nothing where that runs already.
    void subscribe(const LineAccount& line);
    void clear();
    // A document that came without a subscription.
    void told(const LineAccount& line, const std::string& document);
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

    void onNotify(sip::Subscription& subscription, const sip::Notification& notification) override;
    void onTerminated(sip::Subscription& subscription, int status, const std::string& reason) override;
    Mailbox* find(const sip::Subscription& subscription);
    Mailbox& of(const LineAccount& line);
    void begin(Mailbox& mailbox);
    void update(Mailbox& mailbox, const std::string& document);

    CallHost& host_;
    sip::UserAgent& agent_;
    std::string voiceMail_;
    Changed changed_;
    std::map<int, Mailbox> mailboxes_;  // by line number
};

}  // namespace telephone
