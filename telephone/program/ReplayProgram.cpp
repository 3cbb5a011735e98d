// The command replay.
#include <fstream>
#include <iostream>

#include "telephone/access/TelephoneControls.h"
#include "telephone/console/Conversation.h"
#include "telephone/framework/StopSignal.h"
#include "telephone/framework/TimerService.h"
#include "telephone/program/Programs.h"
#include "telephone/program/StartConfiguration.h"
#include "telephone/program/WaysIn.h"
#include "telephone/replay/PlayedTelephone.h"
#include "telephone/replay/Replayer.h"

namespace telephone {

namespace {

constexpr int kBadRecording = 2;

Outcome<Recording> openRecording(std::string const& name)
{
    std::ifstream file(name);
    return file ? readRecording(file, name) : refuse(RefusalKind::kNotFound, name + ": cannot be read");
}

std::string textOf(TableRows const& rows)
{
    std::string text;
    for (std::string const& row : rows) {
        text += row + "\n";
    }
    return text;
}

// The differences on standard output; the report where the command line wants it. True: there is no difference.
Outcome<bool> write(ReplayReport const& report, CommandLine const& line)
{
    bool const isOnlyJson = line.output.json && line.replay.report.value_or("-") == "-";
    std::cout << (isOnlyJson ? "" : textOf(report.rows()));
    if (!line.replay.report && !line.output.json) {
        return report.isEqual();
    }
    std::string const text = line.output.json ? report.json() + "\n" : textOf(report.table());
    if (line.replay.report.value_or("-") == "-") {
        std::cout << text << std::flush;
        return report.isEqual();
    }
    std::ofstream file(*line.replay.report);
    file << text << std::flush;
    return file ? Outcome<bool>(report.isEqual())
                : refuse(RefusalKind::kUnavailable, "cannot write the report " + *line.replay.report);
}

Outcome<bool> playApplication(Conversation& conversation, Recording const& recording, CommandLine const& line)
{
    DisplayOptions options;
    options.ownDomain = conversation.controls().state().domain;
    ReplayReport report(recording.name);
    return Replayer(conversation, recording, options).play(report).and_then([&] { return write(report, line); });
}

Outcome<int> playTelephone(CommandLine const& line, StopSignal const& stop, Recording const& recording)
{
    if (line.virtualStart) {
        return refuse(RefusalKind::kNotSupported, "an application runs in real time: leave --time out");
    }
    if (auto const checked = PlayedTelephone::checkSessions(recording, line.replay.sessions); !checked) {
        return tl::unexpected(checked.error());
    }
    return startConfiguration(line).and_then([&](Configuration const& configuration) {
        TimerService timers;
        PlayedTelephone telephone(recording, line.replay.sessions, timers, [&stop] { stop.raise(); });
        return openApplicationSocket(configuration.applications, telephone.sessions())
            .and_then([&](std::unique_ptr<ApplicationServer> server) {
                std::cout << "applications can connect at " << server->path() << std::endl;
                stop.wait();
                server.reset();
                timers.stop();
                ReplayReport report(recording.name);
                telephone.addTo(report);
                return write(report, line);
            })
            .map([](bool isEqual) { return isEqual ? 0 : 1; });
    });
}

}  // namespace

Outcome<int> runReplay(CommandLine const& line, StopSignal const& stop)
{
    auto const recording = openRecording(line.replay.recording);
    if (!recording) {
        std::cerr << "telephone: " << recording.error().reason << std::endl;
        return kBadRecording;
    }
    if (line.replay.asTelephone) {
        return playTelephone(line, stop, *recording);
    }
    return runTelephone(line, stop,
                        [&](Conversation& conversation) { return playApplication(conversation, *recording, line); });
}

}  // namespace telephone
