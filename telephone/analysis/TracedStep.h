// The steps of a trace as they stand in its file (docs/trace.md). Plain values.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace telephone {

enum class StepKind
{
    kRequest,
    kCommand,
    kAnswer,
    kReason,
    kEvent,
    kPlatform,
    kEngine,
    kKey,
    kLamp,
    kTimer,
    kStore,
    kFault,
    kSip,
};

// As the file names them, indexed by the kind.
inline constexpr std::array<std::string_view, 13> kStepKindNames{
    "request", "command", "answer", "reason", "event", "platform", "engine",
    "key",     "lamp",    "timer",  "store",  "fault", "sip",
};
static_assert(kStepKindNames.size() == static_cast<std::size_t>(StepKind::kSip) + 1);

struct TracedStep
{
    using Time = std::chrono::system_clock::time_point;

    std::uint64_t number = 0;   // in the order in which steps began, from 1
    std::uint64_t because = 0;  // number of the step that caused it; 0: none
    std::uint64_t id = 0;       // number of the first step of its story
    Time time;
    std::string thread;
    StepKind kind = StepKind::kRequest;
    std::vector<std::pair<std::string_view, std::string>> members;  // those of its kind, in the file's order
    std::vector<std::pair<std::string, std::string>> arguments;     // of a platform call
    std::string line;                                               // as it stands in the file, if the reader keeps it

    // Empty: the step has no such member.
    [[nodiscard]] std::string const& text(std::string_view name) const;
    [[nodiscard]] bool has(std::string_view name) const;
    // Nothing: the step has no such number.
    [[nodiscard]] std::optional<long long> wholeNumber(std::string_view name) const;
};

struct TraceContents
{
    std::string name;    // of the file
    std::string domain;  // of the telephone's own numbers; empty: not known
    std::map<std::uint64_t, TracedStep> steps;

    // Null: no such step.
    [[nodiscard]] TracedStep const* find(std::uint64_t number) const;
    // The step that caused it. Null: nothing did, or it happened before the trace began. A cause is always an earlier
    // step.
    [[nodiscard]] TracedStep const* causeOf(TracedStep const& step) const;
};

}  // namespace telephone
