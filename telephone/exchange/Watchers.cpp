#include "telephone/exchange/Watchers.h"

#include <algorithm>

namespace telephone::exchange {

Watchers::Watchers(std::string contentType, std::function<void(std::string const& number)> gone)
    : contentType_(std::move(contentType))
    , gone_(std::move(gone))
{}

void Watchers::add(std::string const& number, std::unique_ptr<sip::Notifier> notifier, std::string const& document)
{
    if (!notifier->accept(contentType_)) {
        return;
    }
    notifier->onClosed([this, number](sip::Notifier& closed) { remove(number, closed); });
    notifier->notify(document);
    notifiers_[number].push_back(std::move(notifier));
}

void Watchers::notify(std::string const& number, std::string const& document)
{
    auto const found = notifiers_.find(number);
    if (found == notifiers_.end()) {
        return;
    }
    for (auto const& notifier : found->second) {
        notifier->notify(document);
    }
}

std::size_t Watchers::count(std::string const& number) const
{
    auto const found = notifiers_.find(number);
    return found == notifiers_.end() ? 0 : found->second.size();
}

void Watchers::remove(std::string const& number, sip::Notifier const& notifier)
{
    auto const found = notifiers_.find(number);
    if (found == notifiers_.end()) {
        return;
    }
    std::erase_if(found->second, [&notifier](auto const& known) { return known.get() == &notifier; });
    if (!found->second.empty()) {
        return;
    }
    notifiers_.erase(found);
    gone_(number);
}

}  // namespace telephone::exchange
