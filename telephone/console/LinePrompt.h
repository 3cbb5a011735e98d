// Reads the lines that a person types at a prompt, or that come from a pipe, and hands each to its user. A terminal has
// completion by Tab and the history of the user's earlier prompts. Console and fleet own one each; there is one at a
// time. One thread.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace telephone {

// Who is told of the lines.
class LineUser
{
public:
    using Writer = std::function<void(std::string const& line)>;

    virtual ~LineUser() = default;

    // Waits until standard input can be read. False: no more lines are wanted.
    virtual bool waitForInput() = 0;
    // False: the line was refused, and the user has been told.
    virtual bool runLine(std::string const& line) = 0;
    // Whether the last line was the last one: quit.
    [[nodiscard]] virtual bool isOver() const = 0;
    // Before the first line from a pipe and after each: waits for what the line has caused, if the next one shall not
    // overtake it.
    virtual void settle() = 0;
    // How the user writes its lines from now on.
    virtual void writeTo(Writer writer) = 0;
    // For the Tab key.
    virtual std::vector<std::string> completionsOf(std::string_view line) = 0;
};

class LinePrompt
{
public:
    // What Ctrl-C does at the prompt.
    enum class Interrupt
    {
        kDropsLine,
        kRaisesSignal,
    };

    LinePrompt(std::string prompt, Interrupt interrupt, LineUser& user);
    ~LinePrompt();
    LinePrompt(LinePrompt const&) = delete;
    LinePrompt& operator=(LinePrompt const&) = delete;

    // Whether a person can type: input and output are a terminal.
    [[nodiscard]] static bool isTerminal();

    // Returns when the user wants no more lines, or at the end of the input. False: the input came from a pipe, and
    // some line was refused.
    bool run();

    [[nodiscard]] std::vector<std::string> completionsOf(std::string_view line) { return user_.completionsOf(line); }

private:
    void runTerminal();
    bool runPipe();

    static void lineTyped(char* line);

    std::string const prompt_;
    Interrupt const interrupt_;
    LineUser& user_;
    bool ended_ = false;  // the input
};

}  // namespace telephone
