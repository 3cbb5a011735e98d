#include "telephone/sip/ConnectionLimits.h"

#include <algorithm>
#include <cerrno>
#include <map>
#include <utility>

#include <sys/socket.h>

#include "telephone/sip/MemorySockets.h"
#include "telephone/time/VirtualTime.h"

namespace telephone::sip {

namespace {

// By the address that was called.
std::map<SocketAddress, ConnectionLimits*>& guarded()
{
    static auto& all = *new std::map<SocketAddress, ConnectionLimits*>;  // never destroyed, as the network
    return all;
}

// The number of a closed descriptor may belong to another connection by now, which has another far end.
bool isConnectedTo(int descriptor, sa const& peer)
{
    sa present{};
    present.len = sizeof present.u;
    return getpeername(descriptor, &present.u.sa, &present.len) == 0 && sa_cmp(&present, &peer, SA_ALL);
}

}  // namespace

ConnectionLimits::ConnectionLimits(Limits const& limits, Logger log)
    : limits_(limits)
    , log_(std::move(log))
{}

ConnectionLimits::~ConnectionLimits()
{
    std::erase_if(guarded(), [this](auto const& each) { return each.second == this; });
}

void ConnectionLimits::guard(sa const& local)
{
    guarded()[SocketAddress(local)] = this;
}

bool ConnectionLimits::hasRoomFor(RequestLimits::Source const& source) const
{
    auto const fromSource = std::ranges::count(connections_, source, &Connection::source);
    return (limits_.connections == 0 || std::cmp_less(connections_.size(), limits_.connections)) &&
           (limits_.sourceConnections == 0 || std::cmp_less(fromSource, limits_.sourceConnections));
}

bool ConnectionLimits::admit(sa const& peer, std::function<bool()> isOpen)
{
    auto const source = SocketAddress(peer).host;
    std::erase_if(connections_, [](Connection const& each) { return !each.isOpen(); });
    bool const hasRoom = hasRoomFor(source);
    if (hasRoom) {
        connections_.push_back({source, std::move(isOpen)});
    } else if (!refuses_ && log_) {
        log_(LogLevel::kWarning, "Connection from " + addressText(peer) +
                                     " is refused: too many are open (limits.connections, "
                                     "limits.connections-per-address)");
    }
    refuses_ = !hasRoom;
    return hasRoom;
}

int admitConnection(tcp_conn*& accepted)
{
    sa local{};
    sa peer{};
    (void)tcp_conn_local_get(accepted, &local);
    auto const limits = guarded().find(SocketAddress(local));
    if (limits == guarded().end()) {
        return 0;
    }
    std::function<bool()> isOpen;
    if (isVirtual()) {
        peer = peerOf(*accepted);
        isOpen = livenessOf(*accepted);
    } else {
        (void)tcp_conn_peer_get(accepted, &peer);
        isOpen = [descriptor = tcp_conn_fd(accepted), peer] { return isConnectedTo(descriptor, peer); };
    }
    if (limits->second->admit(peer, std::move(isOpen))) {
        return 0;
    }
    accepted = static_cast<tcp_conn*>(mem_deref(accepted));
    return ECONNREFUSED;
}

}  // namespace telephone::sip
