// Events and everything else that the telephone says as JSON, for applications that prefer names to numbers. Pure
// functions.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace telephone {

// One event on one line, with its number and the time of its delivery:
//
//     {"event":17,"time":"2026-03-01T12:00:00.000Z","name":"CallHeldEvent","line":"4711","call":2,
//      "elements":{"LineID":"4711","CallID":2},"raw":"<Method>CallHeldEvent</Method>..."}
//
// "elements" has every element in its order: numbers as numbers, flags as true or false, values of an enumeration as
// {"value":6,"name":"connected"}, everything else as text. "line" and "call" are null in an event without them. Of a
// text that is not an event, "name" is null, and "raw" alone follows.
std::string eventJson(std::uint64_t number, std::chrono::system_clock::time_point time, std::string_view text);

// A message of another kind ("request", "answer", "reason", ...), with its time and, of what takes time, its duration:
//
//     {"answer":"sfiSuccess","time":"2026-03-01T12:00:00.000Z","seconds":0.001}
//
// A text that is a JSON object stays one. Without a text, null.
std::string messageJson(std::string_view kind, std::optional<std::string_view> text,
                        std::chrono::system_clock::time_point time, std::optional<double> seconds = {});

}  // namespace telephone
