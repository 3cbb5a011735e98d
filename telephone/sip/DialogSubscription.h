// Watches the calls of one party through the event package "dialog" (RFC 4235): subscribes, lets the stack refresh the
// subscription, and merges the full and partial documents that arrive into one list of dialogs. It knows nothing of
// lines or calls; its owner decides what the dialogs mean and when to try again after the end.
//
//     auto started = DialogSubscription::start(agent, account, "sip:103@example.com", changed, ended);
//     if (!started) {
//         return tl::unexpected(started.error());
//     }
//     subscription_ = std::move(*started);
//
// start() may be called on any thread. Both callbacks run on the loop's thread with the lock held, never from within
// start(), and may destroy the subscription. Destroying it unsubscribes; no callback comes afterwards.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "telephone/base/Refusal.h"
#include "telephone/sip/DialogList.h"
#include "telephone/sip/Subscription.h"

namespace telephone::sip {

class UserAgent;

class DialogSubscription final : private SubscriptionObserver
{
public:
    // The party's dialogs after each valid document. A dialog that has ended appears once more, in the state
    // kTerminated, and is missing from the next list. Documents that are malformed or out of date change nothing and
    // are only logged.
    using Changed = std::function<void(std::vector<DialogEntry> const& dialogs)>;

    // The subscription is over, and its owner should destroy it. status: 300 to 699 when the notifier refused, 408 when
    // it did not answer, 503 when it could not be reached, 200 when it ended the subscription. reason: the status text,
    // or after 200 the reason that the notifier gave ("deactivated", "timeout" ...), which may be empty.
    using Ended = std::function<void(int status, std::string const& reason)>;

    // Subscribes to the dialogs of `target` (a SIP URI) on behalf of `account`, for `expires` seconds at a time.
    // kBadInput: `target` is not a SIP URI. kUnavailable: the SUBSCRIBE could not be sent.
    [[nodiscard]] static Outcome<std::unique_ptr<DialogSubscription>> start(UserAgent& agent, Account const& account,
                                                                            std::string const& target, Changed changed,
                                                                            Ended ended, std::uint32_t expires = 3600);

    // The list that `changed` was given last; empty before the first document.
    std::vector<DialogEntry> const& dialogs() const { return list_.dialogs(); }

private:
    DialogSubscription(UserAgent& agent, Changed changed, Ended ended);

    void onNotify(Subscription& subscription, Notification const& notification) override;
    void onTerminated(Subscription& subscription, int status, std::string const& reason) override;

    UserAgent& agent_;
    Changed changed_;
    Ended ended_;
    DialogList list_;
    std::unique_ptr<Subscription> subscription_;
};

}  // namespace telephone::sip
