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

// "192.0.2.1", "2001:db8::1": without port and brackets.
std::string hostText(sa const& address);

}  // namespace telephone::sip
