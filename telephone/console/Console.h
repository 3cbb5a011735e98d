// The console: reads lines from standard input until it ends or says quit, and prints what happens meanwhile. On a
// terminal with a prompt, history and Tab; from a pipe line by line, each when the events of the one before have come
// to rest.
#pragma once

#include <string>

#include "telephone/console/Conversation.h"

namespace telephone {

class Console
{
public:
    explicit Console(Conversation& conversation);
    ~Console();
    Console(Console const&) = delete;
    Console& operator=(Console const&) = delete;

    // Returns at quit, at the end of the input, or when all is to end. A line that is wrong is told, no more: what must
    // hold is for scripts.
    void run();

private:
    void runTerminal();
    void runPipe();
    void runLine(std::string const& line);
    // Waits for input, taking events as they come; false: all is to end.
    bool waitForInput();

    static void lineTyped(char* line);

    Conversation& conversation_;
    bool over_ = false;
};

}  // namespace telephone
