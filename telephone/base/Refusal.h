// The one way in which the telephone refuses: an operation that can refuse returns its value or a Refusal. Any module
// may use this. Refusals are logged and handed to the submitter of the request by framework/Refusals.
//
//     Outcome<> Holder::hold(int callID)
//     {
//         Call* const call = calls_.find(callID);
//         if (call == nullptr) {
//             return refuse(RefusalKind::kNotFound, fmt::format("there is no call {}", callID));
//         }
//         ...
//         return {};
//     }
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

#include <tl/expected.hpp>

namespace telephone {

enum class RefusalKind
{
    kBadInput,       // malformed, of the wrong type or out of range
    kNotFound,       // no such line, call, key, file
    kWrongState,     // not possible in the present state
    kAlreadyExists,  // exists or was done before
    kLimit,          // full
    kNotPermitted,   // locked, read-only, forbidden by a rule
    kNotSupported,   // beyond this telephone
    kUnavailable,    // the network, the far end, the disk or another program failed
};

struct Refusal
{
    RefusalKind kind;
    std::string reason;  // one sentence for a person to act on, without a full stop: "line 4711 has no call 7"

    bool operator==(Refusal const&) const = default;
};

// A function that returns an Outcome is declared [[nodiscard]].
template <typename Value = void>
using Outcome = tl::expected<Value, Refusal>;

inline tl::unexpected<Refusal> refuse(RefusalKind kind, std::string reason)
{
    return tl::unexpected<Refusal>(Refusal{kind, std::move(reason)});
}

// The value. Throws std::runtime_error with the reason of a refusal: for constructors that cannot go on without it.
template <typename Value>
Value valueOrThrow(Outcome<Value> outcome)
{
    if (!outcome) {
        throw std::runtime_error(outcome.error().reason);
    }
    return *std::move(outcome);
}

}  // namespace telephone
