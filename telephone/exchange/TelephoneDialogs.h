// The calls of registered telephones, as these report them to subscriptions of the exchange. Owned by the exchange;
// used under the lock.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "telephone/sip/DialogSubscription.h"
#include "telephone/sip/UserAgent.h"

namespace telephone::exchange {

class TelephoneDialogs
{
public:
    // changed: the dialogs of the number changed, or are not known any more.
    TelephoneDialogs(sip::UserAgent& agent, std::function<void(std::string const& number)> changed);

    // Subscribes at the contact unless the number is followed already.
    void follow(std::string const& number, std::string const& contact);
    void unfollow(std::string const& number);
    // Empty if nothing is known.
    std::vector<sip::DialogEntry> dialogsOf(std::string const& number) const;
    void clear() { followed_.clear(); }

private:
    sip::UserAgent& agent_;
    std::function<void(std::string const& number)> changed_;
    std::map<std::string, std::unique_ptr<sip::DialogSubscription>> followed_;
};

}  // namespace telephone::exchange
