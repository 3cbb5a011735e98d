// The connection of the programs that use a running telephone: do, request and watch.
#pragma once

#include "TelephoneClient.h"
#include "telephone/base/Refusal.h"
#include "telephone/program/CommandLine.h"

namespace telephone {

// Connects to the telephone at the socket that the command line names, else at the configured one, else at the standard
// one. Refused as connectTo, and for a wrong configuration.
[[nodiscard]] Outcome<telephone_client::Connection> connectToTelephone(CommandLine const& line);

}  // namespace telephone
