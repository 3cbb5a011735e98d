// The trace: a file in which everything that happens in the telephone is a step, with the step that caused it. Its
// format is in docs/trace.md. Process-wide, as the log is, because steps happen in all modules. Any thread, with any
// lock held.
//
//     traceStep("hook", [&](TraceStep& step) { step.add("position", "up"); });
//
// Each thread has a cause: the step that it is handling at the moment. A step without a cause is the first of its own
// story. Work that another thread or a timer will do takes its cause along (Caused). While nothing is traced, a step
// costs one load.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "telephone/base/Refusal.h"
#include "telephone/time/SteadyClock.h"

namespace telephone {

// What caused a step: a step, and the first one of its story. Zeros: nothing.
struct TraceCause
{
    std::uint64_t id = 0;
    std::uint64_t step = 0;

    explicit operator bool() const { return step != 0; }
};

// Who writes the trace, for its first line.
struct TraceHeader
{
    std::string start;   // id of this start of the telephone
    std::string domain;  // of the telephone's own numbers
};

namespace trace {
inline std::atomic<bool> isOn{false};
inline thread_local TraceCause causeOfThread;
}  // namespace trace

[[nodiscard]] inline bool isTracing()
{
    return trace::isOn.load(std::memory_order_relaxed);
}

// Begins a file, in place of one of that name. Refused while another trace is being written, and if the file cannot be
// opened. If a line cannot be written later, the trace ends and `failed` is called with the reason, once, on the thread
// of that line.
[[nodiscard]] Outcome<> startTrace(std::string const& file, TraceHeader const& header,
                                   std::function<void(std::string const& reason)> failed);
// Refused if there is no trace.
[[nodiscard]] Outcome<> stopTrace();

// Receives each line of the trace, with its line end but without the header, from its making to its destruction; with
// or without a file. Called on any thread, with any lock held, so it may only note the line.
class TraceListener
{
public:
    using Note = std::function<void(std::string_view line)>;

    explicit TraceListener(Note note);
    ~TraceListener();
    TraceListener(TraceListener const&) = delete;
    TraceListener& operator=(TraceListener const&) = delete;

private:
    friend class TraceStep;

    Note const note_;
};

// The cause of what this thread does now.
[[nodiscard]] inline TraceCause causeOfThread()
{
    return trace::causeOfThread;
}

// What the thread does while this lives has that cause.
class TraceScope
{
public:
    explicit TraceScope(TraceCause cause)
        : outer_(std::exchange(trace::causeOfThread, cause))
    {}
    ~TraceScope() { trace::causeOfThread = outer_; }
    TraceScope(TraceScope const&) = delete;
    TraceScope& operator=(TraceScope const&) = delete;

    // What the thread does from now on, until the scope around this ends, has that cause.
    static void replace(TraceCause cause) { trace::causeOfThread = cause; }

private:
    TraceCause const outer_;
};

// Work for later, with the cause of the thread that left it.
template <typename Work>
class Caused
{
public:
    Caused() = default;
    Caused(Work work)  // NOLINT(google-explicit-constructor): stands for the work
        : work_(std::move(work))
        , cause_(causeOfThread())
    {}

    explicit operator bool() const { return static_cast<bool>(work_); }
    [[nodiscard]] TraceCause cause() const { return cause_; }

    template <typename... Arguments>
    void operator()(Arguments&&... arguments) const
    {
        TraceScope const scope(cause_);
        work_(std::forward<Arguments>(arguments)...);
    }

private:
    Work work_{};
    TraceCause cause_;
};

// One line of the trace. Made when the step begins, written when it is complete. Names are literal; texts may be
// anything.
class TraceStep
{
public:
    explicit TraceStep(std::string_view kind, TraceCause because = causeOfThread());

    TraceStep& add(std::string_view name, std::string_view text);
    TraceStep& add(std::string_view name, std::int64_t number);
    TraceStep& addUnlessEmpty(std::string_view name, std::string_view text);
    // value: JSON on one line.
    TraceStep& addJson(std::string_view name, std::string_view value);
    // The microseconds that the step took, or has taken until now.
    TraceStep& addMicroseconds(SteadyClock::duration took);
    TraceStep& addMicroseconds() { return addMicroseconds(SteadyClock::now() - began_); }

    // What this step causes.
    [[nodiscard]] TraceCause cause() const { return cause_; }

    // Nothing if the trace has ended meanwhile.
    void write();

private:
    TraceCause cause_;
    SteadyClock::time_point began_;
    std::string line_;
};

// Writes a step, which `fill` completes, and returns what it causes. While nothing is traced, the cause of the thread.
template <typename Fill>
TraceCause traceStep(std::string_view kind, Fill const& fill)
{
    if (!isTracing()) {
        return causeOfThread();
    }
    TraceStep step(kind);
    fill(step);
    step.write();
    return step.cause();
}

// A text as JSON. What is not UTF-8 becomes U+FFFD, and the result is ASCII.
[[nodiscard]] std::string jsonText(std::string_view text);

}  // namespace telephone
