#include "telephone/fleet/Members.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>

#include <spdlog/fmt/fmt.h>

#include "telephone/fleet/FleetConfiguration.h"
#include "telephone/time/Waiting.h"

namespace telephone {

namespace {

namespace fs = std::filesystem;

Outcome<> writeConfiguration(FleetTelephone const& telephone, std::string const& text)
{
    std::error_code error;
    fs::create_directories(telephone.folder(), error);
    std::string const file = telephone.folder() + "/" + FleetTelephone::kConfiguration;
    std::ofstream stream(file);
    stream << text << std::flush;
    return stream ? Outcome<>() : refuse(RefusalKind::kUnavailable, file + ": cannot be written");
}

std::string secondsText(SteadyClock::duration duration)
{
    return fmt::format("{:g} s", std::chrono::duration<double>(duration).count());
}

}  // namespace

Outcome<std::unique_ptr<Members>> Members::make(Plan plan, Configure const& configure, int stop, Note note)
{
    std::unique_ptr<Members> members(new Members(std::move(plan), stop, std::move(note)));
    for (FleetTelephone const& each : members->all_) {
        if (auto const written = writeConfiguration(each, configure(each.number())); !written) {
            return tl::unexpected(written.error());
        }
    }
    return members;
}

Members::Members(Plan plan, int stop, Note note)
    : plan_(std::move(plan))
    , stop_(stop)
    , note_(std::move(note))
    , pauses_(static_cast<std::size_t>(plan_.count), plan_.firstPause)
{
    for (int number = 1; number <= plan_.count; ++number) {
        all_.emplace_back(number, plan_.folder + "/" + fleetNumber(number));
    }
}

Members::~Members()
{
    for (FleetTelephone& each : all_) {
        each.end(true);
    }
    auto const isRunning = [](FleetTelephone const& each) { return each.endDescriptor() >= 0; };
    for (FleetTelephone& each : all_) {
        if (isRunning(each)) {
            pollfd ended{each.endDescriptor(), POLLIN, 0};
            pollUntil({&ended, 1}, each.deadline(), "telephones that end");
        }
    }
    // The destructors of the processes end and take those that are left.
}

Outcome<bool> Members::start(std::function<void(int running)> const& progress)
{
    for (FleetTelephone& each : all_) {
        each.startNow();
    }
    while (true) {
        auto const running = std::ranges::count(all_, FleetCondition::kRunning, &FleetTelephone::condition);
        progress(static_cast<int>(running));
        if (running == plan_.count) {
            isStarted_ = true;
            return true;
        }
        // Each time one runs or ends, the next one may be started.
        auto const came = wait(-1, SteadyClock::now() + std::chrono::milliseconds(100));
        if (!failure_.empty()) {
            return refuse(RefusalKind::kUnavailable, failure_);
        }
        if (came == Came::kStop) {
            return false;
        }
    }
}

Members::Came Members::wait(int input, SteadyClock::time_point deadline)
{
    while (true) {
        auto until = deadline;
        std::vector<pollfd> files = waited(input, until);
        pollUntil(files, until, "telephones");
        if (files[0].revents != 0) {
            return Came::kStop;
        }
        supervise();
        if (files[1].revents != 0) {
            return Came::kInput;
        }
        if (SteadyClock::now() >= deadline || !failure_.empty()) {
            return Came::kDeadline;
        }
    }
}

std::vector<pollfd> Members::waited(int input, SteadyClock::time_point& deadline)
{
    auto const held = lock();
    std::vector<pollfd> files{{stop_, POLLIN, 0}, {input, POLLIN, 0}, {wakeUp_.descriptor(), POLLIN, 0}};
    bool const mayStart = starting() < plan_.startsAtOnce;
    for (FleetTelephone const& each : all_) {
        files.push_back({each.endDescriptor(), POLLIN, 0});
        files.push_back({each.outputDescriptor(), POLLIN, 0});
        if (mayStart || each.condition() != FleetCondition::kWaiting) {
            deadline = std::min(deadline, each.deadline());
        }
    }
    return files;
}

void Members::supervise()
{
    std::vector<std::string> notes;
    {
        auto const held = lock();
        wakeUp_.clear();
        for (FleetTelephone& each : all_) {
            takeOutput(each);
            takeEnd(each);
            actAtDeadline(each);
        }
        notes.swap(notes_);
    }
    for (std::string const& each : notes) {
        note_(each);
    }
}

void Members::takeOutput(FleetTelephone& telephone)
{
    bool const wrote = telephone.outputDescriptor() >= 0 && isReadable(telephone.outputDescriptor());
    if (wrote && telephone.takeOutput() && telephone.starts() > 1) {
        notes_.push_back(fmt::format("telephone {} runs again", telephone.number()));
    }
}

void Members::takeEnd(FleetTelephone& telephone)
{
    if (telephone.endDescriptor() < 0 || !isReadable(telephone.endDescriptor())) {
        return;
    }
    std::string const why = telephone.takeEnd();
    hasFailures_ = hasFailures_ || telephone.condition() != FleetCondition::kStopped;
    if (!isStarted_) {
        failure_ = fmt::format("telephone {} {}; its files are in {}", telephone.number(), why, telephone.folder());
    } else if (telephone.condition() == FleetCondition::kStopped) {
        notes_.push_back(fmt::format("telephone {} is stopped", telephone.number()));
    } else {
        auto const pause = nextPause(telephone);
        telephone.startLater(pause);
        notes_.push_back(
            fmt::format("telephone {} {}; it is started again in {}", telephone.number(), why, secondsText(pause)));
    }
}

SteadyClock::duration Members::nextPause(FleetTelephone const& telephone)
{
    auto& next = pauses_[static_cast<std::size_t>(telephone.number() - 1)];
    if (SteadyClock::now() - telephone.since() >= plan_.longestPause) {
        next = plan_.firstPause;
    }
    auto const pause = next;
    next = std::min(2 * next, plan_.longestPause);
    return pause;
}

void Members::actAtDeadline(FleetTelephone& telephone)
{
    if (SteadyClock::now() < telephone.deadline()) {
        return;
    }
    if (telephone.endDescriptor() >= 0) {
        telephone.kill();
    } else if (starting() < plan_.startsAtOnce) {
        begin(telephone);
    }
}

void Members::begin(FleetTelephone& telephone)
{
    auto const started = telephone.start(plan_.command);
    if (started) {
        return;
    }
    failure_ = isStarted_
                   ? std::string()
                   : fmt::format("telephone {} cannot be started: {}", telephone.number(), started.error().reason);
    auto const pause = nextPause(telephone);
    telephone.startLater(pause);
    notes_.push_back(fmt::format("telephone {} cannot be started: {}; it is tried again in {}", telephone.number(),
                                 started.error().reason, secondsText(pause)));
}

std::size_t Members::starting() const
{
    return static_cast<std::size_t>(std::ranges::count_if(all_, [](FleetTelephone const& each) {
        return each.endDescriptor() >= 0 && each.condition() == FleetCondition::kStarting;
    }));
}

Outcome<FleetTelephone*> Members::find(std::string_view number)
{
    int value = 0;
    auto const [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
    if (error != std::errc() || end != number.data() + number.size()) {
        return refuse(RefusalKind::kBadInput,
                      fmt::format("\"{}\" does not name telephones: write 7, 3-5, 1,4 or all", number));
    }
    if (value < 1 || value > plan_.count) {
        return refuse(RefusalKind::kNotFound,
                      fmt::format("there is no telephone {}; the fleet has {}", number,
                                  plan_.count == 1 ? std::string("only 1") : fmt::format("1 to {}", plan_.count)));
    }
    return &all_[static_cast<std::size_t>(value - 1)];
}

Outcome<std::vector<FleetTelephone*>> Members::select(std::string_view numbers)
{
    std::vector<FleetTelephone*> found;
    if (numbers == "all") {
        std::ranges::transform(all_, std::back_inserter(found), [](FleetTelephone& each) { return &each; });
        return found;
    }
    for (bool isLast = false; !isLast;) {
        std::size_t const comma = std::min(numbers.find(','), numbers.size());
        std::string_view const range = numbers.substr(0, comma);
        isLast = comma == numbers.size();
        numbers.remove_prefix(std::min(comma + 1, numbers.size()));
        std::size_t const dash = std::min(range.find('-'), range.size());
        auto const first = find(range.substr(0, dash));
        auto const last = dash == range.size() ? first : find(range.substr(dash + 1));
        if (!first || !last) {
            return tl::unexpected((first ? last : first).error());
        }
        if ((*first)->number() > (*last)->number()) {
            return refuse(RefusalKind::kBadInput,
                          fmt::format("{} runs backwards: write the smaller number first", range));
        }
        for (int number = (*first)->number(); number <= (*last)->number(); ++number) {
            found.push_back(&all_[static_cast<std::size_t>(number - 1)]);
        }
    }
    return found;
}

}  // namespace telephone
