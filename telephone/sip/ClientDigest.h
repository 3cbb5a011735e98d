// Digest authentication of our own requests, in the place of the stack's, which knows nothing but MD5: the strongest
// algorithm that both sides support is used (RFC 7616, RFC 8760). Of several challenges each realm is answered once.
// "auth-int" is not supported: a challenge that offers nothing else is not answered, and the log says so. Each function
// does the work of one of the stack (StackFunctions.cpp), to which the object is opaque; a result is 0 or an error
// number. Used under the loop's lock.
#pragma once

#include "telephone/sip/Stack.h"

namespace telephone::sip {

// handler: gives user and password for a realm; its argument is Credentials or null.
int makeAuthentication(sip_auth** made, sip_auth_h* handler, void* argument, bool owned);
// EAUTH: our answer was refused, or there is no password; ENOSYS: no challenge that can be answered.
int takeChallenges(sip_auth& authentication, sip_msg const& response);
// Writes an Authorization header for each realm.
int writeCredentials(mbuf& buffer, sip_auth& authentication, char const* method, char const* uri);
void forgetChallenges(sip_auth& authentication);

}  // namespace telephone::sip
