// The messages waiting for each line, reported to a subscription (event package "message-summary", RFC 3842) or by an
// unsolicited NOTIFY. One event per change. Owned by CallEngine; called with the phone lock held, except where noted.
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
    // From the end of a subscription to the next attempt.
    static constexpr std::chrono::seconds kRetry{60};

    MessageWaiting(sip::UserAgent& agent, EngineConfiguration const& configuration, LineDirectory const& lines,
                   EventPoster const& post, CallObservers const& observers);

    // The latest report for a line, named by number or address; an empty name is the first line. Nothing before the
    // first report. Any thread; takes the phone lock.
    std::optional<sfiMessageWaitingRecord> of(std::string const& phoneNumber) const;

    // Subscribes for a line that has registered, if the configuration says so and there is no subscription yet.
    void subscribe(LineAccount const& line);
    // Takes the document of an unsolicited NOTIFY.
    void received(LineAccount const& line, std::string const& document);
    void clear() { mailboxes_.clear(); }

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
