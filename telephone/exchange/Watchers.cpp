#include "Watchers.h"

#include <algorithm>

namespace telephone::exchange {

Watchers::Watchers(std::string contentType, std::function<void(const std::string& number)> gone)
    : contentType_(std::move(contentType))
    , gone_(std::move(gone))
{}

void Watchers::add(const std::string& number, std::unique_ptr<sip::Notifier> notifier, const std::string& document)
{
    if (!notifier->accept(contentType_))
        return;
    notifier->onClosed([this, number](sip::Notifier& closed) { remove(number, closed); });
    notifier->notify(document);
    notifiers_[number].push_back(std::move(notifier));
}

void Watchers::notify(const std::string& number, const std::string& document)
{
    const auto found = notifiers_.find(number);
    if (found == notifiers_.end())
        return;
    for (const auto& notifier : found->second)
        notifier->notify(document);
}

std::size_t Watchers::count(const std::string& number) const
{
    const auto found = notifiers_.find(number);
    return found == notifiers_.end() ? 0 : found->second.size();
}

void Watchers::remove(const std::string& number, const sip::Notifier& notifier)
{
    const auto found = notifiers_.find(number);
    if (found == notifiers_.end())
        return;
    std::erase_if(found->second, [&notifier](const auto& known) { return known.get() == &notifier; });
    if (!found->second.empty())
        return;
    notifiers_.erase(found);
    gone_(number);
}

}  // namespace telephone::exchange
