// The SIP account of a line, from the configuration and the actual address of the call server (the built-in exchange
// chooses its port at run time). Pure functions.
#pragma once

#include <string>

#include "telephone/configuration/Configuration.h"
#include "telephone/sip/Account.h"

namespace telephone {

// The call server: the configured one, or the built-in exchange.
struct ServerAddress
{
    std::string registrar;        // sip:host:port; empty without a call server
    std::string domain;           // host or host:port, also of lines that do not register
    std::string defaultPassword;  // for lines without a password of their own
};

sip::Account accountOf(LineConfiguration const& line, Configuration const& configuration, ServerAddress const& server);

// The user part of a line's address: the configured user, else the line's id.
std::string const& userOfLine(LineConfiguration const& line);

}  // namespace telephone
