// Console, tour, play and serve.
#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>

#include <poll.h>
#include <unistd.h>

#include "Tour.h"
#include "telephone/Telephone.h"
#include "telephone/applications/ApplicationServer.h"
#include "telephone/applications/SocketPath.h"
#include "telephone/console/Console.h"
#include "telephone/console/Conversation.h"
#include "telephone/console/ScriptPlayer.h"
#include "telephone/console/Transcript.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/ServiceLibrary.h"
#include "telephone/framework/StopSignal.h"
#include "telephone/program/Programs.h"
#include "telephone/program/StartConfiguration.h"

namespace telephone {

namespace {

// A telephone that plays a script needs no socket, so another telephone at the usual path does not stop it.
bool needsSocket(CommandLine const& line, Configuration const& configuration)
{
    bool const plays = line.action == Action::kPlay || line.action == Action::kTour;
    return !plays || !configuration.applications.path.empty();
}

std::unique_ptr<ApplicationServer> openSocket(CommandLine const& line, Configuration const& configuration,
                                              Telephone& telephone)
{
    ApplicationSocketConfiguration const& wanted = configuration.applications;
    ApplicationServer::Settings const settings{wanted.path.empty() ? standardSocketPath() : wanted.path,
                                               static_cast<std::size_t>(wanted.maximumApplications),
                                               static_cast<std::size_t>(wanted.queuedMessages)};
    try {
        return std::make_unique<ApplicationServer>(settings, telephone.context(), telephone.requests());
    } catch (SocketInUse const& inUse) {
        if (needsSocket(line, configuration)) {
            throw;
        }
        log(kLogInfo, "telephone", "no application socket: {}", inUse.what());
        return nullptr;
    }
}

void waitFor(StopSignal const& stop)
{
    constexpr int kForever = -1;
    pollfd waited{stop.descriptor(), POLLIN, 0};
    while (poll(&waited, 1, kForever) < 0) {
    }
}

bool play(Conversation& conversation, CommandLine const& line)
{
    ScriptPlayer player(conversation);
    if (line.action == Action::kTour) {
        std::istringstream tour(kTour);
        return player.play(tour, "tour");
    }
    if (line.script == "-") {
        return player.play(std::cin, "standard input");
    }
    std::ifstream script(line.script);
    if (!script) {
        conversation.transcript().error(line.script + ": cannot be read");
        return false;
    }
    return player.play(script, line.script);
}

bool talk(Conversation& conversation, CommandLine const& line)
{
    bool const onTerminal = isatty(STDIN_FILENO) == 1;
    if (line.action == Action::kConsole) {
        if (onTerminal) {
            conversation.transcript().note("help tells what can be written here; Tab completes; quit ends");
        }
        Console(conversation).run();
        return true;
    }
    bool const held = play(conversation, line);
    if (line.action == Action::kTour && onTerminal && !conversation.isStopped()) {
        conversation.transcript().note("help tells what can be written here; Tab completes; quit ends");
        Console(conversation).run();
    }
    return held;
}

}  // namespace

int runTelephone(CommandLine const& line, StopSignal const& stop)
{
    Configuration const configuration = startConfiguration(line);
    Telephone telephone(configuration, ServiceLibrary::find(line.library));
    if (line.action == Action::kServe) {
        // Whoever finds the socket finds a telephone that can call.
        telephone.activate();
        auto const server = openSocket(line, configuration, telephone);
        std::cout << "applications can connect at " << server->path() << std::endl;
        waitFor(stop);
        return 0;
    }
    Transcript transcript([](std::string const& text) {
        std::fwrite(text.data(), 1, text.size(), stdout);
        std::fputc('\n', stdout);
        std::fflush(stdout);
    });
    Conversation conversation("console", telephone.context(), telephone.requests(), telephone.controls(), transcript,
                              stop.descriptor());
    auto const server = openSocket(line, configuration, telephone);
    telephone.activate();
    return talk(conversation, line) ? 0 : 1;
}

}  // namespace telephone
