// The exchange's use of its user agent: the accounts of its own numbers, and the log.
#pragma once

#include <string>

#include "telephone/sip/Account.h"
#include "telephone/sip/UserAgent.h"

namespace telephone::exchange {

inline sip::Account accountOf(sip::UserAgent const& agent, std::string const& number)
{
    sip::Account account;
    account.user = number;
    account.domain = agent.hostPort();
    return account;
}

inline void logRefusal(sip::UserAgent const& agent, std::string const& subject, Outcome<> const& result)
{
    if (!result) {
        agent.log(sip::LogLevel::kWarning, subject + ": " + result.error().reason);
    }
}

}  // namespace telephone::exchange
