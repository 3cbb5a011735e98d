// The behaviour of the exchange's own numbers: one row per number. Exchange::setBehaviour changes it at run time.
#pragma once

#include <array>
#include <chrono>
#include <string>
#include <string_view>

namespace telephone::exchange {

using std::chrono::milliseconds;

struct NumberBehaviour
{
    int refuseWith = 0;             // status that refuses every call; 0: calls are accepted
    char const* refuseText = "";    // status text
    milliseconds answerAfter{0};    // time of ringing; kNever: no answer
    milliseconds holdAfter{0};      // after the answer; 0: never
    milliseconds retrieveAfter{0};  // after holding
    milliseconds hangUpAfter{0};    // after the answer; 0: never
    bool callBack = false;          // calls the caller after the call
    std::string_view does;          // description
};

constexpr milliseconds kNever{-1};

struct NumberRow
{
    std::string_view number;
    NumberBehaviour behaviour;
};

// clang-format off
inline constexpr std::array<NumberRow, 8> kNumbers{{
    //        refuse with           answer after        hold after          retrieve after      hang up after       call back
    {"100", {0,   "",              milliseconds(0),    milliseconds(0),    milliseconds(0),    milliseconds(0),    false, "answers and echoes what it hears"}},
    {"101", {486, "Busy Here",     milliseconds(0),    milliseconds(0),    milliseconds(0),    milliseconds(0),    false, "is busy"}},
    {"102", {0,   "",              kNever,             milliseconds(0),    milliseconds(0),    milliseconds(0),    false, "rings and never answers"}},
    {"103", {0,   "",              milliseconds(2000), milliseconds(0),    milliseconds(0),    milliseconds(0),    false, "answers after two seconds"}},
    {"104", {603, "Decline",       milliseconds(0),    milliseconds(0),    milliseconds(0),    milliseconds(0),    false, "declines"}},
    {"105", {0,   "",              milliseconds(0),    milliseconds(0),    milliseconds(0),    milliseconds(2000), false, "answers and hangs up after two seconds"}},
    {"106", {0,   "",              milliseconds(0),    milliseconds(1000), milliseconds(1000), milliseconds(0),    false, "answers, holds after one second and retrieves after another"}},
    {"199", {0,   "",              milliseconds(0),    milliseconds(0),    milliseconds(0),    milliseconds(1000), true,  "answers, hangs up after one second and calls back"}},
}};
// clang-format on

constexpr bool numbersAreUnique()
{
    for (std::size_t i = 0; i < kNumbers.size(); ++i) {
        for (std::size_t j = i + 1; j < kNumbers.size(); ++j) {
            if (kNumbers[i].number == kNumbers[j].number) {
                return false;
            }
        }
    }
    return true;
}
static_assert(numbersAreUnique());

// Answers at once and never hangs up.
inline constexpr NumberBehaviour kAnswering = kNumbers[0].behaviour;

}  // namespace telephone::exchange
