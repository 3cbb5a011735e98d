// The ways in for other programs: the application socket and, if it is configured, HTTP.
#pragma once

#include <memory>

#include "telephone/applications/ApplicationServer.h"
#include "telephone/base/Refusal.h"
#include "telephone/configuration/Configuration.h"
#include "telephone/http/HttpServer.h"
#include "telephone/program/CommandLine.h"

namespace telephone {

class StopSignal;
class Telephone;

struct Entrances
{
    std::unique_ptr<ApplicationServer> socket;  // null: another telephone has it, and this one does not need it
    std::unique_ptr<HttpServer> http;           // null: not configured, or there is no socket
};

// Opens both. The command quit raises `stop`, which outlives them.
[[nodiscard]] Outcome<Entrances> openEntrances(CommandLine const& line, Configuration const& configuration,
                                               Telephone& telephone, StopSignal const& stop);

}  // namespace telephone
