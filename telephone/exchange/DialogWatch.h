// The calls of one registered number as its telephone tells them: the exchange's own subscription there, passed on to
// whoever watches the number here. Owned by the exchange; under the lock.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "telephone/exchange/ExchangeCore.h"
#include "telephone/sip/DialogInfo.h"
#include "telephone/sip/Subscription.h"

namespace telephone::exchange {

class DialogWatch final : private sip::SubscriptionObserver
{
public:
    // changed: its calls are other ones; ended: the telephone tells no more. Both may destroy the watch.
    DialogWatch(ExchangeCore& core, std::string number, std::string const& contact,
                std::function<void(std::string const& number)> changed,
                std::function<void(std::string const& number)> ended);

    bool isRunning() const { return subscription_ != nullptr; }
    // Whether a first document came.
    bool isKnown() const { return known_; }
    std::vector<sip::DialogEntry> const& dialogs() const { return dialogs_; }

private:
    void onNotify(sip::Subscription&, sip::Notification const& notification) override;
    void onTerminated(sip::Subscription&, int status, std::string const& reason) override;
    void merge(sip::DialogInfo const& info);

    std::string number_;
    std::function<void(std::string const& number)> changed_;
    std::function<void(std::string const& number)> ended_;
    std::vector<sip::DialogEntry> dialogs_;
    bool known_ = false;
    std::unique_ptr<sip::Subscription> subscription_;
};

}  // namespace telephone::exchange
