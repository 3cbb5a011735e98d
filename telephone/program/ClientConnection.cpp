#include "telephone/program/ClientConnection.h"

#include "telephone/applications/SocketPath.h"
#include "telephone/applications/TelephoneConnection.h"
#include "telephone/program/StartConfiguration.h"

namespace telephone {

Outcome<telephone_client::Connection> connectToTelephone(CommandLine const& line)
{
    return startConfiguration(line)
        .and_then([](Configuration const& configuration) {
            std::string const& path = configuration.applications.path;
            return path.empty() ? standardSocketPath() : path;
        })
        .and_then(connectTo);
}

}  // namespace telephone
