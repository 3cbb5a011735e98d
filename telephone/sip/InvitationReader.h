// Reads what an INVITE tells about its call. A pure function of the message.
#pragma once

#include "telephone/sip/Session.h"
#include "telephone/sip/Stack.h"

namespace telephone::sip {

Invitation readInvitation(sip_msg const& invite);

// P-Asserted-Identity of any message; nothing when there is none that can be read.
std::optional<NameAddr> assertedIdentityOf(Headers const& headers);

}  // namespace telephone::sip
