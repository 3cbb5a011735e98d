// Who watches what of a number: the subscriptions to one event package, by number. Owned by the exchange; under the
// lock.
#pragma once

#include "sip/Subscription.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace telephone::exchange {

class Watchers
{
public:
    // contentType: of the documents. gone: a number lost its last watcher.
    Watchers(std::string contentType, std::function<void(const std::string& number)> gone);

    // Accepts, and sends the state as it is.
    void add(const std::string& number, std::unique_ptr<sip::Notifier> notifier, const std::string& document);
    void notify(const std::string& number, const std::string& document);
    std::size_t count(const std::string& number) const;

private:
    void remove(const std::string& number, const sip::Notifier& notifier);

    std::string contentType_;
    std::function<void(const std::string& number)> gone_;
    std::map<std::string, std::vector<std::unique_ptr<sip::Notifier>>> notifiers_;
};

}  // namespace telephone::exchange
