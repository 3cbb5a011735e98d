#include "DialogWatch.h"

#include <algorithm>

namespace telephone::exchange {

DialogWatch::DialogWatch(ExchangeCore& core, std::string number, const std::string& contact,
                         std::function<void(const std::string& number)> changed,
                         std::function<void(const std::string& number)> ended)
    : number_(std::move(number))
    , changed_(std::move(changed))
    , ended_(std::move(ended))
{
    sip::SubscriptionRequest request;
    request.target = contact;
    request.event = sip::kDialogEvent;
    request.accept = sip::kDialogInfoType;
    subscription_ = core.agent().subscribe(core.accountOf(number_), request, *this);
}

void DialogWatch::merge(const sip::DialogInfo& info)
{
    // What ended has been told once.
    std::erase_if(dialogs_, [](const auto& entry) { return entry.state == sip::DialogState::kTerminated; });
    if (info.full) {
        dialogs_ = info.dialogs;
        return;
    }
    for (const auto& entry : info.dialogs) {
        std::erase_if(dialogs_, [&entry](const auto& known) { return known.id == entry.id; });
        dialogs_.push_back(entry);
    }
}

void DialogWatch::onNotify(sip::Subscription&, const sip::Notification& notification)
{
    const auto info = sip::DialogInfo::parse(notification.content.body);
    if (!info)
        return;
    known_ = true;
    merge(*info);
    const auto changed = changed_;
    changed(std::string(number_));
}

void DialogWatch::onTerminated(sip::Subscription&, int, const std::string&)
{
    const auto ended = ended_;
    ended(std::string(number_));
}

}  // namespace telephone::exchange
