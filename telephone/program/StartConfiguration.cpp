#include "telephone/program/StartConfiguration.h"

#include "telephone/configuration/ConfigurationFile.h"
#include "telephone/framework/Log.h"

namespace telephone {

namespace {

// Among the lines of a console or script, only warnings and failures are of interest.
constexpr int kQuietLevel = kLogWarning;

Configuration changed(Configuration configuration, CommandLine const& line)
{
    bool const isQuiet = line.action != Action::kServe && line.configuration.empty();
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
