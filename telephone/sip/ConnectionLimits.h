// How many TCP and TLS connections others may have open to a user agent, in total and from one address, so that nobody
// can take all of its descriptors. Asked for each connection as soon as it is accepted; one that is refused is closed
// at once. The stack does not tell of the end of a connection, so that each is asked whether it is still open.
//
// Owned by Element; used under the lock.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "telephone/sip/Log.h"
#include "telephone/sip/MemoryNetwork.h"
#include "telephone/sip/RequestLimits.h"

namespace telephone::sip {

class ConnectionLimits
{
public:
    ConnectionLimits(Limits const& limits, Logger log);
    ~ConnectionLimits();
    ConnectionLimits(ConnectionLimits const&) = delete;
    ConnectionLimits& operator=(ConnectionLimits const&) = delete;

    // From now on connections to this address of ours are counted.
    void guard(sa const& local);
    // Counts a connection; false: there are too many.
    [[nodiscard]] bool admit(sa const& peer, std::function<bool()> isOpen);

private:
    struct Connection
    {
        RequestLimits::Source source;
        std::function<bool()> isOpen;
    };

    bool hasRoomFor(RequestLimits::Source const& source) const;

    Limits const limits_;
    Logger const log_;
    std::vector<Connection> connections_;
    bool refuses_ = false;  // the log says so once, until one is admitted again
};

// What the stack's function tcp_accept is to return for a connection that it has accepted: 0, or ECONNREFUSED for one
// that is too many, which this closes.
int admitConnection(tcp_conn*& accepted);

}  // namespace telephone::sip
