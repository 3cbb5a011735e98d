#include "telephone/trace/Trace.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <mutex>

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

// The file of the present trace.
struct TraceFile
{
    std::mutex mutex;
    int descriptor = -1;  // none
    std::string name;
    std::function<void(std::string const& reason)> failed;
};

TraceFile& traceFile()
{
    static TraceFile file;
    return file;
}

std::atomic<std::uint64_t> lastStep{0};

// With the lock held.
void closeFile(TraceFile& file)
{
    trace::isOn = false;
    ::close(std::exchange(file.descriptor, -1));
}

// With the lock held. Closes the file if it fails.
Outcome<> append(TraceFile& file, std::string_view line)
{
    ssize_t const written = ::write(file.descriptor, line.data(), line.size());
    if (written == static_cast<ssize_t>(line.size())) {
        return {};
    }
    std::string const error = written < 0 ? std::strerror(errno) : "there is no space";
    closeFile(file);
    return refuse(RefusalKind::kUnavailable, "the trace cannot be written to " + file.name + ": " + error);
}

bool isPlain(char letter)
{
    return letter >= ' ' && letter <= '~' && letter != '"' && letter != '\\';
}

}  // namespace

Outcome<> startTrace(std::string const& file, TraceHeader const& header,
                     std::function<void(std::string const& reason)> failed)
{
    TraceFile& target = traceFile();
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
        .map([] { trace::isOn = true; });
}

Outcome<> stopTrace()
{
    TraceFile& file = traceFile();
    std::lock_guard const lock(file.mutex);
    if (file.descriptor < 0) {
        return refuse(RefusalKind::kWrongState, "nothing is being traced");
    }
    closeFile(file);
    return {};
}

TraceStep::TraceStep(std::string_view kind, TraceCause because)
    : began_(SteadyClock::now())
{
    std::uint64_t const number = ++lastStep;
    cause_ = {because ? because.id : number, number};
    line_.reserve(kUsualLine);
    line_ = "{\"seq\":" + std::to_string(number) + ",\"time\":\"" + timeText(wallTime()) +
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
    TraceFile& file = traceFile();
    std::lock_guard const lock(file.mutex);
    if (file.descriptor < 0) {
        return;
    }
    if (auto const written = append(file, line_); !written) {
        file.failed("the trace ends: " + written.error().reason);
    }
}

std::string jsonText(std::string_view text)
{
    if (std::ranges::all_of(text, isPlain)) {
        return std::string("\"").append(text).append("\"");
    }
    return nlohmann::json(text).dump(-1, ' ', true, nlohmann::json::error_handler_t::replace);
}

}  // namespace telephone
