#include "telephone/fleet/FleetTelephone.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <spdlog/fmt/fmt.h>
#include <sys/wait.h>
#include <unistd.h>

#include "telephone/applications/TelephoneConnection.h"
#include "telephone/fleet/FleetConfiguration.h"

namespace telephone {

namespace {

using namespace std::chrono_literals;

constexpr auto kGrace = 5s;  // to end after SIGTERM
constexpr char const* kSocket = "socket";
constexpr std::string_view kPanelLine = "panel: ";
constexpr auto kIntroduction = {"hello fleet", "reasons on", "strict on"};

Outcome<std::pair<FileDescriptor, FileDescriptor>> makePipe()
{
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        return refuse(RefusalKind::kUnavailable, fmt::format("no pipe: {}", std::strerror(errno)));
    }
    return std::pair(FileDescriptor(ends[0]), FileDescriptor(ends[1]));
}

}  // namespace

FleetTelephone::FleetTelephone(int number, std::string folder)
    : number_(number)
    , folder_(std::move(folder))
{}

Outcome<> FleetTelephone::start(std::vector<std::string> words)
{
    words.insert(words.end(), {"--config", kConfiguration, "--log-file", "log", "--socket", kSocket, "serve"});
    return makePipe().and_then([&](std::pair<FileDescriptor, FileDescriptor> pipe) {
        return TelephoneProcess::start(std::move(words), folder_, pipe.second.get()).map([&](TelephoneProcess started) {
            process_ = std::move(started);
            output_ = std::move(pipe.first);
            condition_ = FleetCondition::kStarting;
            deadline_ = kNoDeadline;
            since_ = SteadyClock::now();
            ++starts_;
        });
    });
}

void FleetTelephone::end(bool stopped)
{
    isStopped_ = isStopped_ || stopped;
    if (process_) {
        process_->terminate();
        deadline_ = SteadyClock::now() + kGrace;
    } else if (isStopped_) {
        condition_ = FleetCondition::kStopped;
        deadline_ = kNoDeadline;
    }
}

void FleetTelephone::kill() const
{
    process_->kill();
}

bool FleetTelephone::takeOutput()
{
    std::array<char, 4096> buffer;
    ssize_t const count = read(output_.get(), buffer.data(), buffer.size());
    if (count <= 0) {
        output_ = FileDescriptor();
        return false;
    }
    written_.append(buffer.data(), static_cast<std::size_t>(count));
    bool runs = false;
    for (std::size_t end = 0; (end = written_.find('\n')) != std::string::npos; written_.erase(0, end + 1)) {
        std::string_view const line = std::string_view(written_).substr(0, end);
        if (line.starts_with(kPanelLine)) {
            panel_ = line.substr(kPanelLine.size());
            condition_ = FleetCondition::kRunning;
            runs = true;
        }
    }
    return runs;
}

std::string FleetTelephone::takeEnd()
{
    int const status = process_->wait();
    process_.reset();
    client_.reset();
    output_ = FileDescriptor();
    written_.clear();
    panel_.clear();
    reason_ = TelephoneProcess::endWords(status);
    auto const errors = TelephoneProcess::lastErrors(folder_, 1);
    if (WIFEXITED(status) && WEXITSTATUS(status) != 0 && !errors.empty()) {
        reason_ += ": " + errors.front();
    }
    condition_ = isStopped_ ? FleetCondition::kStopped : FleetCondition::kWaiting;
    deadline_ = kNoDeadline;
    return reason_;
}

void FleetTelephone::startLater(SteadyClock::duration pause)
{
    deadline_ = SteadyClock::now() + pause;
}

void FleetTelephone::startNow()
{
    isStopped_ = false;
    if (!process_) {
        condition_ = FleetCondition::kWaiting;
        deadline_ = SteadyClock::now();
    }
}

Outcome<> FleetTelephone::checkRuns() const
{
    if (condition_ == FleetCondition::kRunning) {
        return {};
    }
    std::string const why = condition_ == FleetCondition::kStarting  ? "is still starting"
                            : condition_ == FleetCondition::kStopped ? "is stopped; start it with start"
                                                                     : reason_ + " and is started again";
    return refuse(RefusalKind::kUnavailable, fmt::format("telephone {} {}", number_, why));
}

Outcome<> FleetTelephone::connect()
{
    if (client_) {
        return {};
    }
    return connectTo(folder_ + "/" + kSocket).and_then([this](telephone_client::Connection made) -> Outcome<> {
        for (char const* const each : kIntroduction) {
            if (auto const reply = ask(made, each); !reply) {
                return tl::unexpected(reply.error());
            }
        }
        client_ = std::move(made);
        return {};
    });
}

Outcome<> FleetTelephone::send(std::string_view text)
{
    return checkRuns().and_then([this] { return connect(); }).and_then([&] { return telephone::send(*client_, text); });
}

Outcome<telephone_client::Reply> FleetTelephone::reply(int stop, SteadyClock::time_point deadline)
{
    auto reply = replyOf(*client_, stop, deadline);
    if (!reply && reply.error().kind == RefusalKind::kUnavailable) {
        client_.reset();
    }
    return reply;
}

}  // namespace telephone
