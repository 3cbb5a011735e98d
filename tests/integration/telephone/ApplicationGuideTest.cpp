// Follows docs/applications.md as a reader does, and compares what comes with what the page shows.
//
// The page's blocks, in their order:
//     python, or a block that begins with "# FILE"   pasted at the end of view.py, or saved as FILE
//     console                                        "$ COMMAND" is run by the shell, "> LINE" is typed to the program
//                                                    that runs, and everything else is what the program prints; "..."
//                                                    stands for any text within a line, and for any lines
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

// A program that the reader started, and how much of its output the page has shown so far.
class Program
{
public:
    Program(std::string const& folder, std::string const& command)
        : folder_(folder)
        , command_(command)
        , process_({"/bin/sh", "-c", "cd " + folder + " && exec " + command},
                   {"XDG_RUNTIME_DIR=" + folder, "PYTHONUNBUFFERED=1", "TELEPHONE_CHECK=events"})
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

    // Ends its input, and waits for its end. It has printed nothing that the page does not show.
    void end()
    {
        process_.endInput();
        EXPECT_EQ(process_.wait(), 0) << process_.output();
        Lines const all = printed();
        EXPECT_EQ(Lines(all.begin() + static_cast<std::ptrdiff_t>(seen_), all.end()), Lines()) << command_;
    }

    // As Ctrl-C does. Its log may go on.
    void interrupt()
    {
        process_.signal(SIGINT);
        EXPECT_EQ(process_.wait(), 0) << process_.output();
    }

private:
    // The complete lines of the output. The page shows another folder than the test's.
    [[nodiscard]] Lines printed() const
    {
        std::string text = process_.output().substr(0, process_.output().rfind('\n') + 1);
        for (std::size_t at = 0; (at = text.find(folder_, at)) != std::string::npos;) {
            text.replace(at, folder_.size(), "/run/user/1000");
        }
        return linesOf(text);
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
        endProgram();
        endTelephone();
    }

    void follow(Block const& block)
    {
        bool const isSession = block.kind == "console";
        isSession ? talk(block.lines) : paste(block.lines);
    }

private:
    void paste(Lines const& lines)
    {
        bool const isFile = lines.front().rfind("# ", 0) == 0;
        std::ofstream file(folder_.file(isFile ? lines.front().substr(2) : "view.py"), std::ios::app);
        for (std::string const& line : lines) {
            file << line << '\n';
        }
    }

    void talk(Lines const& lines)
    {
        Lines shown;
        for (std::string const& line : lines) {
            if (line.rfind("$ ", 0) != 0 && line.rfind("> ", 0) != 0) {
                shown.push_back(line);
                continue;
            }
            expect(shown);
            if (testing::Test::HasFailure()) {
                return;
            }
            line[0] == '$' ? start(line.substr(2)) : program_->type(line.substr(2));
        }
        expect(shown);
    }

    void expect(Lines& shown)
    {
        if (!shown.empty()) {
            (servesNow_ ? telephone_ : program_)->expect(std::exchange(shown, {}));
        }
        servesNow_ = false;
    }

    // The telephone has a terminal of its own.
    void start(std::string const& command)
    {
        servesNow_ = command == "scripts/run serve";
        servesNow_ ? endTelephone() : endProgram();
        (servesNow_ ? telephone_ : program_) = std::make_unique<Program>(folder_.path(), command);
    }

    void endProgram()
    {
        if (auto const ended = std::exchange(program_, nullptr)) {
            ended->end();
        }
    }

    void endTelephone()
    {
        if (auto const ended = std::exchange(telephone_, nullptr)) {
            ended->interrupt();
        }
    }

    TemporaryFolder const folder_;
    std::unique_ptr<Program> telephone_;
    std::unique_ptr<Program> program_;
    bool servesNow_ = false;  // the telephone prints what is shown next
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
