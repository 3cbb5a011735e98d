// The calls of one registered number as its telephone tells them: the exchange's own subscription there, passed on to
// whoever watches the number here. Owned by the exchange; under the lock.
#pragma once

#include "ExchangeCore.h"
#include "sip/DialogInfo.h"
#include "sip/Subscription.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace telephone::exchange {

class DialogWatch final : private sip::SubscriptionObserver
{
public:
    // changed: its calls are other ones; ended: the telephone tells no more. Both may destroy the watch.
    DialogWatch(ExchangeCore& core, std::string number, const std::string& contact,
                std::function<void(const std::string& number)> changed,
                std::function<void(const std::string& number)> ended);

    bool isRunning() const { return subscription_ != nullptr; }
    // Whether a first document came.
    bool isKnown() const { return known_; }
    const std::vector<sip::DialogEntry>& dialogs() const { return dialogs_; }

private:
    void onNotify(sip::Subscription&, const sip::Notification& notification) override;
    void onTerminated(sip::Subscription&, int status, const std::string& reason) override;
    void merge(const sip::DialogInfo& info);

    std::string number_;
    std::function<void(const std::string& number)> changed_;
    std::function<void(const std::string& number)> ended_;
    std::vector<sip::DialogEntry> dialogs_;
    bool known_ = false;
    std::unique_ptr<sip::Subscription> subscription_;
};

}  // namespace telephone::exchange
