#include "telephone/exchange/TelephoneDialogs.h"

#include "telephone/exchange/ExchangeAgent.h"

namespace telephone::exchange {

TelephoneDialogs::TelephoneDialogs(sip::UserAgent& agent, std::function<void(std::string const& number)> changed)
    : agent_(agent)
    , changed_(std::move(changed))
{}

void TelephoneDialogs::follow(std::string const& number, std::string const& contact)
{
    if (followed_.contains(number)) {
        return;
    }
    auto const changed = [this, number](std::vector<sip::DialogEntry> const&) { changed_(number); };
    auto const ended = [this, number](int, std::string const&) {
        agent_.log(sip::LogLevel::kInfo, "the telephone of " + number + " no longer reports its calls");
        followed_.erase(number);
        changed_(number);
    };
    auto started = sip::DialogSubscription::start(agent_, accountOf(agent_, number), contact, changed, ended);
    if (started) {
        followed_.emplace(number, std::move(*started));
    } else {
        agent_.log(sip::LogLevel::kWarning, "the calls of " + number + " are unknown: " + started.error().reason);
    }
}

void TelephoneDialogs::unfollow(std::string const& number)
{
    followed_.erase(number);
}

std::vector<sip::DialogEntry> TelephoneDialogs::dialogsOf(std::string const& number) const
{
    auto const found = followed_.find(number);
    return found == followed_.end() ? std::vector<sip::DialogEntry>() : found->second->dialogs();
}

}  // namespace telephone::exchange
