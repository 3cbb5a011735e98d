// The waiting messages of all numbers and their subscribers (event package "message-summary"). Owned by the exchange;
// used under the lock.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "telephone/exchange/Registrar.h"
#include "telephone/exchange/Watchers.h"
#include "telephone/sip/DialogInfo.h"
#include "telephone/sip/UserAgent.h"

namespace telephone::exchange {

class MessageBoxes
{
public:
    MessageBoxes(sip::UserAgent& agent, Registrar const& registrar);

    // unsolicited: also notifies the telephones of the number, which have not subscribed.
    void set(std::string const& number, sip::MessageCounts const& counts, bool unsolicited);
    void subscribe(std::string const& number, std::unique_ptr<sip::Notifier> notifier);
    std::size_t watcherCount(std::string const& number) const { return watchers_.count(number); }
    void clear() { watchers_.clear(); }

private:
    std::string documentOf(std::string const& number) const;

    sip::UserAgent& agent_;
    Registrar const& registrar_;
    Watchers watchers_;
    std::map<std::string, sip::MessageCounts> counts_;
};

}  // namespace telephone::exchange
