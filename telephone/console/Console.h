// The console: runs the lines of a prompt until their end or quit, and prints events as they come. Ctrl-C drops the
// line. From a pipe, each line is run once the events of the previous one have ceased.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "telephone/console/Conversation.h"
#include "telephone/console/LinePrompt.h"

namespace telephone {

class Console : private LineUser
{
public:
    explicit Console(Conversation& conversation);

    // Returns at quit, at the end of the input, or on the stop signal. A refused line is printed and has no other
    // effect. False: the input came from a pipe, and some line was refused.
    bool run();

private:
    // Takes events meanwhile. False: the stop signal came.
    bool waitForInput() override;
    bool runLine(std::string const& line) override;
    [[nodiscard]] bool isOver() const override { return over_; }
    void settle() override;
    void writeTo(Writer writer) override;
    std::vector<std::string> completionsOf(std::string_view line) override;

    Conversation& conversation_;
    bool over_ = false;
};

}  // namespace telephone
