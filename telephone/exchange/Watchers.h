// The subscribers to one event package, by number. Owned by the exchange; used under the lock.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "telephone/sip/Subscription.h"

namespace telephone::exchange {

class Watchers
{
public:
    // document: makes the document of a number's present state, asked for each time that one is sent. contentType: of
    // the documents. gone: the last subscriber of a number is gone.
    Watchers(std::string contentType, std::function<std::string(std::string const& number)> document,
             std::function<void(std::string const& number)> gone);

    // Accepts the subscription and sends the present state.
    void add(std::string const& number, std::unique_ptr<sip::Notifier> notifier);
    // Sends the present state to all subscribers of the number.
    void notify(std::string const& number);
    std::size_t count(std::string const& number) const;
    void clear() { notifiers_.clear(); }

private:
    void remove(std::string const& number, sip::Notifier const& notifier);

    std::string contentType_;
    std::function<std::string(std::string const& number)> document_;
    std::function<void(std::string const& number)> gone_;
    std::map<std::string, std::vector<std::unique_ptr<sip::Notifier>>> notifiers_;
};

}  // namespace telephone::exchange
