#include "telephone/program/StartConfiguration.h"

#include "telephone/configuration/ConfigurationFile.h"
#include "telephone/console/LinePrompt.h"
#include "telephone/framework/Log.h"

namespace telephone {

namespace {

// Among the lines of a console or script, only warnings and failures are of interest.
constexpr int kQuietLevel = kLogWarning;
// The same with each start, so that an open page finds the telephone again.
constexpr char const* kPanelAddress = "127.0.0.1:8080";
// Of a tour that somebody may watch; two tours may run at once.
constexpr char const* kTourAddress = "127.0.0.1:0";

Configuration changed(Configuration configuration, CommandLine const& line)
{
    bool const isQuiet = !servesOthers(line.action) && line.configuration.empty();
    if (line.logLevel) {
        configuration.log.level = *line.logLevel;
    } else if (isQuiet && line.logFile.empty()) {
        configuration.log.level = kQuietLevel;
    }
    if (!line.logFile.empty()) {
        configuration.log.file = line.logFile;
    }
    if (!line.socket.empty()) {
        configuration.applications.path = line.socket;
    }
    if (line.action == Action::kPanel && configuration.http.address.empty()) {
        configuration.http.address = kPanelAddress;
    }
    if (line.action == Action::kTour && configuration.http.address.empty() && LinePrompt::isTerminal()) {
        configuration.http.address = kTourAddress;
    }
    if (line.withoutExchange) {
        configuration.exchange.enabled = false;
    }
    return configuration;
}

}  // namespace

Outcome<Configuration> startConfiguration(CommandLine const& line)
{
    auto const given = line.configuration.empty() ? Outcome<Configuration>(Configuration::standard())
                                                  : ConfigurationFile(line.configuration).read();
    return given.and_then([&line](Configuration const& read) {
        Configuration const configuration = changed(read, line);
        return openLog(configuration.log.level, configuration.log.file).map([&] { return configuration; });
    });
}

}  // namespace telephone
