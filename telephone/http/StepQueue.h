// The steps of the trace that the ladder of the panel shows, while a stream of events wants them. Steps are noted on
// any thread; the stream's thread takes them.
#pragma once

#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>

#include "telephone/trace/Trace.h"

namespace telephone {

class StepQueue
{
public:
    // wake: called after a step came.
    explicit StepQueue(std::function<void()> wake);

    // Messages of a stream: `step` with a line of the trace, and `steps-missed` with the number of those that came
    // faster than they were taken. Empty for nothing new.
    [[nodiscard]] std::string take();

private:
    void note(std::string_view line);

    std::function<void()> const wake_;
    std::mutex mutex_;
    std::string messages_;
    std::size_t missed_ = 0;
    TraceListener const listener_;  // last: it uses the others
};

}  // namespace telephone
