// What a person sees of requests, answers and events: one line each, marked as what it is. Control characters, which an
// event may bring from far away, are written as \xNN, so that they do nothing to a terminal.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace telephone {

class Transcript
{
public:
    using Writer = std::function<void(std::string const& line)>;

    // The writer takes a line without its end.
    explicit Transcript(Writer writer);
    // Another writer for what follows.
    void writeTo(Writer writer) { writer_ = std::move(writer); }

    void request(std::string_view text) { mark("request", text); }
    void answer(std::string_view text) { mark("answer", text); }
    void noAnswer() { mark("finished", ""); }
    void event(std::uint64_t number, std::string_view text) { mark("event " + std::to_string(number), text); }
    void error(std::string_view text) { mark("error", text); }
    // Text of the console itself, unmarked; several lines where it holds line ends.
    void note(std::string_view text);
    void rows(std::vector<std::string> const& rows);

private:
    void mark(std::string_view mark, std::string_view text);

    Writer writer_;
};

}  // namespace telephone
