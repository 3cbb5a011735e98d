#include "telephone/console/Console.h"

#include <array>

#include <unistd.h>

#include "telephone/access/Completion.h"
#include "telephone/access/TelephoneControls.h"
#include "telephone/console/Terminal.h"
#include "telephone/console/Transcript.h"
#include "telephone/time/VirtualTime.h"
#include "telephone/time/Waiting.h"

namespace telephone {

Console::Console(Conversation& conversation)
    : conversation_(conversation)
{}

bool Console::run()
{
    return LinePrompt("telephone> ", LinePrompt::Interrupt::kDropsLine, *this).run();
}

std::vector<std::string> Console::completionsOf(std::string_view line)
{
    TelephoneControls& telephone = conversation_.controls();
    std::vector<std::string> settings;
    for (std::string const& row : telephone.settings()) {
        settings.push_back(row.substr(0, row.find(' ')));
    }
    TelephoneState const state = telephone.state();
    return completions(line, {state, settings, conversation_.session().services().description});
}

// So that the events that follow closely stand before the next line. A prompt does not move virtual time.
void Console::settle()
{
    if (!isVirtual()) {
        return conversation_.settle();
    }
    awaitRest();
    conversation_.takeEvents();
}

bool Console::waitForInput()
{
    while (true) {
        conversation_.transcript().fitTo(terminalWidth());
        conversation_.takeEvents();
        std::array<pollfd, 3> waited{{
            {STDIN_FILENO, POLLIN, 0},
            {conversation_.eventDescriptor(), POLLIN, 0},
            {conversation_.stopDescriptor(), POLLIN, 0},
        }};
        pollUntil(waited, kNoDeadline, "input");
        if (waited[2].revents != 0) {
            return false;
        }
        if (waited[0].revents != 0) {
            return true;
        }
    }
}

bool Console::runLine(std::string const& line)
{
    auto const result = conversation_.run(line);
    if (result) {
        over_ = result->isOver;
        conversation_.noteActivity();
    } else {
        conversation_.transcript().error(result.error().reason);
    }
    // Before a prompt is shown again.
    conversation_.takeEvents();
    return result.has_value();
}

void Console::writeTo(Writer writer)
{
    conversation_.transcript().writeTo(std::move(writer));
}

}  // namespace telephone
