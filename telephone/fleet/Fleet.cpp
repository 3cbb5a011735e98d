#include "telephone/fleet/Fleet.h"

#include <iostream>
#include <utility>

#include <spdlog/fmt/fmt.h>
#include <unistd.h>

#include "telephone/access/Words.h"
#include "telephone/console/Terminal.h"
#include "telephone/fleet/FleetCommands.h"
#include "telephone/fleet/FleetSite.h"
#include "telephone/time/SteadyClock.h"

namespace telephone {

namespace {

// On a terminal, one line that is written again and again.
void showProgress(int running, int count)
{
    if (terminalWidth() != 0) {
        std::cout << fmt::format("\r\x1b[K{}", running == count
                                                   ? std::string()
                                                   : fmt::format("{} of {} telephones run", running, count))
                  << std::flush;
    }
}

}  // namespace

Fleet::Fleet(FleetSettings settings, int stop)
    : settings_(std::move(settings))
    , stop_(stop)
    , write_([](std::string const& line) { std::cout << line << std::endl; })
{}

Outcome<int> Fleet::run()
{
    auto made =
        Members::make(settings_.plan, settings_.configure, stop_, [this](std::string const& words) { write_(words); });
    if (!made) {
        return tl::unexpected(made.error());
    }
    members_ = *std::move(made);
    auto status = serve();
    hasFailures_ = members_->hasFailures();
    members_.reset();
    return status;
}

Outcome<int> Fleet::serve()
{
    auto const http = HttpServer::open(settings_.http, std::make_unique<FleetSite>(*members_));
    if (!http) {
        return tl::unexpected(http.error());
    }
    write_("panel: " + (*http)->panelAddress());
    int const count = settings_.plan.count;
    return members_->start([count](int running) { showProgress(running, count); }).map([&](bool allRun) {
        if (!allRun) {
            return 0;
        }
        write_(fmt::format("{} telephone{} at {}; files in {}", count, count == 1 ? "" : "s", settings_.server,
                           settings_.plan.folder));
        if (LinePrompt::isTerminal()) {
            write_("help lists the commands; Tab completes; quit ends all");
        }
        return LinePrompt("fleet> ", LinePrompt::Interrupt::kRaisesSignal, *this).run() ? 0 : 1;
    });
}

bool Fleet::waitForInput()
{
    return members_->wait(STDIN_FILENO, kNoDeadline) == Members::Came::kInput;
}

void Fleet::settle()
{
    isOver_ = members_->wait(-1, SteadyClock::now()) == Members::Came::kStop || isOver_;
}

bool Fleet::runLine(std::string const& line)
{
    std::string_view const text = trimmed(line);
    if (text.empty() || text.starts_with('#')) {
        return true;
    }
    FleetLine const read = readFleetLine(text);
    bool const isOurs = read.command != nullptr && read.command->run == nullptr;
    auto const result = !isOurs                        ? runFleetLine(*members_, text)
                        : read.command->name == "quit" ? quit()
                                                       : waitAsTold(std::string(read.rest));
    if (!result) {
        refused(result.error().reason);
    } else if (!result->empty()) {
        write_(*result);
    }
    return result.has_value();
}

Outcome<std::string> Fleet::quit()
{
    isOver_ = true;
    return std::string();
}

Outcome<std::string> Fleet::waitAsTold(std::string const& time)
{
    auto const seconds = time.empty() ? Outcome<double>(0) : secondsOf(time);
    if (!seconds) {
        return tl::unexpected(seconds.error());
    }
    auto const duration = std::chrono::duration_cast<SteadyClock::duration>(std::chrono::duration<double>(*seconds));
    isOver_ = members_->wait(-1, time.empty() ? kNoDeadline : SteadyClock::now() + duration) == Members::Came::kStop;
    return std::string();
}

// At a prompt beside it; else to standard error, apart from the answers.
void Fleet::refused(std::string const& reason)
{
    if (LinePrompt::isTerminal()) {
        write_(reason);
    } else {
        std::cerr << reason << std::endl;
    }
}

std::vector<std::string> Fleet::completionsOf(std::string_view line)
{
    std::vector<std::string> found;
    for (FleetCommand const& each : fleetCommands()) {
        if (each.name.starts_with(line)) {
            found.emplace_back(each.name);
        }
    }
    return found;
}

}  // namespace telephone
