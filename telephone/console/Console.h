// The console: reads lines from standard input until its end or quit, and prints events as they come. A terminal has a
// prompt, completion by Tab, and the history of the user's earlier consoles; Ctrl-C drops the line. From a pipe, each
// line is run once the events of the previous one have ceased.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "telephone/console/Conversation.h"

namespace telephone {

class Console
{
public:
    explicit Console(Conversation& conversation);
    ~Console();
    Console(Console const&) = delete;
    Console& operator=(Console const&) = delete;

    // Returns at quit, at the end of the input, or on the stop signal. A refused line is printed and has no other
    // effect. False: the input came from a pipe, and some line was refused.
    bool run();
    // For the Tab key.
    std::vector<std::string> completionsOf(std::string_view line);

private:
    void runTerminal();
    bool runPipe();
    // False: the line was refused.
    bool runLine(std::string const& line);
    // Waits for input and takes events meanwhile; false: the stop signal came.
    void settle();
    bool waitForInput();

    static void lineTyped(char* line);

    Conversation& conversation_;
    bool over_ = false;
};

}  // namespace telephone
