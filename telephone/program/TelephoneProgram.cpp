// The commands console, tour, play and serve.
#include <array>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <optional>
#include <sstream>

#include <poll.h>
#include <spdlog/fmt/fmt.h>
#include <unistd.h>

#include "Tour.h"
#include "telephone/Telephone.h"
#include "telephone/console/Console.h"
#include "telephone/console/Conversation.h"
#include "telephone/console/ScriptPlayer.h"
#include "telephone/console/ScriptReport.h"
#include "telephone/console/Transcript.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/ServiceLibrary.h"
#include "telephone/framework/StopSignal.h"
#include "telephone/program/Entrances.h"
#include "telephone/program/Programs.h"
#include "telephone/program/StartConfiguration.h"
#include "telephone/program/TrafficCheck.h"

namespace telephone {

namespace {

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
    std::istringstream script(kTourScript);
    bool const passed = ScriptPlayer(conversation).play(script, "tour").passed();
    bool const staysOpen = isatty(STDIN_FILENO) == 1 && !conversation.isStopped();
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

void printLine(std::string const& text)
{
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fputc('\n', stdout);
    std::fflush(stdout);
}

// The socket appears once the telephone can make calls.
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
            stop.wait();
            return 0;
        });
}

Outcome<int> converse(CommandLine const& line, Configuration const& configuration, Telephone& telephone,
                      StopSignal const& stop)
{
    Transcript transcript(printLine);
    Conversation conversation("console", telephone.sessions(nullptr), transcript, stop.descriptor());
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
