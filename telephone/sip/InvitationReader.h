// Reads the contents of an INVITE. Pure functions of the message.
#pragma once

#include "telephone/sip/Session.h"
#include "telephone/sip/Stack.h"

namespace telephone::sip {

Invitation readInvitation(sip_msg const& invite);

// P-Asserted-Identity of any message; nothing if it is missing or malformed.
std::optional<NameAddr> assertedIdentityOf(Headers const& headers);

}  // namespace telephone::sip
