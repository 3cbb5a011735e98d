#include "telephone/trace/Trace.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <vector>

#include <fcntl.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include "telephone/base/OwnerOnly.h"
#include "telephone/base/Version.h"
#include "telephone/time/Thread.h"
#include "telephone/time/TimeText.h"

namespace telephone {

namespace {

constexpr int kFormat = 1;
constexpr mode_t kForOwner = 0600;
constexpr std::size_t kUsualLine = 256;

// Where the lines go.
struct TraceOutput
{
    std::mutex mutex;
    int descriptor = -1;  // of the file; none
    std::string name;
    std::function<void(std::string const& reason)> failed;
    std::vector<TraceListener const*> listeners;

    // With the lock held, after each change.
    void update() const { trace::isOn = descriptor >= 0 || !listeners.empty(); }
};

TraceOutput& traceOutput()
{
    static TraceOutput output;
    return output;
}

std::atomic<std::uint64_t> lastStep{0};

// With the lock held.
void closeFile(TraceOutput& output)
{
    ::close(std::exchange(output.descriptor, -1));
    output.update();
}

// With the lock held. Closes the file if it fails.
Outcome<> append(TraceOutput& output, std::string_view line)
{
    ssize_t const written = ::write(output.descriptor, line.data(), line.size());
    if (written == static_cast<ssize_t>(line.size())) {
        return {};
    }
    std::string const error = written < 0 ? std::strerror(errno) : "there is no space";
    closeFile(output);
    return refuse(RefusalKind::kUnavailable, "the trace cannot be written to " + output.name + ": " + error);
}

// The time of a step. Many steps of a busy telephone share a millisecond, whose text is made once.
std::string const& timeOfStep()
{
    thread_local std::chrono::sys_time<std::chrono::milliseconds> latest{};
    thread_local std::string text;
    auto const now = std::chrono::floor<std::chrono::milliseconds>(wallTime());
    if (now != latest || text.empty()) {
        latest = now;
        text = timeText(now);
    }
    return text;
}

// What stands for a character behind a backslash; '\0': it stands for itself, or is rare.
constexpr char escapeOf(char letter)
{
    switch (letter) {
    case '"':
    case '\\':
        return letter;
    case '\n':
        return 'n';
    case '\r':
        return 'r';
    case '\t':
        return 't';
    default:
        return '\0';
    }
}

bool isSimple(char letter)
{
    return (letter >= ' ' && letter <= '~') || escapeOf(letter) != '\0';
}

}  // namespace

Outcome<> startTrace(std::string const& file, TraceHeader const& header,
                     std::function<void(std::string const& reason)> failed)
{
    TraceOutput& target = traceOutput();
    std::lock_guard const lock(target.mutex);
    if (target.descriptor >= 0) {
        return refuse(RefusalKind::kAlreadyExists, "a trace is being written already: trace off ends it");
    }
    if (auto owned = makeOwnerOnly(file); !owned) {
        return owned;
    }
    // A pipe that nobody reads must not stop the telephone.
    target.descriptor = ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NONBLOCK, kForOwner);
    if (target.descriptor < 0) {
        return refuse(RefusalKind::kUnavailable,
                      "the trace cannot be written to " + file + ": " + std::strerror(errno));
    }
    target.name = file;
    target.failed = std::move(failed);
    return append(target, "{\"trace\":" + std::to_string(kFormat) + ",\"telephone\":" + jsonText(kTelephoneName) +
                              ",\"version\":" + jsonText(kTelephoneVersion) + ",\"start\":" + jsonText(header.start) +
                              ",\"time\":" + jsonText(timeText(wallTime())) + ",\"domain\":" + jsonText(header.domain) +
                              "}\n")
        .map([&target] { target.update(); });
}

Outcome<> stopTrace()
{
    TraceOutput& output = traceOutput();
    std::lock_guard const lock(output.mutex);
    if (output.descriptor < 0) {
        return refuse(RefusalKind::kWrongState, "nothing is being traced");
    }
    closeFile(output);
    return {};
}

TraceListener::TraceListener(Note note)
    : note_(std::move(note))
{
    TraceOutput& output = traceOutput();
    std::lock_guard const lock(output.mutex);
    output.listeners.push_back(this);
    output.update();
}

TraceListener::~TraceListener()
{
    TraceOutput& output = traceOutput();
    std::lock_guard const lock(output.mutex);
    std::erase(output.listeners, this);
    output.update();
}

TraceStep::TraceStep(std::string_view kind, TraceCause because)
    : began_(SteadyClock::now())
{
    std::uint64_t const number = ++lastStep;
    cause_ = {because ? because.id : number, number};
    line_.reserve(kUsualLine);
    line_ = "{\"seq\":" + std::to_string(number) + ",\"time\":\"" + timeOfStep() +
            "\",\"thread\":" + jsonText(threadName()) + ",\"id\":" + std::to_string(cause_.id);
    if (because) {
        line_ += ",\"because\":" + std::to_string(because.step);
    }
    add("step", kind);
}

TraceStep& TraceStep::add(std::string_view name, std::string_view text)
{
    return addJson(name, jsonText(text));
}

TraceStep& TraceStep::add(std::string_view name, std::int64_t number)
{
    return addJson(name, std::to_string(number));
}

TraceStep& TraceStep::addUnlessEmpty(std::string_view name, std::string_view text)
{
    return text.empty() ? *this : add(name, text);
}

TraceStep& TraceStep::addJson(std::string_view name, std::string_view value)
{
    line_.append(",\"").append(name).append("\":").append(value);
    return *this;
}

TraceStep& TraceStep::addMicroseconds(SteadyClock::duration took)
{
    return add("microseconds", std::chrono::duration_cast<std::chrono::microseconds>(took).count());
}

void TraceStep::write()
{
    line_ += "}\n";
    TraceOutput& output = traceOutput();
    std::lock_guard const lock(output.mutex);
    for (TraceListener const* const each : output.listeners) {
        each->note_(line_);
    }
    auto const written = output.descriptor < 0 ? Outcome<>() : append(output, line_);
    if (!written) {
        output.failed("the trace ends: " + written.error().reason);
    }
}

std::string jsonText(std::string_view text)
{
    if (std::ranges::all_of(text, isSimple)) {
        std::string json;
        json.reserve(text.size() + text.size() / 8 + 2);
        json += '"';
        for (char const letter : text) {
            char const escape = escapeOf(letter);
            if (escape != '\0') {
                json += '\\';
            }
            json += escape != '\0' ? escape : letter;
        }
        json += '"';
        return json;
    }
    return nlohmann::json(text).dump(-1, ' ', true, nlohmann::json::error_handler_t::replace);
}

}  // namespace telephone
