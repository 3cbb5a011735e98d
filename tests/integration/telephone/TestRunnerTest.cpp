// The command test: scripts in telephones of their own, and what it says about them.
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <thread>

#include <gtest/gtest.h>
#include <pugixml.hpp>

#include "Process.h"
#include "tests/doubles/TemporaryFolder.h"

namespace {

namespace fs = std::filesystem;

class TestRunner : public testing::Test
{
protected:
    std::string script(std::string const& name, std::string const& text)
    {
        std::ofstream(folder_.file(name)) << text;
        return folder_.file(name);
    }
    // The run keeps its files where the test finds them.
    std::vector<std::string> command(std::vector<std::string> const& words) const
    {
        std::vector<std::string> all{TELEPHONE, "test", "--files", files()};
        all.insert(all.end(), words.begin(), words.end());
        return all;
    }
    Ended test(std::vector<std::string> const& words) const { return run(command(words)); }
    std::string files() const { return folder_.file("files"); }

    TemporaryFolder folder_;
};

constexpr char const* kPasses = "GetServiceState\nexpect answer sfiSuccess\n";
constexpr char const* kFails = "GetServiceState\nexpect lamp 1 steady within 0\n";
constexpr char const* kHangs = "option time real\nsay begun\npause 600\n";

bool has(std::string const& text, std::string const& part)
{
    return text.find(part) != std::string::npos;
}

// The processes that a process has started.
std::vector<pid_t> childrenOf(pid_t id)
{
    std::istringstream ids(contentOf("/proc/" + std::to_string(id) + "/task/" + std::to_string(id) + "/children"));
    std::vector<pid_t> children;
    for (pid_t each = 0; ids >> each;) {
        children.push_back(each);
    }
    return children;
}

bool becomesTrue(std::function<bool()> const& condition)
{
    auto const deadline = std::chrono::steady_clock::now() + Process::kDeadline;
    while (!condition() && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::yield();
    }
    return condition();
}

}  // namespace

TEST_F(TestRunner, ScriptThatPasses_IsInTheTableAndItsFilesAreDeleted)
{
    std::string const good = script("good.script", kPasses);

    Ended const result = test({folder_.path()});

    EXPECT_EQ(result.status, 0) << result.output;
    EXPECT_TRUE(has(result.output, "passed  " + good + ", seed 0, ")) << result.output;
    EXPECT_TRUE(lastLine(result.output).starts_with("1 of 1 passed, in ")) << result.output;
    EXPECT_FALSE(fs::exists(files())) << "nothing was to be kept";
}

TEST_F(TestRunner, ScriptThatFails_IsListedWithItsLineItsCommandAndItsFiles)
{
    script("good.script", kPasses);
    std::string const bad = script("bad.script", kFails);

    Ended const result = test({folder_.path(), "--no-exchange"});

    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(has(result.output, "failed: " + bad + ", seed 0\n    " + bad +
                                       ":2: expect lamp 1 steady within 0: it is off\n    again: telephone "))
        << result.output;
    EXPECT_TRUE(has(result.output, "--no-exchange")) << result.output;
    EXPECT_TRUE(has(result.output, " play " + bad + "\n    files: " + files() + "/bad-0\n")) << result.output;
    EXPECT_TRUE(lastLine(result.output).starts_with("1 of 2 passed, 1 failed, in ")) << result.output;
    EXPECT_TRUE(has(contentOf(files() + "/bad-0/errors"), "bad.script:2: expect lamp 1 steady within 0: it is off"));
    EXPECT_TRUE(has(contentOf(files() + "/bad-0/transcript"), "GetServiceState"));
    EXPECT_TRUE(has(contentOf(files() + "/bad-0/log"), "<Method>GetServiceState</Method>"))
        << "every request is logged";
    EXPECT_FALSE(fs::exists(files() + "/good-0"));
}

TEST_F(TestRunner, ScriptsOfOneName_HaveFoldersOfTheirOwnAndTheOptionsOfTheCommandLine)
{
    fs::create_directory(folder_.file("a"));
    fs::create_directory(folder_.file("b"));
    std::string const first = script("a/same.script", kFails);
    std::string const second = script("b/same.script", kFails);
    std::string const config = script("desk.toml", "[log]\nlevel = 1\n");

    Ended const result = run({TELEPHONE, "--config", config, "--check", "events", "--no-exchange", "test", "--jobs",
                              "1", "--files", files(), first, second});

    std::string const again =
        "    again: telephone --time virtual --seed 0 --check events --no-exchange --config " + config + " play ";
    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(has(result.output, again + first + "\n    files: " + files() + "/same-0\n")) << result.output;
    EXPECT_TRUE(has(result.output, again + second + "\n    files: " + files() + "/same.2-0\n")) << result.output;
}

