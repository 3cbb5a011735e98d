// The commands console, tour, play and serve.
#include <array>
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
#include "telephone/access/TelephoneTrace.h"
#include "telephone/console/Console.h"
#include "telephone/console/Conversation.h"
#include "telephone/console/LinePrompt.h"
#include "telephone/console/ScriptPlayer.h"
#include "telephone/console/Transcript.h"
#include "telephone/framework/Refusals.h"
#include "telephone/framework/ServiceLibrary.h"
#include "telephone/framework/StopSignal.h"
#include "telephone/program/Output.h"
#include "telephone/program/Programs.h"
#include "telephone/program/ScriptPlay.h"
#include "telephone/program/StartConfiguration.h"
#include "telephone/program/TrafficCheck.h"
#include "telephone/program/WaysIn.h"
#include "telephone/time/VirtualTime.h"
#include "telephone/time/Waiting.h"

namespace telephone {

namespace {

constexpr int kKeepEnvironment = 0;  // of sd_notify
constexpr char const* kTourIntroduction =
    "This telephone calls numbers of its own exchange, on this machine only. Each\n"
    "call is drawn as it happens: requests and events of an application on the left,\n"
    "what passes between telephone and far end on the right. It takes {}.\n\n";
constexpr char const* kWatchIntroduction =
    "Open the panel's address in a browser to watch it there, too. It begins in {} s,\n"
    "or with Enter.\n";
constexpr int kTimeToOpen = 15;  // seconds, for the address of the panel
constexpr std::string_view kWatchMark = "# watch\n";
constexpr std::string_view kTimeToWatch = "pause 2\n";

// True if nothing was refused.
bool openConsole(Conversation& conversation)
{
    if (isatty(STDIN_FILENO) == 1) {
        conversation.transcript().note("help lists the commands; Tab completes; quit ends");
    }
    return Console(conversation).run();
}

// With pauses in which the panel can be looked at.
std::string watchableTour()
{
    std::string script = kTourScript;
    for (std::size_t at = 0; (at = script.find(kWatchMark, at)) != std::string::npos;) {
        script.replace(at, kWatchMark.size(), kTimeToWatch);
    }
    return script;
}

// Until somebody presses Enter, who has opened the panel by then.
void waitForWatchers(Conversation const& conversation)
{
    std::array<pollfd, 2> waited{{{STDIN_FILENO, POLLIN, 0}, {conversation.stopDescriptor(), POLLIN, 0}}};
    pollUntil(waited, SteadyClock::now() + std::chrono::seconds(kTimeToOpen), "Enter");
    if (waited[0].revents != 0) {
        std::array<char, 4096> typed;
        static_cast<void>(read(STDIN_FILENO, typed.data(), typed.size()));
    }
}

bool tour(Conversation& conversation, bool isWatched)
{
    Transcript& transcript = conversation.transcript();
    if (transcript.kind() == OutputKind::kDrawing) {
        transcript.note(fmt::format(kTourIntroduction, isWatched ? "half a minute" : "five seconds"));
    }
    if (isWatched) {
        transcript.note(fmt::format(kWatchIntroduction, kTimeToOpen));
        waitForWatchers(conversation);
    }
    std::istringstream script(isWatched ? watchableTour() : kTourScript);
    bool const passed = ScriptPlayer(conversation).play(script, "tour").passed();
    bool const staysOpen = isatty(STDIN_FILENO) == 1 && !conversation.isStopped();
    if (transcript.kind() == OutputKind::kDrawing) {
        conversation.writeAs(OutputKind::kWords);
    }
    return passed && (!staysOpen || openConsole(conversation));
}

// True if everything succeeded.
Outcome<bool> talkAsAsked(Conversation& conversation, CommandLine const& line, bool isWatched)
{
    if (line.action == Action::kPlay) {
        return playScript(conversation, line);
    }
    return line.action == Action::kTour ? tour(conversation, isWatched) : openConsole(conversation);
}

// The socket appears once the telephone can make calls. A service manager that has started the program is told of this,
// and of the end.
Outcome<int> serve(CommandLine const& line, Configuration const& configuration, Telephone& telephone,
                   StopSignal const& stop)
{
    return telephone.activate()
        .and_then([&] { return openWaysIn(line, configuration, telephone, stop); })
        .map([&stop](WaysIn const& waysIn) {
            std::cout << "applications can connect at " << waysIn.socket->path() << std::endl;
            if (waysIn.http != nullptr) {
                std::cout << "HTTP: " << waysIn.http->address() << std::endl;
                std::cout << "panel: " << waysIn.http->panelAddress() << std::endl;
            }
            sd_notify(kKeepEnvironment, "READY=1");
            stop.wait();
            sd_notify(kKeepEnvironment, "STOPPING=1");
            return 0;
        });
}

Outcome<int> converse(CommandLine const& line, Configuration const& configuration, Telephone& telephone,
                      StopSignal const& stop, Talk const& talk)
{
    SessionServices const services = telephone.sessions(nullptr);
    Transcript transcript = openTranscript(line, services.telephone.state().domain);
    Conversation conversation("console", services, transcript, stop.descriptor());
    if (line.lamps) {
        conversation.showLamps();
    }
    auto const waysIn = openWaysIn(line, configuration, telephone, stop);
    if (!waysIn) {
        return tl::unexpected(waysIn.error());
    }
    if (waysIn->http != nullptr) {
        transcript.note("HTTP: " + waysIn->http->address());
        transcript.note("panel: " + waysIn->http->panelAddress());
    }
    bool const isWatched = waysIn->http != nullptr && LinePrompt::isTerminal();
    return telephone.activate()
        .and_then([&] { return talk ? talk(conversation) : talkAsAsked(conversation, line, isWatched); })
        .map([](bool succeeded) { return succeeded ? 0 : 1; });
}

// A telephone is needed more than its recording and its trace.
void begin(Telephone& telephone, CommandLine const& line)
{
    SessionServices const services = telephone.sessions(nullptr);
    if (!line.record.empty()) {
        reportIfRefused("replay", services.recorder->start(line.record));
    }
    if (!line.trace.empty()) {
        reportIfRefused("trace", traceTo(line.trace, services.telephone));
    }
}

// In virtual time nothing outside this process can be reached.
Outcome<Configuration> fitToTime(Configuration const& configuration)
{
    if (isVirtual() && !configuration.server.registrar.empty()) {
        return refuse(RefusalKind::kNotSupported,
                      fmt::format("in virtual time the lines register at the built-in exchange only, not at {}: leave "
                                  "server.registrar empty, or start with --time real",
                                  configuration.server.registrar));
    }
    if (isVirtual() && !configuration.push.address.empty()) {
        return refuse(RefusalKind::kNotSupported,
                      fmt::format("in virtual time no push request can leave the telephone for {}: leave push.address "
                                  "empty, or start with --time real",
                                  configuration.push.address));
    }
    if (isVirtual() && configuration.media.source == "device") {
        return refuse(RefusalKind::kNotSupported, "in virtual time there is no microphone and no loudspeaker: set "
                                                  "media.source to another source, or start with --time real");
    }
    return configuration;
}

}  // namespace

Outcome<int> runTelephone(CommandLine const& given, StopSignal const& stop)
{
    return runTelephone(given, stop, nullptr);
}

Outcome<int> runTelephone(CommandLine const& given, StopSignal const& stop, Talk const& talk)
{
    auto const line = withScript(given, stop);
    if (!line) {
        return tl::unexpected(line.error());
    }
    std::optional<VirtualTime> virtualTime;
    if (line->virtualStart) {
        virtualTime.emplace(VirtualTime::Settings{line->seed, *line->virtualStart, stop.descriptor()});
    }
    return startConfiguration(*line).and_then(fitToTime).and_then([&](Configuration const& configuration) {
        return ServiceLibrary::find(line->library).and_then([&](std::string const& library) {
            Telephone telephone(configuration, library);
            std::optional<TrafficCheck> check;
            if (line->checked != CheckedTraffic::kNone) {
                check.emplace(telephone.sessions(nullptr), line->checked);
            }
            begin(telephone, *line);
            return servesOthers(line->action) ? serve(*line, configuration, telephone, stop)
                                              : converse(*line, configuration, telephone, stop, talk);
        });
    });
}

}  // namespace telephone
