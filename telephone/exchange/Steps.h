// What a number of the exchange does with its calls: a sequence of steps such as "ring 2s, answer, say hello.wav,
// hang-up". One table holds every kind of step; parsing, messages, the commands and the documentation follow it. Plain
// values, used by any thread.
#pragma once

#include <chrono>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "telephone/base/Refusal.h"
#include "telephone/media/WavSource.h"

namespace telephone::exchange {

enum class StepKind
{
    kRing,
    kEarlyMedia,
    kReliable,
    kAnswer,
    kSay,
    kDigits,
    kHold,
    kRetrieve,
    kRefresh,
    kTransfer,
    kRedirect,
    kBusy,
    kRefuse,
    kHangUp,
    kPreempt,
    kCall,
    kWait,
    kSilent,
    kGarbage,
    kSeize,
    kRelease,
    kPrivate,
    kPublic,
};

// What a call has come to. A step is possible in some of these phases; the values combine as bits.
enum class CallPhase : unsigned
{
    kNoCall = 1,     // before the number calls, and after the end of a call
    kOffered = 2,    // an incoming call, not answered
    kEarly = 4,      // the same, but the caller hears the number already
    kConnected = 8,  // answered
    kHeld = 16,      // answered, and held by the number
    kSilent = 32,    // the number no longer responds
    kCalling = 64,   // the number calls, and the far end has not answered
    kSeized = 128,   // the number has seized its line, and has not dialled
};

struct StepRow
{
    StepKind kind;
    std::string_view name;
    std::string_view argument;  // "FILE", "NUMBER [TIME]"; empty: none
    unsigned possibleIn;        // phases
    CallPhase then;             // the phase afterwards; kUnchanged: as before
    std::string_view meaning;

    static constexpr auto kUnchanged = static_cast<CallPhase>(0);
};

std::span<StepRow const> stepRows();
StepRow const& rowOf(StepKind kind);

struct Step
{
    StepKind kind;
    std::string text = {};                      // FILE, DIGITS or NUMBER
    int status = 0;                             // of kRefuse
    std::chrono::milliseconds time{0};          // until the next step begins
    std::chrono::milliseconds limit{0};         // of kCall: until it gives up; 0: as long as the exchange permits
    std::shared_ptr<Samples const> sound = {};  // of kSay

    // As it is written: "ring 2s".
    std::string format() const;
};

using Steps = std::vector<Step>;

// "ring 2s, answer".
std::string formatSteps(Steps const& steps);

// The number that a call reaches that calls back.
constexpr std::string_view kCaller = "caller";

// Letters, digits, and + - . _ * #; 1 to 64 of them. which: names the number in the refusal.
[[nodiscard]] Outcome<> checkNumber(std::string_view which, std::string_view number);

// A status with which the exchange refuses: 400 to 699.
[[nodiscard]] Outcome<int> readStatus(std::string_view text);

// Reads steps, each a text of its own. kBadInput: no step, an unknown one, or a wrong argument. kNotFound: a sound file
// that cannot be read.
[[nodiscard]] Outcome<Steps> readSteps(std::vector<std::string> const& texts);
// The same, separated by commas.
[[nodiscard]] Outcome<Steps> readSteps(std::string_view text);

// Whether each step is possible where it stands, in a call that is in this phase at first. kBadInput: the reason names
// the first that is not, and what is possible there.
[[nodiscard]] Outcome<> checkOrder(Steps const& steps, CallPhase phase);

}  // namespace telephone::exchange
