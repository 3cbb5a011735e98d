// The calls of a trace and their dialogs, from the steps of the call engine. An id that is used again is another call.
// One thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "telephone/analysis/TracedStep.h"

namespace telephone {

struct TracedCall
{
    std::string id;
    std::string line;
    std::string party;  // address, the last one known; may be empty
    std::uint64_t begin = 0;
    bool isIncoming = false;
    bool isOutgoing = false;  // neither: the trace began later
};

class TracedCalls
{
public:
    TracedCalls() = default;
    explicit TracedCalls(TraceContents const& contents);
    TracedCalls(TracedCalls const&) = delete;
    TracedCalls& operator=(TracedCalls const&) = delete;

    // Takes the steps of the call engine, in their order; others say nothing about calls.
    void note(TracedStep const& step);

    // Null: no call has that dialog.
    [[nodiscard]] TracedCall const* withDialog(std::string_view dialog) const;
    // The call that has that id at the step of that number, or the next one that gets it. Null: none.
    [[nodiscard]] TracedCall const* withId(std::string_view id, std::uint64_t step) const;
    // In the order in which they began.
    [[nodiscard]] std::deque<TracedCall> const& all() const { return calls_; }

private:
    std::deque<TracedCall> calls_;
    std::map<std::string, std::vector<TracedCall*>, std::less<>> byId_;
    std::map<std::string, TracedCall*, std::less<>> byDialog_;
};

}  // namespace telephone
