#include "telephone/lines/Accounts.h"

namespace telephone {

namespace {

std::string const& first(std::string const& text, std::string const& otherwise)
{
    return text.empty() ? otherwise : text;
}

sip::Transport transportOf(Transport configured)
{
    switch (configured) {
    case Transport::kUdp:
        return sip::Transport::kUdp;
    case Transport::kTcp:
        return sip::Transport::kTcp;
    case Transport::kTls:
        return sip::Transport::kTls;
    }
    return sip::Transport::kUdp;
}

}  // namespace

std::string const& userOfLine(LineConfiguration const& line)
{
    return first(line.user, line.id);
}

sip::Account accountOf(LineConfiguration const& line, Configuration const& configuration, ServerAddress const& server)
{
    sip::Account account;
    account.user = userOfLine(line);
    account.domain = server.domain;
    account.displayName = line.displayName;
    account.registrar = server.registrar;
    account.authUser = first(line.authUser, account.user);
    account.password = first(line.password, server.defaultPassword);
    account.transport = transportOf(configuration.sip.transport);
    account.keepAlive = std::chrono::seconds(configuration.sip.keepAlive);
    account.expires = static_cast<std::uint32_t>(configuration.server.expires);
    return account;
}

}  // namespace telephone
