// The account with which one of the exchange's own numbers sends its requests.
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

}  // namespace telephone::exchange
