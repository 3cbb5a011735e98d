// The HTTP library's server and its sockets: certificate, listening, end of the connections.
#pragma once

#include <memory>

#include "telephone/base/Refusal.h"
#include "telephone/configuration/Configuration.h"
#include "telephone/configuration/HostPort.h"

namespace httplib {
class Server;
}

namespace telephone {

// A server for HTTP or, with a certificate, for HTTPS. Refused if the certificate or its key cannot be used.
[[nodiscard]] Outcome<std::unique_ptr<httplib::Server>> makeHttpServer(HttpConfiguration const& http);

// Lets the server listen at an address, port 0: any free one. Returns the port, or 0 if that is not possible.
int listenForHttp(httplib::Server& server, HostPort const& place);

// Ends the connections at a port of this process. The library keeps their sockets to itself and would wait until their
// timeouts expire.
void endConnections(int port);

}  // namespace telephone
