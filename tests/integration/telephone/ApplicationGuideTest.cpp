// Follows docs/applications.md as a reader does, and compares what comes with what the page shows.
//
// The page's blocks, in their order:
//     python                          pasted at the end of view.py
//     any that begins with "# FILE"   saved as FILE
//     console                         "$ COMMAND" is run by the shell, "> LINE" is typed to the program that runs, and
//                                     everything else is what a program prints; "..." stands for any text within a
//                                     line, and for any lines
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>

#include <gtest/gtest.h>

#include "Process.h"
#include "tests/doubles/TemporaryFolder.h"

namespace {

using Lines = std::vector<std::string>;

struct Block
{
    std::string kind;
    Lines lines;
};

Lines linesOf(std::string const& text)
{
    Lines lines;
    std::istringstream input(text);
    for (std::string line; std::getline(input, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::string pageText()
{
    std::ifstream input(PROJECT "/docs/applications.md");
    EXPECT_TRUE(input);
    return {std::istreambuf_iterator<char>(input), std::istreambuf_iterator<char>()};
}

std::vector<Block> blocksOf(Lines const& page)
{
    std::vector<Block> blocks;
    bool inBlock = false;
    for (std::string const& line : page) {
        if (line.rfind("```", 0) == 0) {
            inBlock = !inBlock;
            if (inBlock) {
                blocks.push_back({line.substr(3), {}});
            }
        } else if (inBlock) {
            blocks.back().lines.push_back(line);
        }
    }
    return blocks;
}

// Whether a line is the shown one, in which "..." stands for any text.
bool fits(std::string_view line, std::string_view shown)
{
    auto const dots = shown.find("...");
    if (dots == std::string_view::npos) {
        return line == shown;
    }
    if (line.substr(0, dots) != shown.substr(0, dots)) {
        return false;
    }
    for (std::size_t at = dots; at <= line.size(); ++at) {
        if (fits(line.substr(at), shown.substr(dots + 3))) {
            return true;
        }
    }
    return false;
}

// Where the lines that are shown end among those that were printed, from a place on; nothing: they are not all there.
std::optional<std::size_t> endOf(Lines const& shown, std::size_t first, Lines const& printed, std::size_t at)
{
    if (first == shown.size()) {
        return at;
    }
    if (shown[first] == "...") {
        auto const without = endOf(shown, first + 1, printed, at);
        return without || at == printed.size() ? without : endOf(shown, first, printed, at + 1);
    }
    if (at == printed.size() || !fits(printed[at], shown[first])) {
        return std::nullopt;
    }
    return endOf(shown, first + 1, printed, at + 1);
}

// What the page shows in place of the test's own.
constexpr char const* kFolderOfPage = "/run/user/1000";
constexpr char const* kAddressOfPage = "127.0.0.1:8080";
constexpr char const* kAnyAddress = "127.0.0.1:0";

std::string replaced(std::string text, std::string const& part, std::string const& by)
{
    for (std::size_t at = 0; !part.empty() && (at = text.find(part, at)) != std::string::npos; at += by.size()) {
        text.replace(at, part.size(), by);
    }
    return text;
}

bool isTelephone(std::string const& command)
{
    return command.rfind(" serve") != std::string::npos;
}

// Whether only Ctrl-C ends the command.
bool isEndless(std::string const& command)
{
    return isTelephone(command) || command.rfind("curl -s -N ", 0) == 0;
}

// A program that the reader started, and how much of its output the page has shown so far.
class Program
{
public:
    Program(std::string const& folder, std::string const& variables, std::string const& command)
        : folder_(folder)
        , command_(command)
        , process_({"/bin/sh", "-ec", "cd " + folder + "\n" + variables + "exec " + command},
                   {"XDG_RUNTIME_DIR=" + folder, "PYTHONUNBUFFERED=1", "TELEPHONE_CHECK=events",
                    "TELEPHONE_TIME=real"})  // as its readers have it
    {}

    void type(std::string const& line) { process_.write(line + "\n"); }

    void expect(Lines const& shown)
    {
        while (true) {
            if (auto const end = endOf(shown, 0, printed(), seen_)) {
                seen_ = *end;
                return;
            }
            if (process_.readUntil("\n").empty()) {
                FAIL() << command_ << " does not print what the page shows:\n" << testing::PrintToString(shown);
            }
        }
    }

    // Ends its input, or presses Ctrl-C if nothing else ends it. The page shows everything that a program prints that
    // ends by itself.
    void end()
    {
        process_.endInput();
        if (isEndless(command_)) {
            process_.signal(SIGINT);
            process_.wait();
            return;
        }
        EXPECT_EQ(process_.wait(), 0) << process_.output();
        Lines const all = printed();
        EXPECT_EQ(Lines(all.begin() + static_cast<std::ptrdiff_t>(seen_), all.end()), Lines()) << command_;
    }

    // Where this telephone offers HTTP; empty: nowhere.
    [[nodiscard]] std::string address() const
    {
        std::string const before = "HTTP: http://";
        auto const at = process_.output().find(before);
        std::string const rest = at == std::string::npos ? "" : process_.output().substr(at + before.size());
        return rest.substr(0, rest.find('/'));
    }

private:
    // The complete lines of the output.
    [[nodiscard]] Lines printed() const
    {
        std::string const complete = process_.output().substr(0, process_.output().rfind('\n') + 1);
        return linesOf(replaced(replaced(complete, folder_, kFolderOfPage), address(), kAddressOfPage));
    }

    std::string const folder_;
    std::string const command_;
    Process process_;
    std::size_t seen_ = 0;  // lines
};

class Reader
{
public:
    Reader()
    {
        std::filesystem::create_directory(folder_.file("scripts"));
        std::ofstream(folder_.file("scripts/run")) << "#!/bin/sh\nexec " TELEPHONE " \"$@\"\n";
        std::filesystem::permissions(folder_.file("scripts/run"), std::filesystem::perms::owner_all);
    }

    ~Reader()
    {
        end(program_);
        end(telephone_);
    }

    void follow(Block const& block)
    {
        bool const isSession = block.kind == "console";
        isSession ? talk(block.lines) : paste(block.lines);
    }

private:
    using Running = std::unique_ptr<Program>;

    void paste(Lines const& lines)
    {
        bool const isFile = lines.front().rfind("# ", 0) == 0;
        std::ofstream file(folder_.file(isFile ? lines.front().substr(2) : "view.py"), std::ios::app);
        for (std::string const& line : lines) {
            file << replaced(line, kAddressOfPage, kAnyAddress) << '\n';
        }
    }

    void talk(Lines const& lines)
    {
        Lines shown;
        for (std::string const& line : lines) {
            bool const isCommand = line.rfind("$ ", 0) == 0;
            if (!isCommand && line.rfind("> ", 0) != 0) {
                shown.push_back(line);
                continue;
            }
            expect(shown);
            if (testing::Test::HasFailure()) {
                return;
            }
            isCommand ? start(line.substr(2)) : program_->type(line.substr(2));
        }
        expect(shown);
    }

    void expect(Lines& shown)
    {
        if (!shown.empty()) {
            (telephoneSpeaks_ ? telephone_ : program_)->expect(std::exchange(shown, {}));
        }
        telephoneSpeaks_ = false;
    }

    void start(std::string const& command)
    {
        auto const sign = command.find('=');
        if (sign < command.find(' ')) {
            variables_ += replaced(command, kAddressOfPage, telephone_->address()) + "\n";
            return;
        }
        telephoneSpeaks_ = isTelephone(command);
        Running& terminal = telephoneSpeaks_ ? telephone_ : program_;
        end(terminal);
        terminal = std::make_unique<Program>(folder_.path(), variables_, command);
    }

    static void end(Running& running)
    {
        if (running) {
            std::exchange(running, nullptr)->end();
        }
    }

    TemporaryFolder const folder_;
    std::string variables_;  // assignments of the shell
    Running telephone_;      // in a terminal of its own
    Running program_;
    bool telephoneSpeaks_ = false;  // what is shown next comes from the telephone
};

}  // namespace

TEST(ApplicationGuide, EveryBlock_DoesWhatThePageShows)
{
    Reader reader;

    for (Block const& block : blocksOf(linesOf(pageText()))) {
        reader.follow(block);
        if (testing::Test::HasFailure()) {
            return;
        }
    }
}

TEST(ApplicationGuide, ReasonsOfTheTable_AreThoseOfASession)
{
    std::string const page = pageText();
    std::string const table =
        page.substr(page.find("\n| Symptom"), page.find("\n## Test it") - page.find("\n| Symptom"));
    std::string const beforeReason = " | `";

    std::size_t reasons = 0;
    for (std::string const& row : linesOf(table)) {
        auto const before = row.find(" |", 1);
        if (before == std::string::npos || row.compare(before, beforeReason.size(), beforeReason) != 0) {
            continue;
        }
        auto const begin = before + beforeReason.size();
        std::string const reason = ": " + row.substr(begin, row.find("` |", begin) - begin) + "\n";
        EXPECT_TRUE(page.find("\nreason" + reason) != std::string::npos ||
                    page.find("\nerror" + reason) != std::string::npos)
            << "no session shows" << reason;
        ++reasons;
    }

    EXPECT_GE(reasons, 9U);
}
