#include "telephone/exchange/Watchers.h"

#include <algorithm>

namespace telephone::exchange {

Watchers::Watchers(std::string contentType, std::function<std::string(std::string const& number)> document,
                   std::function<void(std::string const& number)> gone)
    : contentType_(std::move(contentType))
    , document_(std::move(document))
    , gone_(std::move(gone))
{}

void Watchers::add(std::string const& number, std::unique_ptr<sip::Notifier> notifier)
{
    if (!notifier->accept(contentType_)) {
        return;
    }
    notifier->onClosed([this, number](sip::Notifier& closed) { remove(number, closed); });
    notifier->onRefreshed([this, number] { return document_(number); });
    notifier->notify(document_(number));
    notifiers_[number].push_back(std::move(notifier));
}

void Watchers::notify(std::string const& number)
{
    auto const found = notifiers_.find(number);
    if (found == notifiers_.end()) {
        return;
    }
    std::string const document = document_(number);
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
