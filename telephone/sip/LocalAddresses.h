// The addresses of this machine under which a user agent is reached.
#pragma once

#include <string>
#include <vector>

#include "telephone/base/Refusal.h"
#include "telephone/sip/Stack.h"

namespace telephone::sip {

// Of an IP address: itself; of a network interface: its first IPv4 address and its first IPv6 address beyond the link,
// as far as it has them. The stack sends from one address of each family only. Without ports; never empty.
// kBadInput: neither of the two, or an address that stands for all. kUnavailable: the interface has no such address.
// kNotSupported: an interface in virtual time, in which nothing depends on the machine.
[[nodiscard]] Outcome<std::vector<sa>> localAddresses(std::string const& address);

// Opens a socket for datagrams. Where a machine has no IPv6, one for all its IPv6 addresses is one for its IPv4
// addresses: the stack's DNS client insists on both, and has no use for the second then. 0, or an error of errno.
int listenWhereverPossible(udp_sock** made, sa const& local, udp_recv_h* received, void* argument);

// "192.0.2.1", "2001:db8::1": without port and brackets.
std::string hostText(sa const& address);

}  // namespace telephone::sip
