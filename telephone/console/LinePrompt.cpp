#include "telephone/console/LinePrompt.h"

#include <termios.h>
#include <unistd.h>

// readline requires FILE to be declared.
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <utility>

#include <readline/readline.h>

#include "telephone/console/LineHistory.h"

namespace telephone {

namespace {

constexpr int kCtrlC = 3;

// readline's callbacks have no argument, so there can be only one prompt.
LinePrompt* current = nullptr;

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

LinePrompt::LinePrompt(std::string prompt, Interrupt interrupt, LineUser& user)
    : prompt_(std::move(prompt))
    , interrupt_(interrupt)
    , user_(user)
{
    current = this;
}

LinePrompt::~LinePrompt()
{
    current = nullptr;
}

bool LinePrompt::isTerminal()
{
    return isatty(STDIN_FILENO) == 1 && isatty(STDOUT_FILENO) == 1;
}

bool LinePrompt::run()
{
    if (!isTerminal()) {
        return runPipe();
    }
    runTerminal();
    return true;
}

void LinePrompt::runTerminal()
{
    rl_attempted_completion_function = complete;
    rl_completer_word_break_characters = " \t";
    rl_catch_signals = 0;
    if (interrupt_ == Interrupt::kDropsLine) {
        rl_prep_term_function = prepareTerminal;
        rl_bind_key(kCtrlC, dropLine);
    }
    LineHistory history;
    rl_callback_handler_install(prompt_.c_str(), &LinePrompt::lineTyped);
    user_.writeTo(printBesidePrompt);
    while (!ended_ && !user_.isOver() && user_.waitForInput()) {
        rl_callback_read_char();
    }
    rl_callback_handler_remove();
    user_.writeTo(print);
    print("");
}

void LinePrompt::lineTyped(char* line)
{
    std::unique_ptr<char, void (*)(void*)> const owned(line, std::free);
    if (line == nullptr) {
        current->ended_ = true;
        return;
    }
    LineHistory::add(line);
    // The prompt is not shown while a line runs, so its output needs no redrawing.
    current->user_.writeTo(print);
    current->user_.runLine(line);
    current->user_.writeTo(printBesidePrompt);
}

bool LinePrompt::runPipe()
{
    bool succeeded = true;
    std::string pending;
    user_.settle();
    while (!ended_ && !user_.isOver() && user_.waitForInput()) {
        std::array<char, 4096> buffer;
        ssize_t const count = read(STDIN_FILENO, buffer.data(), buffer.size());
        ended_ = count <= 0;
        pending.append(buffer.data(), ended_ ? 0 : static_cast<std::size_t>(count));
        if (ended_ && !pending.empty()) {
            pending += '\n';
        }
        std::size_t end = 0;
        while (!user_.isOver() && (end = pending.find('\n')) != std::string::npos) {
            std::string const line = pending.substr(0, end);
            pending.erase(0, end + 1);
            succeeded = user_.runLine(line) && succeeded;
            user_.settle();
        }
    }
    return succeeded;
}

}  // namespace telephone
