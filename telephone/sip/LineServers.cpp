#include "telephone/sip/LineServers.h"

#include <algorithm>

namespace telephone::sip {

namespace {

// The name that is usual for it.
constexpr char const* kSecretParameter = "line";

}  // namespace

void LineServers::add(RegistrationImpl const& registration, std::string const& user)
{
    servers_[&registration] = {user, hexText(rand_u64())};
}

std::string LineServers::contactParameter(RegistrationImpl const& registration) const
{
    return std::string(";") + kSecretParameter + "=" + servers_.at(&registration).secret;
}

void LineServers::answered(RegistrationImpl const& registration, sa const& from)
{
    Server& server = servers_.at(&registration);
    server.address = from;
    server.hasAnswered = true;
}

bool LineServers::haveSent(sip_msg const& message, std::string const& user) const
{
    pl secret{};
    bool const hasSecret = msg_param_decode(&message.uri.params, kSecretParameter, &secret) == 0;
    return std::ranges::any_of(servers_, [&](auto const& entry) {
        Server const& server = entry.second;
        return server.user == user && (server.isAt(message.src) || (hasSecret && view(secret) == server.secret));
    });
}

bool LineServers::areAt(sa const& address) const
{
    return std::ranges::any_of(servers_, [&address](auto const& entry) { return entry.second.isAt(address); });
}

}  // namespace telephone::sip