TEST_F(TestRunner, MistakesInAScript_AreAllListed)
{
    std::string const wrong = script("wrong.script", "hoold up\nwait CallHoldEvent\n");

    Ended const result = test({wrong});

    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(has(result.output, wrong + ":1: hoold up: no request or command hoold")) << result.output;
    EXPECT_TRUE(has(result.output, wrong + ":2: wait CallHoldEvent: no event CallHoldEvent")) << result.output;
}

TEST_F(TestRunner, WrongOption_BreaksTheScriptWithItsLine)
{
    std::string const wrong = script("wrong.script", "option check some\nsay x\n");

    Ended const result = test({wrong});

    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(has(result.output, "    ended with status 1\n    telephone: " + wrong +
                                       ": \"some\" is not a value of the option check: none, events or all\n"))
        << result.output;
}

TEST_F(TestRunner, ScriptThatDoesNotEnd_IsEndedAtTheLimitWithItsStep)
{
    std::string const endless = script("endless.script", kHangs);

    Ended const result = test({endless, "--limit", "1"});

    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(has(result.output, "broken: " + endless + ", seed 0\n    it did not end within 1 s\n    " + endless +
                                       ":3: pause 600: ended by a signal\n"))
        << result.output;
}

TEST_F(TestRunner, TelephoneThatEndsAtAContradiction_IsBrokenWithItsLastWords)
{
    std::string const wrong = script("wrong.script", "option check all\nstrict off\nHoldCall Line=4711 CallID=abc\n");

    Ended const result = test({wrong});

    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(has(result.output, "broken: " + wrong + ", seed 0\n    ended with status 4\n    telephone: check: "))
        << result.output;
}

TEST_F(TestRunner, TelephoneThatIsKilled_IsBrokenAndTheOthersArePlayed)
{
    std::string const endless = script("a.script", kHangs);
    script("b.script", kPasses);
    Process process(command({folder_.path(), "--jobs", "1"}));
    ASSERT_TRUE(becomesTrue([&] { return has(contentOf(files() + "/a-0/transcript"), "begun"); }));

    kill(childrenOf(process.id()).at(0), SIGKILL);

    EXPECT_EQ(process.wait(), 1);
    EXPECT_TRUE(has(process.output(), "    ended by signal 9 (Killed)\n")) << process.output();
    EXPECT_TRUE(lastLine(process.output()).starts_with("1 of 2 passed, 1 failed, in ")) << process.output();
}

TEST_F(TestRunner, Jobs_ArePlayedAtTheSameTimeAndEndWithTheRun)
{
    for (char const* const each : {"a.script", "b.script", "c.script"}) {
        script(each, kHangs);
    }
    Process process(command({folder_.path(), "--jobs", "2", "--junit", folder_.file("junit.xml")}));
    ASSERT_TRUE(becomesTrue([&] {
        return has(contentOf(files() + "/a-0/transcript"), "begun") &&
               has(contentOf(files() + "/b-0/transcript"), "begun");
    })) << process.output();
    auto const children = childrenOf(process.id());
    EXPECT_EQ(children.size(), 2U);

    process.signal(SIGINT);

    EXPECT_EQ(process.wait(), 1);
    for (pid_t const each : children) {
        EXPECT_EQ(kill(each, 0), -1) << "a telephone is left";
    }
    EXPECT_TRUE(
        has(process.output(), "    the run was ended before\n    again: telephone --time real --check all play " +
                                  folder_.file("a.script") + "\n    files: " + files() + "/a-0\n"))
        << process.output();
    EXPECT_FALSE(has(process.output(), "files: " + files() + "/c-0\n")) << "it was not begun";
    EXPECT_TRUE(lastLine(process.output()).starts_with("0 of 3 passed, 3 not run, in ")) << process.output();
    pugi::xml_document junit;
    ASSERT_TRUE(junit.load_file(folder_.file("junit.xml").c_str()));
    EXPECT_TRUE(junit.child("testsuites").child("testsuite").child("testcase").child("skipped"));
}

