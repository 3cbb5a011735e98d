// Requests that the stack's parser drops and that deserve an answer all the same: of another version of SIP, or to a
// URI of a scheme with another form. Their request line is replaced by one that can be read, and the message says what
// it was. The replaced sip_msg_decode (StackFunctions.h) uses this. Pure functions of their arguments.
#pragma once

#include <optional>

#include "telephone/sip/Stack.h"

namespace telephone::sip {

enum class Strangeness : int
{
    kVersion,
    kScheme,
};

// Replaces the request line by one of the same length. Nothing: it is neither of the two, and nothing is changed.
std::optional<Strangeness> makeReadable(mbuf& packet);
// Notes in a message what it was before.
void mark(sip_msg& message, Strangeness strangeness);

// What is wrong with a request; nothing: its version is 2.0, its scheme sip, sips or tel.
std::optional<Strangeness> strangenessOf(sip_msg const& request);

}  // namespace telephone::sip
