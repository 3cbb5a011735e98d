#include "telephone/sip/LocalAddresses.h"

#include <algorithm>
#include <array>
#include <memory>

#include <ifaddrs.h>
#include <net/if.h>

#include "telephone/sip/StackFunctions.h"
#include "telephone/time/VirtualTime.h"

namespace telephone::sip {

namespace {

using Interfaces = std::unique_ptr<ifaddrs, decltype(&freeifaddrs)>;

Interfaces allInterfaces()
{
    ifaddrs* first = nullptr;
    (void)getifaddrs(&first);
    return {first, &freeifaddrs};
}

bool isUsable(sa const& address)
{
    return sa_af(&address) == AF_INET || (sa_af(&address) == AF_INET6 && !sa_is_linklocal(&address));
}

std::vector<sa> addressesOf(std::string const& interfaceName)
{
    std::vector<sa> found;
    auto const interfaces = allInterfaces();
    for (ifaddrs const* each = interfaces.get(); each; each = each->ifa_next) {
        sa address{};
        bool const isOurs = each->ifa_addr && interfaceName == each->ifa_name &&
                            sa_set_sa(&address, each->ifa_addr) == 0 && isUsable(address);
        bool const isFirst =
            std::ranges::none_of(found, [&address](sa const& known) { return sa_af(&known) == sa_af(&address); });
        if (isOurs && isFirst) {
            sa_set_port(&address, 0);
            found.push_back(address);
        }
    }
    std::ranges::stable_sort(found, {}, [](sa const& each) { return sa_af(&each) != AF_INET; });
    return found;
}

}  // namespace

Outcome<std::vector<sa>> localAddresses(std::string const& address)
{
    sa numeric{};
    if (sa_set_str(&numeric, address.c_str(), 0) == 0) {
        if (sa_is_any(&numeric)) {
            return refuse(RefusalKind::kBadInput, "the SIP address must be one of this machine's, not " + address);
        }
        return std::vector<sa>{numeric};
    }
    if (isVirtual()) {
        return refuse(RefusalKind::kNotSupported,
                      "in virtual time the SIP address must be an IP address, not the interface \"" + address + "\"");
    }
    if (if_nametoindex(address.c_str()) == 0) {
        return refuse(RefusalKind::kBadInput,
                      "\"" + address + "\" is neither an IP address nor a network interface of this machine");
    }
    auto found = addressesOf(address);
    if (found.empty()) {
        return refuse(RefusalKind::kUnavailable, "the network interface \"" + address + "\" has no IP address");
    }
    return found;
}

int listenWhereverPossible(udp_sock** made, sa const& local, udp_recv_h* received, void* argument)
{
    int const error = stack_udp_listen(made, &local, received, argument);
    bool const isForAll = sa_af(&local) == AF_INET6 && sa_is_any(&local) && sa_port(&local) == 0;
    if (error == 0 || !isForAll) {
        return error;
    }
    sa anyIpv4{};
    (void)sa_set_str(&anyIpv4, "0.0.0.0", 0);
    return stack_udp_listen(made, &anyIpv4, received, argument);
}

std::string hostText(sa const& address)
{
    std::array<char, 64> text{};
    return sa_ntop(&address, text.data(), static_cast<int>(text.size())) == 0 ? text.data() : "";
}

}  // namespace telephone::sip
