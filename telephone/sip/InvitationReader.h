// Reads the contents of an INVITE. Pure functions of the message.
#pragma once

#include "telephone/sip/Session.h"
#include "telephone/sip/Stack.h"

namespace telephone::sip {

// fromServer: of others than the line's server, P-Asserted-Identity is ignored (RFC 3325 section 5).
Invitation readInvitation(sip_msg const& invite, bool fromServer);

// P-Asserted-Identity of any message; nothing if it is missing or malformed.
std::optional<NameAddr> assertedIdentityOf(Headers const& headers);

}  // namespace telephone::sip
