// Prints requests, answers and events, one marked line each. Control characters, which events may contain, are printed
// as \xNN to protect the terminal.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace telephone {

class Transcript
{
public:
    using Writer = std::function<void(std::string const& line)>;

    // The writer receives lines without their ends.
    explicit Transcript(Writer writer);
    // Changes the writer.
    void writeTo(Writer writer) { writer_ = std::move(writer); }

    void request(std::string_view text) { mark("request", text); }
    // The end of a request, with its answer if it has one.
    void answer(std::optional<std::string> const& text) { mark(text ? "answer" : "finished", text.value_or("")); }
    // Why the request was refused or did nothing.
    void reason(std::string_view text) { mark("reason", text); }
    void event(std::uint64_t number, std::string_view text) { mark("event " + std::to_string(number), text); }
    void error(std::string_view text) { mark("error", text); }
    // A step of a script that succeeded, and how long it took.
    void step(std::string_view text, double seconds);
    // An unmarked text of the console itself; it may have several lines.
    void note(std::string_view text);
    void rows(std::vector<std::string> const& rows);

private:
    void mark(std::string_view mark, std::string_view text);

    Writer writer_;
};

}  // namespace telephone
