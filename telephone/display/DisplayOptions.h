// How people want to read what the telephone writes. Plain values.
#pragma once

#include <cstddef>
#include <string>

namespace telephone {

struct DisplayOptions
{
    std::string ownDomain;   // of the telephone's own numbers, "127.0.0.1:5060"; parties in it are written as numbers
    bool addresses = false;  // parties as complete addresses
    bool date = false;       // the day before the time
    bool utc = false;        // UTC, with a Z; otherwise local time
    bool colour = false;     // the sixteen basic colours; only for a terminal
    bool ascii = false;      // a terminal without UTF-8
    std::size_t width = 0;   // of the terminal, in columns; lines are cut to fit. 0: never cut
};

}  // namespace telephone
