// The command fleet.
#include <algorithm>
#include <filesystem>
#include <iostream>
#include <memory>

#include <spdlog/fmt/fmt.h>
#include <sys/resource.h>

#include "telephone/CallServer.h"
#include "telephone/fleet/Fleet.h"
#include "telephone/fleet/FleetConfiguration.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/StopSignal.h"
#include "telephone/framework/TelephoneProcess.h"
#include "telephone/program/CommonOptions.h"
#include "telephone/program/Programs.h"
#include "telephone/sip/EventLoop.h"
#include "telephone/testing/WorkingFolder.h"

namespace telephone {

namespace {

namespace fs = std::filesystem;

constexpr int kUsage = 2;
constexpr rlim_t kFilesOfOne = 4;           // its process, its output, its socket, and one to spare
constexpr rlim_t kOtherFiles = 256;         // page, exchange, log
constexpr std::size_t kLongestFolder = 90;  // so that the paths of the sockets in it fit (unix(7))
constexpr char const* kAnyPort = "127.0.0.1:0";

Outcome<> checkOptions(CommandLine const& line)
{
    if (line.virtualStart) {
        return refuse(
            RefusalKind::kBadInput,
            "the telephones of a fleet are processes of their own, and virtual time moves within one process: "
            "start the fleet with --time real");
    }
    if (!line.logFile.empty() || !line.socket.empty() || !line.record.empty() || !line.trace.empty()) {
        return refuse(RefusalKind::kBadInput, "each telephone of a fleet has a log and a socket of its own: leave out "
                                              "--log-file, --socket, --record and --trace");
    }
    return {};
}

// The system permits a process few files at first, and more if it asks.
Outcome<> permitFiles(int telephones)
{
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    rlim_t const needed = static_cast<rlim_t>(telephones) * kFilesOfOne + kOtherFiles;
    if (limit.rlim_cur >= needed) {
        return {};
    }
    limit.rlim_cur = std::min(needed, limit.rlim_max);
    if (limit.rlim_max < needed || setrlimit(RLIMIT_NOFILE, &limit) != 0) {
        return refuse(
            RefusalKind::kLimit,
            fmt::format("{} telephones need {} open files, and the system permits {}: raise it with ulimit -n, "
                        "or start fewer",
                        telephones, needed, limit.rlim_max));
    }
    return {};
}

// The exchange on which the telephones register; none if the configuration names another server or switches it off.
class FleetServer
{
public:
    FleetServer(Configuration common, bool withoutExchange)
    {
        common.exchange.enabled = common.exchange.enabled && !withoutExchange;
        loop_.start();
        exchange_ = makeExchange(loop_, common);
        configuration_ = valueOrThrow(withServer(common, exchange_.get()));
    }

    [[nodiscard]] ServerConfiguration const& configuration() const { return configuration_.server; }
    // Of lines that have none; empty: they need one of their own.
    [[nodiscard]] std::string password() const { return exchange_ ? configuration_.exchange.password : std::string(); }
    [[nodiscard]] std::string words() const
    {
        std::string const& registrar = configuration_.server.registrar;
        return registrar.empty() ? "no server" : (exchange_ ? "the exchange " : "the server ") + registrar;
    }

private:
    sip::EventLoop loop_;
    std::unique_ptr<exchange::Exchange> exchange_;
    Configuration configuration_;
};

std::vector<std::string> commandOf(CommandLine const& line)
{
    std::vector<std::string> words{TelephoneProcess::ownProgram(), "--time", std::string(CommandLine::kRealTime)};
    auto const options = commonOptions(line);
    words.insert(words.end(), options.begin(), options.end());
    if (line.logLevel) {
        words.insert(words.end(), {"--log-level", std::to_string(*line.logLevel)});
    }
    return words;
}

FleetSettings settingsOf(CommandLine const& line, FleetConfiguration const& configuration, FleetServer const& server,
                         std::string const& folder)
{
    FleetSettings settings{
        {.count = line.count, .command = commandOf(line), .folder = folder, .startsAtOnce = 2 * jobsOf(std::nullopt)},
        [&configuration, &server](int number) {
            return configuration.textFor(number, server.configuration(), server.password());
        },
        {configuration.common().http, folder + "/token", folder + "/browsers"},
        server.words()};
    if (settings.http.http.address.empty()) {
        settings.http.http.address = kAnyPort;
    }
    return settings;
}

Outcome<int> runIn(CommandLine const& line, FleetConfiguration const& configuration, FleetServer const& server,
                   std::string const& folder, StopSignal const& stop)
{
    if (folder.size() > kLongestFolder) {
        return refuse(RefusalKind::kBadInput,
                      fmt::format("{} is too long a path for the sockets in it: name a folder of {} bytes at most with "
                                  "--files",
                                  folder, kLongestFolder));
    }
    Fleet fleet(settingsOf(line, configuration, server, folder), stop.descriptor());
    auto status = fleet.run();
    std::error_code ignored;
    if (!fleet.hasFailures() && line.test.files.empty()) {
        fs::remove_all(folder, ignored);
    } else if (line.test.files.empty()) {
        std::cout << "files are kept in " << folder << std::endl;
    }
    return status;
}

Outcome<int> start(CommandLine const& line, FleetConfiguration const& configuration, StopSignal const& stop)
{
    return openLog(line.logLevel.value_or(kLogWarning), "")
        .and_then([&] { return permitFiles(line.count); })
        .and_then([&] {
            FleetServer const server(configuration.common(), line.withoutExchange);
            return workingFolder(line.test.files, "fleet").and_then([&](std::string const& folder) {
                return runIn(line, configuration, server, folder, stop);
            });
        });
}

}  // namespace

Outcome<int> runFleet(CommandLine const& line, StopSignal const& stop)
{
    auto const configuration =
        checkOptions(line).and_then([&] { return FleetConfiguration::read(line.configuration, line.count); });
    if (!configuration) {
        std::cerr << "telephone: " << configuration.error().reason << std::endl;
        return kUsage;
    }
    return start(line, *configuration, stop);
}

}  // namespace telephone
