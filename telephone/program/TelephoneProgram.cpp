// The commands console, tour, play and serve.
#include <array>
#include <fstream>
#include <iostream>
#include <optional>
#include <sstream>

#include <poll.h>
#include <spdlog/fmt/fmt.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>

#include "Tour.h"
#include "telephone/Telephone.h"
#include "telephone/access/TelephoneControls.h"
#include "telephone/applications/ApplicationServer.h"
#include "telephone/applications/SocketPath.h"
#include "telephone/console/Console.h"
#include "telephone/console/Conversation.h"
#include "telephone/console/ScriptPlayer.h"
#include "telephone/console/ScriptReport.h"
#include "telephone/console/Transcript.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/ServiceLibrary.h"
#include "telephone/framework/StopSignal.h"
#include "telephone/http/HttpServer.h"
#include "telephone/program/Output.h"
#include "telephone/program/Programs.h"
#include "telephone/program/StartConfiguration.h"
#include "telephone/program/TrafficCheck.h"

namespace telephone {

namespace {

using Server = std::unique_ptr<ApplicationServer>;

constexpr int kKeepEnvironment = 0;  // of sd_notify
constexpr char const* kTourIntroduction =
    "This telephone calls numbers of its own exchange, on this machine only. Each\n"
    "call is drawn as it happens: requests and events of an application on the left,\n"
    "what passes between telephone and far end on the right. It takes five seconds.\n\n";

// Null: another telephone has the socket, and this one does not need it.
Outcome<Server> openSocket(CommandLine const& line, Configuration const& configuration, Telephone& telephone,
                           StopSignal const& stop)
{
    ApplicationSocketConfiguration const& wanted = configuration.applications;
    auto const path = wanted.path.empty() ? standardSocketPath() : wanted.path;
    auto server = path.and_then([&](std::string const& socket) {
        ApplicationServer::Settings const settings{socket, static_cast<std::size_t>(wanted.maximumApplications),
                                                   static_cast<std::size_t>(wanted.queuedMessages)};
        return ApplicationServer::open(settings, telephone.sessions([&stop] { stop.raise(); }));
    });
    // A script needs no socket, so another telephone at the default path does not prevent it.
    bool const plays = line.action == Action::kPlay || line.action == Action::kTour;
    bool const isTaken = !server && server.error().kind == RefusalKind::kAlreadyExists;
    if (isTaken && plays && wanted.path.empty()) {
        log(kLogInfo, "telephone", "no application socket: {}", server.error().reason);
        return Server();
    }
    return server;
}

// The ways in for other programs.
struct Entrances
{
    Server socket;                     // null: another telephone has it
    std::unique_ptr<HttpServer> http;  // null: not configured, or there is no socket
};

Outcome<Entrances> openEntrances(CommandLine const& line, Configuration const& configuration, Telephone& telephone,
                                 StopSignal const& stop)
{
    return openSocket(line, configuration, telephone, stop).and_then([&](Server socket) -> Outcome<Entrances> {
        if (configuration.http.address.empty()) {
            return Entrances{std::move(socket), nullptr};
        }
        if (socket == nullptr) {
            log(kLogInfo, "telephone", "no HTTP: its token is kept beside the application socket");
            return Entrances{};
        }
        HttpServer::Settings const settings{configuration.http, socket->path() + ".token"};
        return HttpServer::open(settings, telephone.sessions([&stop] { stop.raise(); }))
            .map([&socket](std::unique_ptr<HttpServer> http) {
                return Entrances{std::move(socket), std::move(http)};
            });
    });
}

// Standard input to its end. Refused if the program must end before.
Outcome<std::string> readInput(int stop)
{
    std::string text;
    while (true) {
        std::array<pollfd, 2> waited{{{STDIN_FILENO, POLLIN, 0}, {stop, POLLIN, 0}}};
        poll(waited.data(), waited.size(), -1);
        if (waited[1].revents != 0) {
            return refuse(RefusalKind::kUnavailable, "ended by a signal before the end of the script");
        }
        std::array<char, 4096> buffer;
        ssize_t const count = read(STDIN_FILENO, buffer.data(), buffer.size());
        if (count <= 0) {
            return text;
        }
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

Outcome<std::string> readScript(std::string const& name, int stop)
{
    if (name == "-") {
        return readInput(stop);
    }
    std::ifstream file(name);
    std::ostringstream text;
    text << file.rdbuf();
    return file ? Outcome<std::string>(text.str()) : refuse(RefusalKind::kNotFound, name + ": cannot be read");
}

Outcome<bool> play(Conversation& conversation, CommandLine const& line)
{
    auto const text = readScript(line.script, conversation.stopDescriptor());
    if (!text) {
        return tl::unexpected(text.error());
    }
    std::string const name = line.script == "-" ? "standard input" : line.script;
    std::istringstream script(*text);
    ScriptResult const result = ScriptPlayer(conversation).play(script, name);
    if (result.passed()) {
        conversation.transcript().note(fmt::format("passed: {} steps in {:.1f} s", result.steps, result.seconds));
    }
    return (line.junit.empty() ? Outcome<>() : writeJUnit(result, name, line.junit)).map([&result] {
        return result.passed();
    });
}

// True if nothing was refused.
bool openConsole(Conversation& conversation)
{
    if (isatty(STDIN_FILENO) == 1) {
        conversation.transcript().note("help lists the commands; Tab completes; quit ends");
    }
    return Console(conversation).run();
}

bool tour(Conversation& conversation)
{
    Transcript& transcript = conversation.transcript();
    if (transcript.kind() == OutputKind::kDrawing) {
        transcript.note(kTourIntroduction);
    }
    std::istringstream script(kTourScript);
    bool const passed = ScriptPlayer(conversation).play(script, "tour").passed();
    bool const staysOpen = isatty(STDIN_FILENO) == 1 && !conversation.isStopped();
    if (transcript.kind() == OutputKind::kDrawing) {
        conversation.writeAs(OutputKind::kWords);
    }
    return passed && (!staysOpen || openConsole(conversation));
}

// True if everything succeeded.
Outcome<bool> talk(Conversation& conversation, CommandLine const& line)
{
    if (line.action == Action::kPlay) {
        return play(conversation, line);
    }
    return line.action == Action::kTour ? tour(conversation) : openConsole(conversation);
}

// The socket appears once the telephone can make calls. A service manager that has started the program is told of this,
// and of the end.
Outcome<int> serve(CommandLine const& line, Configuration const& configuration, Telephone& telephone,
                   StopSignal const& stop)
{
    return telephone.activate()
        .and_then([&] { return openEntrances(line, configuration, telephone, stop); })
        .map([&stop](Entrances const& entrances) {
            std::cout << "applications can connect at " << entrances.socket->path() << std::endl;
            if (entrances.http != nullptr) {
                std::cout << "HTTP: " << entrances.http->address() << std::endl;
            }
            sd_notify(kKeepEnvironment, "READY=1");
            stop.wait();
            sd_notify(kKeepEnvironment, "STOPPING=1");
            return 0;
        });
}

Outcome<int> converse(CommandLine const& line, Configuration const& configuration, Telephone& telephone,
                      StopSignal const& stop)
{
    SessionServices const services = telephone.sessions(nullptr);
    Transcript transcript = openTranscript(line, services.telephone.state().domain);
    Conversation conversation("console", services, transcript, stop.descriptor());
    auto const entrances = openEntrances(line, configuration, telephone, stop);
    if (!entrances) {
        return tl::unexpected(entrances.error());
    }
    if (entrances->http != nullptr) {
        transcript.note("HTTP: " + entrances->http->address());
    }
    return telephone.activate().and_then([&] { return talk(conversation, line); }).map([](bool succeeded) {
        return succeeded ? 0 : 1;
    });
}

}  // namespace

Outcome<int> runTelephone(CommandLine const& line, StopSignal const& stop)
{
    return startConfiguration(line).and_then([&](Configuration const& configuration) {
        return ServiceLibrary::find(line.library).and_then([&](std::string const& library) {
            Telephone telephone(configuration, library);
            std::optional<TrafficCheck> check;
            if (line.checked != CheckedTraffic::kNone) {
                check.emplace(telephone.sessions(nullptr), line.checked);
            }
            bool const serves = line.action == Action::kServe;
            return serves ? serve(line, configuration, telephone, stop)
                          : converse(line, configuration, telephone, stop);
        });
    });
}

}  // namespace telephone
