// Writes everything that happens for people, one line for each occurrence:
//
//     23:57:45.559    17  4711     2     remote ringing    100, call-back possible
//     time         mark   line     call  what happened     the party, then what is not empty
//
// Each line stands alone, so that a search finds whole facts. The mark is the number of an event; → for a request, ←
// for its answer, ✕ for a reason, ✓ for a step of a script; "lamp"; or "gap". A text that is not of the protocol is
// written as it stands, made safe for the terminal. One thread.
//
//     ReadableLines lines({.ownDomain = "127.0.0.1:5060"});
//     std::cout << lines.event(17, now, text) << '\n';
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "telephone/display/DisplayOptions.h"
#include "telephone/display/StyledText.h"
#include "telephone/protocol/TelephoneState.h"

namespace telephone {

// The columns, with the blank behind them; the tables of the state have the same.
inline constexpr std::size_t kLineWidth = 9;
inline constexpr std::size_t kCallWidth = 6;
inline constexpr std::size_t kWhatWidth = 18;

// "23:57:45.559", with the day and in UTC as the options say.
std::string clockText(std::chrono::system_clock::time_point time, DisplayOptions const& options);
// "<1 ms", "12 ms", "2.5 s".
std::string durationText(std::chrono::steady_clock::duration took);

class ReadableLines
{
public:
    using Time = std::chrono::system_clock::time_point;

    explicit ReadableLines(DisplayOptions options)
        : options_(std::move(options))
    {}

    // The options may change between two lines.
    [[nodiscard]] DisplayOptions& options() { return options_; }

    std::string event(std::uint64_t number, Time time, std::string_view text);
    // The letter, if any, tells concurrent requests apart: 'a' writes →a.
    std::string request(Time time, std::string_view text, char letter = '\0');

    struct Answer
    {
        std::string_view request;              // that it answers
        std::optional<std::string_view> text;  // nothing: the request ended without an answer
        std::chrono::steady_clock::duration took;
        bool notAsAsked = false;  // a success that did nothing, or something else: a reason follows
        char letter = '\0';       // that of the request
    };
    std::string answer(Time time, Answer const& answer);
    // One sentence that explains the answer above it, never cut. Line and call may be empty.
    std::string reason(Time time, std::string_view line, std::string_view call, std::string_view sentence);
    // A step of a script that succeeded.
    std::string step(Time time, std::string_view text, std::chrono::steady_clock::duration took);
    // A lamp has changed; the state says what it is about.
    std::string lamp(Time time, KeyState const& key, TelephoneState const& state);
    // The events from `first` to `last` cannot be retrieved any more.
    std::string gap(Time time, std::uint64_t first, std::uint64_t last);

private:
    // The columns before what happened.
    StyledText begin(Time time, std::string_view mark, Style style, std::string_view line, std::string_view call);

    DisplayOptions options_;
    std::string timeAbove_;
};

}  // namespace telephone
