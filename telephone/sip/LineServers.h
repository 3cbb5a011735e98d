// The servers with which the accounts of a user agent are registered, so that their requests are recognised: by the
// address from which a server answered, or by the contact, which carries a secret that only the server was given. A
// server that redirects passes the contact on, and with it its trust. Used under the lock.
#pragma once

#include <map>
#include <string>

#include "telephone/sip/Stack.h"

namespace telephone::sip {

class RegistrationImpl;

class LineServers
{
public:
    // Makes the secret of the account's contact.
    void add(RegistrationImpl const& registration, std::string const& user);
    void remove(RegistrationImpl const& registration) { servers_.erase(&registration); }
    // The parameter of the contact: ";line=0123456789abcdef".
    std::string contactParameter(RegistrationImpl const& registration) const;
    void answered(RegistrationImpl const& registration, sa const& from);

    // Whether a message for that user, a request or a response, comes from its server.
    bool haveSent(sip_msg const& message, std::string const& user) const;
    // Whether any of the servers is at the address.
    bool areAt(sa const& address) const;

private:
    struct Server
    {
        std::string user;
        std::string secret;
        sa address{};
        bool hasAnswered = false;

        bool isAt(sa const& other) const { return hasAnswered && sa_cmp(&address, &other, SA_ALL); }
    };

    std::map<RegistrationImpl const*, Server> servers_;
};

}  // namespace telephone::sip
