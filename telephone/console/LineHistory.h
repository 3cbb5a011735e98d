// The lines that the user typed at consoles, kept in $XDG_STATE_HOME/telephone/history (~/.local/state by default),
// which only the user can read. Without a home they are kept for this console alone. One object at a time.
#pragma once

#include <string>

namespace telephone {

class LineHistory
{
public:
    // Reads the file.
    LineHistory();
    // Writes it: the lines of another console that ended meanwhile stay.
    ~LineHistory();
    LineHistory(LineHistory const&) = delete;
    LineHistory& operator=(LineHistory const&) = delete;

    // An empty line, a repeated one and one that begins with a blank are not kept.
    static void add(char const* line);

private:
    std::string file_;  // empty: none
    int known_ = 0;     // lines read and added until the file was read
};

}  // namespace telephone
