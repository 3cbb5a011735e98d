#include "telephone/program/ScriptText.h"

#include <array>
#include <fstream>
#include <sstream>

#include <poll.h>
#include <unistd.h>

#include "telephone/time/Waiting.h"

namespace telephone {

namespace {

Outcome<std::string> readInput(int stop)
{
    std::string text;
    while (true) {
        std::array<pollfd, 2> waited{{{STDIN_FILENO, POLLIN, 0}, {stop, POLLIN, 0}}};
        pollUntil(waited, kNoDeadline, "the script");
        if (waited[1].revents != 0) {
            return refuse(RefusalKind::kUnavailable, "ended by a signal before the end of the script");
        }
        std::array<char, 4096> buffer;
        ssize_t const count = read(STDIN_FILENO, buffer.data(), buffer.size());
        if (count <= 0) {
            return text;
        }
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

}  // namespace

Outcome<std::string> readScriptText(std::string const& name, int stop)
{
    if (name == "-") {
        return readInput(stop);
    }
    std::ifstream file(name);
    std::ostringstream text;
    text << file.rdbuf();
    return file ? Outcome<std::string>(text.str()) : refuse(RefusalKind::kNotFound, name + ": cannot be read");
}

}  // namespace telephone
