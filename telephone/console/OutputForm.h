// How what happens is written: as lines in words, with its tags, as JSON, or as a drawing of the calls. Each form turns
// one happening into the lines to print now. One thread.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "telephone/display/DisplayOptions.h"
#include "telephone/protocol/TelephoneState.h"

namespace telephone {

enum class OutputKind
{
    kWords,    // display/ReadableLines.h
    kTags,     // "answer   sfiSuccess", as the service writes it, made safe for the terminal
    kJson,     // an object each: protocol/EventJson.h
    kDrawing,  // display/CallDrawing.h
};

class OutputForm
{
public:
    using Lines = std::vector<std::string>;
    using Time = std::chrono::system_clock::time_point;
    using Duration = std::chrono::steady_clock::duration;

    // What came back to a request.
    struct Reply
    {
        std::string request;
        std::optional<std::string> answer;  // nothing: the request ended without an answer
        Time time;                          // of the answer
        Duration took;
        std::vector<std::string> reasons;  // why it was refused, or not done as asked
    };

    static std::unique_ptr<OutputForm> make(OutputKind kind, DisplayOptions const& options);

    virtual ~OutputForm() = default;
    OutputForm(OutputForm const&) = delete;
    OutputForm& operator=(OutputForm const&) = delete;

    // The terminal has this many columns now; 0: not a terminal.
    virtual void fitTo(std::size_t /*columns*/) {}

    virtual Lines request(Time time, std::string_view text) = 0;
    virtual Lines reply(Reply const& reply) = 0;
    virtual Lines event(std::uint64_t number, Time time, std::string_view text) = 0;
    // A lamp has changed; the state is that of the moment.
    virtual Lines lamp(KeyState const& key, TelephoneState const& state) = 0;
    // Events that are no longer kept, {"first":1,"last":9}, and then the state, as JSON.
    virtual Lines gap(Time time, std::string_view json) = 0;
    virtual Lines state(Time time, std::string_view json) = 0;
    // Of a command, or a text of the console itself; it may have several lines.
    virtual Lines result(Time time, std::string_view text) = 0;
    // The input was refused; a sentence.
    virtual Lines error(Time time, std::string_view sentence) = 0;
    // A step of a script that succeeded.
    virtual Lines step(Time time, std::string_view text, Duration took) = 0;

protected:
    OutputForm() = default;
};

}  // namespace telephone
