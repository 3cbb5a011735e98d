// Reads what an INVITE tells about its call. A pure function of the message.
#pragma once

#include "Session.h"
#include "Stack.h"

namespace telephone::sip {

Invitation readInvitation(const sip_msg& invite);

// P-Asserted-Identity of any message; nothing when there is none that can be read.
std::optional<NameAddr> assertedIdentityOf(const Headers& headers);

}  // namespace telephone::sip
