// The account of a line as the SIP adapter wants it, made of the configuration and of where the call server really is
// (the built-in exchange chooses its port at run time). Pure functions.
#pragma once

#include <string>

#include "telephone/configuration/Configuration.h"
#include "telephone/sip/Account.h"

namespace telephone {

// Where lines register: the configured server, or the built-in exchange.
struct ServerAddress
{
    std::string registrar;        // sip:host:port; empty: there is none
    std::string domain;           // host or host:port; of lines that do not register too
    std::string defaultPassword;  // of a line without one; empty: none
};

sip::Account accountOf(LineConfiguration const& line, Configuration const& configuration, ServerAddress const& server);

// The user part of a line's address: its id unless the file names another.
std::string const& userOfLine(LineConfiguration const& line);

}  // namespace telephone
