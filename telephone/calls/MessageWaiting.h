// How many messages wait for each line: subscribed to (event package "message-summary", RFC 3842) or received without a
// subscription. One event per change. Owned by CallEngine; called with the phone lock held, except where noted.
#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "platform/sfi/SfiTypes.h"
#include "telephone/calls/CallObservers.h"
#include "telephone/calls/EventPoster.h"
#include "telephone/calls/LineDirectory.h"
#include "telephone/sip/Subscription.h"
#include "telephone/sip/Timer.h"
#include "telephone/sip/UserAgent.h"

namespace telephone {

struct EngineConfiguration;

class MessageWaiting final : private sip::SubscriptionObserver
{
public:
    // A subscription is tried again so long after its end.
    static constexpr std::chrono::seconds kRetry{60};

    MessageWaiting(sip::UserAgent& agent, EngineConfiguration const& configuration, LineDirectory const& lines,
                   EventPoster const& post, CallObservers const& observers);

    // Of a line by its number or address, the first line for an empty name; nothing is known: nothing. Any thread;
    // takes the phone lock.
    std::optional<sfiMessageWaitingRecord> of(std::string const& phoneNumber) const;

    // The line is registered: subscribes for it, if the configuration says so and no subscription lives.
    void subscribe(LineAccount const& line);
    // A document that came without a subscription.
    void received(LineAccount const& line, std::string const& document);
    void clear();

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
    Mailbox& mailboxOf(LineAccount const& line);
    void begin(Mailbox& mailbox);
    void update(Mailbox& mailbox, std::string const& document);

    sip::UserAgent& agent_;
    EngineConfiguration const& configuration_;
    LineDirectory const& lines_;
    EventPoster const& post_;
    CallObservers const& observers_;
    std::map<int, Mailbox> mailboxes_;  // by line number
};

}  // namespace telephone
