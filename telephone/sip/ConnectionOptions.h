// How every TCP connection is set, those for TLS included.
#pragma once

#include "telephone/sip/Stack.h"

namespace telephone::sip {

// Small messages are sent at once, and a far end that acknowledges nothing for half a minute counts as gone, whether or
// not it answers keep-alives. Returns 0; a connection that cannot be set is used as it is.
int setConnectionOptions(tcp_conn const& connection);

}  // namespace telephone::sip
