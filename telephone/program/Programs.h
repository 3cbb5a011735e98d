// What the program does for each of its commands. Each returns the exit status: 0 well, 1 something did not hold, and
// why is on standard error or in the transcript.
#pragma once

#include "telephone/program/CommandLine.h"

namespace telephone {

class StopSignal;

// Console, tour, play and serve: a telephone in this process.
int runTelephone(CommandLine const& line, StopSignal const& stop);
// The exchange alone, until it is ended by a signal.
int runExchange(CommandLine const& line, StopSignal const& stop);
// Those that speak to a running telephone.
int runRequest(CommandLine const& line, StopSignal const& stop);
int runWatch(CommandLine const& line, StopSignal const& stop);
int runStore(CommandLine const& line);
// The protocol's description; needs no telephone.
int runDescribe(CommandLine const& line);

}  // namespace telephone
