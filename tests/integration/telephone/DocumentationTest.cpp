// Runs what README.md and docs/ tell people to type.
#include <fstream>
#include <functional>
#include <map>
#include <sstream>

#include <gtest/gtest.h>

#include "RunningTelephone.h"

namespace {

std::string read(std::string const& file)
{
    std::ifstream input(PROJECT "/" + file);
    EXPECT_TRUE(input) << file;
    return {std::istreambuf_iterator<char>(input), std::istreambuf_iterator<char>()};
}

// The lines of a page's code blocks that begin with a text, without this text and without comments.
std::vector<std::string> typedLines(std::string const& page, std::string const& beginning)
{
    std::vector<std::string> lines;
    std::istringstream text(page);
    bool inBlock = false;
    for (std::string line; std::getline(text, line);) {
        if (line.rfind("```", 0) == 0) {
            inBlock = !inBlock;
        } else if (inBlock && line.rfind(beginning, 0) == 0) {
            std::string const rest = line.substr(beginning.size(), line.find("  #") - beginning.size());
            lines.push_back(rest.substr(0, rest.find_last_not_of(' ') + 1));
        }
    }
    return lines;
}

std::vector<std::string> words(std::string const& line)
{
    std::istringstream text(line);
    return {std::istream_iterator<std::string>(text), std::istream_iterator<std::string>()};
}

Ended runWith(std::string const& arguments, std::string const& input = {})
{
    std::vector<std::string> command{TELEPHONE};
    for (std::string const& each : words(arguments)) {
        command.push_back(each);
    }
    return run(command, input);
}

void expectWell(Ended const& result)
{
    EXPECT_EQ(result.status, 0) << result.output;
}

// Runs a command until it prints a text, then ends it.
void expectToPrint(std::string const& socket, std::string const& arguments, std::string const& text)
{
    std::vector<std::string> command{TELEPHONE, "--socket", socket};
    for (std::string const& each : words(arguments)) {
        command.push_back(each);
    }
    Process process(command);
    process.readUntil(text);
    process.signal(SIGTERM);
    EXPECT_EQ(process.wait(), 0) << process.output();
}

void expectToServe(std::string const& arguments, std::string const& says)
{
    TemporaryFolder const folder;
    expectToPrint(folder.file("socket"), arguments, says);
}

void expectOfARunningTelephone(std::string const& arguments, std::string const& says)
{
    RunningTelephone telephone;
    expectToPrint(telephone.socket(), arguments, says);
}

void expectTour()
{
    expectWell(run({TELEPHONE, "tour"}));
}

void expectConsole(std::string const& options)
{
    TemporaryFolder const folder;
    expectWell(runWith("--socket " + folder.file("socket") + " " + options + " console", "quit\n"));
}

void expectStore()
{
    TemporaryFolder const folder;
    std::string const file = folder.file("telephone.toml");
    std::ofstream(file) << "[store]\npath = \"" << folder.file("store.db") << "\"\n";
    expectWell(runWith("--config " + file + " --log-level 0 play -"));
    Ended const result = runWith("--config " + file + " store list");
    expectWell(result);
    EXPECT_NE(result.output.find("agent-state"), std::string::npos) << result.output;
}

void expectFleet()
{
    Ended const result = runWith("--time real fleet 3", "call 1 2\nquit\n");
    expectWell(result);
    EXPECT_NE(result.output.find("1 call connected"), std::string::npos) << result.output;
}

void expectReplay()
{
    TemporaryFolder const folder;
    std::string const file = folder.file("tour.recording");
    expectWell(runWith("--record " + file + " tour"));
    expectWell(runWith("replay " + file));
}

void expectTest()
{
    TemporaryFolder const folder;
    std::ofstream(folder.file("a.script")) << "GetServiceState\nexpect answer sfiSuccess\n";
    Ended const result = runWith("test " + folder.path());
    expectWell(result);
    EXPECT_NE(result.output.find("1 of 1 passed"), std::string::npos) << result.output;
}

// Every command that README.md may show, and how to run it.
std::map<std::string, std::function<void()>> const kCommands{
    {"", expectTour},
    {"console", [] { expectConsole(""); }},
    {"play FILE", [] { expectWell(runWith("play " SCRIPTS "/number-101-is-busy.script")); }},
    {"--time virtual play FILE",
     [] { expectWell(runWith("--time virtual play " SCRIPTS "/number-101-is-busy.script")); }},
    {"chaos --hours 100", [] { expectWell(runWith("chaos --hours 1")); }},
    {"test FOLDER", expectTest},
    {"serve", [] { expectToServe("serve", "applications can connect at"); }},
    {"request GetServiceState", [] { expectOfARunningTelephone("request GetServiceState", "sfiSuccess,"); }},
    {"do lines", [] { expectOfARunningTelephone("do lines", "4711"); }},
    {"fleet 20", [] { expectFleet(); }},
    {"watch", [] { expectOfARunningTelephone("watch", "watching\n"); }},
    {"--record FILE tour", expectReplay},
    {"replay FILE", expectReplay},
    {"describe HoldCall", [] { expectWell(runWith("describe HoldCall")); }},
    {"exchange", [] { expectToServe("exchange", "199"); }},
    {"--config FILE store list", expectStore},
    {"--config docs/example.toml console", [] { expectConsole("--config " PROJECT "/docs/example.toml"); }},
    {"--help", [] { expectWell(runWith("--help")); }},
};

}  // namespace

TEST(Documentation, CommandsOfTheReadme_Work)
{
    auto const commands = typedLines(read("README.md"), "scripts/run");

    ASSERT_GE(commands.size(), 9U);
    for (std::string const& each : commands) {
        std::string const arguments = each.substr(std::min<std::size_t>(each.size(), 1));
        auto const found = kCommands.find(arguments);
        ASSERT_NE(found, kCommands.end()) << "README.md shows a command that no test runs: " << each;
        SCOPED_TRACE(each);
        found->second();
    }
}

TEST(Documentation, ConsoleLinesOfTheReadme_Work)
{
    std::string lines;
    for (std::string const& each : typedLines(read("README.md"), "telephone> ")) {
        lines += each + "\n";
    }
    ASSERT_NE(lines.find("help HoldCall"), std::string::npos);

    Ended const result = run({TELEPHONE, "play", "-"}, lines);

    expectWell(result);
}

TEST(Documentation, ConsoleLinesOfTheLifeOfACall_Work)
{
    std::string lines;
    for (std::string const& each : typedLines(read("docs/life-of-a-call.md"), "telephone> ")) {
        lines += each + "\n";
    }
    ASSERT_NE(lines.find("HoldCall"), std::string::npos);

    Ended const result = run({TELEPHONE, "play", "-"}, lines + "wait CallRetrievedEvent\n");

    expectWell(result);
    EXPECT_NE(result.output.find("\n    INVITE sip:100@"), std::string::npos) << result.output;
}

TEST(Documentation, ScriptOfTheTestingPage_Holds)
{
    std::string const page = read("docs/testing.md");
    auto const start = page.find("OutgoingCallMakeRequest");
    ASSERT_NE(start, std::string::npos);

    Ended const result = run({TELEPHONE, "play", "-"}, page.substr(start, page.find("```", start) - start));

    expectWell(result);
}