TEST_F(TestRunner, RunnerThatIsKilled_LeavesNoTelephone)
{
    script("a.script", kHangs);
    std::vector<pid_t> children;
    {
        Process process(command({folder_.path()}));
        ASSERT_TRUE(becomesTrue([&] { return has(contentOf(files() + "/a-0/transcript"), "begun"); }));
        children = childrenOf(process.id());
        ASSERT_EQ(children.size(), 1U);
    }

    EXPECT_TRUE(
        becomesTrue([&] { return !has(contentOf("/proc/" + std::to_string(children[0]) + "/cmdline"), "play"); }));
}

TEST_F(TestRunner, Seeds_PlayEachScriptWithEach)
{
    script("a.script", kPasses);
    script("b.script", kFails);

    Ended const result = test({folder_.path(), "--seeds", "3-4", "--junit", folder_.file("junit.xml"), "--jobs", "4"});

    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(lastLine(result.output).starts_with("2 of 4 passed, 2 failed, in ")) << result.output;
    EXPECT_TRUE(has(result.output, "failed: " + folder_.file("b.script") + ", seed 3\n")) << result.output;
    EXPECT_TRUE(has(result.output, "failed: " + folder_.file("b.script") + ", seed 4\n")) << result.output;
    EXPECT_TRUE(fs::exists(files() + "/b-3/log"));
    EXPECT_TRUE(fs::exists(files() + "/b-4/log"));
    pugi::xml_document junit;
    ASSERT_TRUE(junit.load_file(folder_.file("junit.xml").c_str()));
    auto const first = junit.child("testsuites").child("testsuite");
    auto const second = first.next_sibling();
    EXPECT_EQ(first.attribute("name").value(), folder_.file("a.script"));
    EXPECT_STREQ(first.attribute("tests").value(), "2");
    EXPECT_STREQ(first.attribute("failures").value(), "0");
    EXPECT_STREQ(first.child("testcase").attribute("name").value(), "seed 3");
    EXPECT_STREQ(second.attribute("failures").value(), "2");
    EXPECT_EQ(second.child("testcase").child("failure").attribute("message").value(),
              folder_.file("b.script") + ":2: expect lamp 1 steady within 0: it is off");
}

TEST_F(TestRunner, Coverage_IsATableAndJson)
{
    script("a.script", "HoldCall Line=4711 CallID=7\nexpect answer sfiFailure\npress 1\nexpect lamp 1 steady\n");

    Ended const result = test({folder_.path(), "--coverage=" + folder_.file("coverage.json")});

    EXPECT_EQ(result.status, 0) << result.output;
    EXPECT_TRUE(has(result.output, "requests    1 of  43; not touched:\n    AcceptCall, ")) << result.output;
    EXPECT_TRUE(has(result.output, "keys        1 of  14; not touched:\n    blf, ")) << result.output;
    std::string const json = contentOf(folder_.file("coverage.json"));
    for (char const* const each :
         {"\"HoldCall\"", "\"Result failure\"", "\"HoldCall: unknown call\"", "\"line steady\""}) {
        EXPECT_TRUE(has(json, each)) << each << json;
    }
}

TEST_F(TestRunner, Options_OfAScriptChooseItsTelephone)
{
    script("desk.toml", "[[line]]\nid = \"5555\"\n[store]\npath = \"store.db\"\n");
    std::string const text =
        "option config desk.toml\nSetDoNotDisturb Line=5555 doNotDisturbOn=1\nexpect answer sfiSuccess\n";
    script("a.script", text);
    script("b.script", text);

    Ended const result = test({folder_.path(), "--jobs", "2"});

    EXPECT_EQ(result.status, 0) << result.output;
    EXPECT_FALSE(fs::exists(folder_.file("store.db"))) << "the store belongs into the working folder";
}

TEST_F(TestRunner, FolderWithoutScripts_IsAMistakeOfTheUser)
{
    fs::create_directory(folder_.file("empty"));

    Ended const result = test({folder_.file("empty")});

    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(lastLine(result.output), "telephone: " + folder_.file("empty") + ": no file *.script in this folder");
}

