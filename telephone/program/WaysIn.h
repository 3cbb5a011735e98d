// The ways in for other programs: the application socket, and HTTP if it is configured.
#pragma once

#include <memory>

#include "telephone/applications/ApplicationServer.h"
#include "telephone/configuration/Configuration.h"
#include "telephone/http/HttpServer.h"
#include "telephone/program/CommandLine.h"

namespace telephone {

class StopSignal;
class Telephone;

// They end before the telephone.
struct WaysIn
{
    std::unique_ptr<ApplicationServer> socket;  // null: another telephone has it, and a script needs none
    std::unique_ptr<HttpServer> http;           // null: not configured, or there is no socket
};

// At the configured path, else at the standard one. Refused as ApplicationServer::open.
[[nodiscard]] Outcome<std::unique_ptr<ApplicationServer>>
openApplicationSocket(ApplicationSocketConfiguration const& wanted, SessionFactory sessions);

// Refused if one that is needed cannot be opened. The command quit of an application raises the stop signal.
[[nodiscard]] Outcome<WaysIn> openWaysIn(CommandLine const& line, Configuration const& configuration,
                                         Telephone& telephone, StopSignal const& stop);

}  // namespace telephone
