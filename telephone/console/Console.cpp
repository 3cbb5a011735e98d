#include "telephone/console/Console.h"

#include <termios.h>
#include <unistd.h>

// readline requires FILE to be declared.
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include <readline/readline.h>

#include "telephone/access/Completion.h"
#include "telephone/access/TelephoneControls.h"
#include "telephone/console/LineHistory.h"
#include "telephone/console/Terminal.h"
#include "telephone/console/Transcript.h"
#include "telephone/time/VirtualTime.h"
#include "telephone/time/Waiting.h"

namespace telephone {

namespace {

constexpr char const* kPrompt = "telephone> ";
constexpr int kCtrlC = 3;

// readline's callbacks have no argument, so there can be only one console.
Console* current = nullptr;

char** complete(char const* /*word*/, int /*start*/, int end)
{
    rl_attempted_completion_over = 1;
    auto const found = current->completionsOf(std::string_view(rl_line_buffer, static_cast<std::size_t>(end)));
    if (found.empty()) {
        return nullptr;
    }
    bool const isParameter = found.size() == 1 && found[0].ends_with('=');
    rl_completion_append_character = isParameter ? 0 : static_cast<unsigned char>(' ');
    std::string common = found[0];
    for (std::string const& each : found) {
        while (!each.starts_with(common)) {
            common.pop_back();
        }
    }
    // readline releases the list with free: the common beginning, then the matches, then null.
    std::size_t const count = found.size() == 1 ? 0 : found.size();
    auto** const list = static_cast<char**>(std::calloc(count + 2, sizeof(char*)));
    list[0] = strdup(common.c_str());
    for (std::size_t i = 0; i < count; ++i) {
        list[i + 1] = strdup(found[i].c_str());
    }
    return list;
}

void printBesidePrompt(std::string const& line)
{
    rl_clear_visible_line();
    std::printf("%s\n", line.c_str());
    rl_on_new_line();
    rl_redisplay();
}

// While a line is typed, Ctrl-C is a key. While it runs, Ctrl-C ends the telephone.
void prepareTerminal(int meta)
{
    rl_prep_terminal(meta);
    termios terminal{};
    if (tcgetattr(STDIN_FILENO, &terminal) == 0) {
        terminal.c_cc[VINTR] = _POSIX_VDISABLE;
        tcsetattr(STDIN_FILENO, TCSADRAIN, &terminal);
    }
}

int dropLine(int /*count*/, int /*key*/)
{
    bool const isEmpty = rl_end == 0;
    std::printf("^C\n%s", isEmpty ? "quit ends the telephone\n" : "");
    rl_replace_line("", 0);
    rl_on_new_line();
    rl_redisplay();
    return 0;
}

void print(std::string const& line)
{
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

}  // namespace

Console::Console(Conversation& conversation)
    : conversation_(conversation)
{
    current = this;
}

Console::~Console()
{
    current = nullptr;
}

bool Console::run()
{
    if (isatty(STDIN_FILENO) != 1 || isatty(STDOUT_FILENO) != 1) {
        return runPipe();
    }
    runTerminal();
    return true;
}

void Console::runTerminal()
{
    rl_attempted_completion_function = complete;
    rl_completer_word_break_characters = " \t";
    rl_catch_signals = 0;
    rl_prep_term_function = prepareTerminal;
    rl_bind_key(kCtrlC, dropLine);
    LineHistory history;
    rl_callback_handler_install(kPrompt, &Console::lineTyped);
    conversation_.transcript().writeTo(printBesidePrompt);
    while (!over_ && waitForInput()) {
        rl_callback_read_char();
    }
    rl_callback_handler_remove();
    conversation_.transcript().writeTo(print);
    print("");
}

void Console::lineTyped(char* line)
{
    std::unique_ptr<char, void (*)(void*)> const owned(line, std::free);
    if (line == nullptr) {
        current->over_ = true;
        return;
    }
    LineHistory::add(line);
    // The prompt is not shown while a line runs, so its output needs no redrawing.
    current->conversation_.transcript().writeTo(print);
    current->runLine(line);
    current->conversation_.takeEvents();
    current->conversation_.transcript().writeTo(printBesidePrompt);
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

bool Console::runPipe()
{
    bool succeeded = true;
    std::string pending;
    settle();
    while (!over_ && waitForInput()) {
        std::array<char, 4096> buffer;
        ssize_t const count = read(STDIN_FILENO, buffer.data(), buffer.size());
        bool const ended = count <= 0;
        pending.append(buffer.data(), ended ? 0 : static_cast<std::size_t>(count));
        if (ended && !pending.empty()) {
            pending += '\n';
        }
        std::size_t end = 0;
        while (!over_ && (end = pending.find('\n')) != std::string::npos) {
            std::string const line = pending.substr(0, end);
            pending.erase(0, end + 1);
            succeeded = runLine(line) && succeeded;
            settle();
        }
        over_ = over_ || ended;
    }
    return succeeded;
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
    if (!result) {
        conversation_.transcript().error(result.error().reason);
        return false;
    }
    over_ = result->isOver;
    conversation_.noteActivity();
    return true;
}

}  // namespace telephone