TEST_F(TestRunner, LogOfItsOwn_IsAMistakeOfTheUser)
{
    std::string const good = script("good.script", kPasses);

    for (char const* const each : {"--log-file", "--socket"}) {
        Ended const result = test({good, each, folder_.file("x")});

        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(lastLine(result.output),
                  "telephone: each telephone of a test has a log and a socket of its own: leave "
                  "out --log-file and --socket");
    }
}

TEST_F(TestRunner, SeedOfTheCommandLine_IsThatOfTheScripts)
{
    std::string const good = script("good.script", kPasses);

    Ended const result = test({good, "--time", "virtual", "--seed", "12"});

    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(has(result.output, "good.script, seed 12, ")) << result.output;
}

TEST_F(TestRunner, WrongSeeds_AreAMistakeOfTheUser)
{
    std::string const good = script("good.script", kPasses);

    Ended const result = test({good, "--seeds", "9-3"});

    EXPECT_EQ(result.status, 2);
    EXPECT_TRUE(has(result.output, "--seeds: the range of seeds 9-3 runs backwards\n")) << result.output;
}

TEST_F(TestRunner, JUnitFileThatCannotBeWritten_FailsTheRun)
{
    std::string const good = script("good.script", kPasses);

    Ended const result = test({good, "--junit", "/no/such/folder/junit.xml"});

    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(has(result.output, "telephone: /no/such/folder/junit.xml: cannot be written")) << result.output;
}

TEST_F(TestRunner, OptionsOfAScriptFromStandardInput_AreRefused)
{
    Ended const result = run({TELEPHONE, "--log-level", "0", "play", "-"}, "option time real\nsay x\n");

    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(lastLine(result.output),
              "telephone: a script from standard input has no options: give them on the command line");
}

TEST_F(TestRunner, Time_IsVirtualUnlessTheScriptOrTheCommandSaysReal)
{
    std::string const waits = script("waits.script", "pause 3600\n");

    Ended const result = test({waits, "--limit", "30"});
    Ended const real = test({waits, "--limit", "0.5", "--time", "real"});

    EXPECT_EQ(result.status, 0) << result.output;
    EXPECT_TRUE(has(result.output, "  3600.00 s  passed\n")) << result.output;
    EXPECT_EQ(real.status, 1) << real.output;
    EXPECT_TRUE(has(real.output, "    it did not end within 0.5 s\n")) << real.output;
}

TEST_F(TestRunner, ScriptInRealTime_IsPlayedWithTheFirstSeedAlone)
{
    script("a.script", "option time real\nsay x\n");
    script("b.script", "say x\n");

    Ended const result = test({folder_.path(), "--seeds", "3-5"});

    EXPECT_TRUE(lastLine(result.output).starts_with("4 of 4 passed, in ")) << result.output;
    EXPECT_TRUE(has(result.output, "a.script  3  ")) << result.output;
    EXPECT_TRUE(has(result.output, "b.script  3-5  ")) << result.output;
}

TEST_F(TestRunner, FailureWithASeed_IsTheSameInTheNextRun)
{
    std::string const bad = script("bad.script", "OutgoingCallMakeRequest Line=4711 CallID=1 Destination=100\n"
                                                 "wait CallHeldEvent within 5\n");

    Ended const first = test({bad, "--seeds", "7"});
    std::string const log = contentOf(files() + "/bad-7/log");
    std::string const transcript = contentOf(files() + "/bad-7/transcript");
    Ended const second = test({bad, "--seeds", "7"});

    EXPECT_TRUE(has(first.output, "    again: telephone --time virtual --seed 7 --check all play " + bad + "\n"))
        << first.output;
    EXPECT_TRUE(has(log, "INVITE sip:")) << log;
    EXPECT_EQ(contentOf(files() + "/bad-7/log"), log);
    EXPECT_TRUE(has(transcript, "connected")) << transcript;
    EXPECT_EQ(contentOf(files() + "/bad-7/transcript"), transcript);
}

TEST_F(TestRunner, WrongTimeOfAScript_BreaksIt)
{
    std::string const wrong = script("wrong.script", "option time unreal\nsay x\n");

    Ended const result = test({wrong});

    EXPECT_EQ(result.status, 1);
    EXPECT_TRUE(has(result.output, "    telephone: " + wrong +
                                       ": \"unreal\" is not a value of the option time: write real, virtual or "
                                       "virtual=2025-03-30T00:59:00Z\n"))
        << result.output;
}
