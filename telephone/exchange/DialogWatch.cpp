#include "telephone/exchange/DialogWatch.h"

#include <algorithm>

namespace telephone::exchange {

DialogWatch::DialogWatch(ExchangeCore& core, std::string number, std::string const& contact,
                         std::function<void(std::string const& number)> changed,
                         std::function<void(std::string const& number)> ended)
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

void DialogWatch::merge(sip::DialogInfo const& info)
{
    // What ended has been told once.
    std::erase_if(dialogs_, [](auto const& entry) { return entry.state == sip::DialogState::kTerminated; });
    if (info.full) {
        dialogs_ = info.dialogs;
        return;
    }
    for (auto const& entry : info.dialogs) {
        std::erase_if(dialogs_, [&entry](auto const& known) { return known.id == entry.id; });
        dialogs_.push_back(entry);
    }
}

void DialogWatch::onNotify(sip::Subscription&, sip::Notification const& notification)
{
    auto const info = sip::DialogInfo::parse(notification.content.body);
    if (!info) {
        return;
    }
    known_ = true;
    merge(*info);
    auto const changed = changed_;
    changed(std::string(number_));
}

void DialogWatch::onTerminated(sip::Subscription&, int, std::string const&)
{
    auto const ended = ended_;
    ended(std::string(number_));
}

}  // namespace telephone::exchange
