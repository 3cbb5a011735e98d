// The commands of the program. Each returns its exit status, or a refusal, which main prints: 0 success; 1 failure,
// with the reason on standard error or in the transcript.
#pragma once

#include <functional>

#include "telephone/base/Refusal.h"
#include "telephone/program/CommandLine.h"

namespace telephone {

class Conversation;
class StopSignal;

// Console, tour, play and serve: a telephone in this process.
[[nodiscard]] Outcome<int> runTelephone(CommandLine const& line, StopSignal const& stop);
// The same, with a use of its own, which returns whether it succeeded; null: as the command says.
using Talk = std::function<Outcome<bool>(Conversation& conversation)>;
[[nodiscard]] Outcome<int> runTelephone(CommandLine const& line, StopSignal const& stop, Talk const& talk);
// Either side of a recording. 2: it cannot be read.
[[nodiscard]] Outcome<int> runReplay(CommandLine const& line, StopSignal const& stop);
// A trace: as a tree, explained, or as a ladder. 2: it cannot be read, or has no such event, lamp or call.
[[nodiscard]] Outcome<int> runTrace(CommandLine const& line, StopSignal const& stop);
[[nodiscard]] Outcome<int> runWhy(CommandLine const& line);
[[nodiscard]] Outcome<int> runLadder(CommandLine const& line);
// Scripts, each in a telephone of its own. 2: the command line is wrong, or there is no script where it
// says.
[[nodiscard]] Outcome<int> runTest(CommandLine const& line, StopSignal const& stop);
// Random hours of a telephone, each in a process of its own, until one fails.
[[nodiscard]] Outcome<int> runChaos(CommandLine const& line, StopSignal const& stop);
// The exchange without a telephone, until a signal ends it.
[[nodiscard]] Outcome<int> runExchange(CommandLine const& line, StopSignal const& stop);
// Many telephones, each in a process of its own, on one exchange in this process. 2: the options do not fit.
[[nodiscard]] Outcome<int> runFleet(CommandLine const& line, StopSignal const& stop);
// The clients of a running telephone.
[[nodiscard]] Outcome<int> runDo(CommandLine const& line, StopSignal const& stop);
[[nodiscard]] Outcome<int> runRequest(CommandLine const& line, StopSignal const& stop);
[[nodiscard]] Outcome<int> runWatch(CommandLine const& line, StopSignal const& stop);
// The configuration store.
[[nodiscard]] Outcome<int> runStore(CommandLine const& line);
// The microphones and loudspeakers of this machine.
[[nodiscard]] Outcome<int> runDevices(CommandLine const& line);
// The description of the protocol; needs no telephone.
[[nodiscard]] Outcome<int> runDescribe(CommandLine const& line);

}  // namespace telephone
