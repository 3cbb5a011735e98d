// Commands that need no running telephone, and files that commands write: what they print, where, and how they end.
#include <filesystem>
#include <fstream>
#include <set>

#include <gtest/gtest.h>
#include <pugixml.hpp>

#include "Process.h"
#include "RunningTelephone.h"
#include "tests/doubles/TemporaryFolder.h"

namespace {

namespace fs = std::filesystem;

class Commands : public testing::Test
{
protected:
    std::string file(std::string const& name) const { return folder_.file(name); }
    std::string write(std::string const& name, std::string const& text) const
    {
        std::ofstream(file(name)) << text;
        return file(name);
    }
    Ended store(std::vector<std::string> const& words) const
    {
        std::vector<std::string> command{TELEPHONE, "--config", file("desk.toml"), "store"};
        command.insert(command.end(), words.begin(), words.end());
        return run(command);
    }

    TemporaryFolder const folder_;
};

constexpr char const* kHold = "OutgoingCallMakeRequest Line=4711 CallID=1 Destination=100\n"
                              "wait CallStateChangeEvent CallID=1 CallState=connected\n"
                              "HoldCall Line=4711 CallID=1\n"
                              "wait CallHeldEvent CallID=1\n";

}  // namespace

// --- chaos

TEST_F(Commands, ChaosHourThatHolds_LeavesNothing)
{
    Ended const result = run({TELEPHONE, "chaos", "--hours", "1", "--seed", "41", "--files", file("files")});

    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "1 of 1 hours\n");
    EXPECT_FALSE(fs::exists(file("files")));
}

// No telephone starts with this configuration, so that no line of the hour matters.
TEST_F(Commands, ChaosHourThatFails_IsShortenedAndKept)
{
    std::string const config = write("desk.toml", "[media]\nsource = \"nowhere.wav\"\n");

    Ended const result =
        run({TELEPHONE, "--config", config, "chaos", "--hours", "2", "--seed", "41", "--files", file("files")});

    std::string const script = file("files") + "/failure-42.script";
    std::string const why =
        "ended with status 1; telephone: audio file nowhere.wav: System error : No such file or directory.\n";
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "the hour with seed 42 fails: " + why + "the hour with seed 43 fails: " + why +
                                 "looking for the lines that matter\n"
                                 "\n"
                                 "broken: " +
                                 script +
                                 ", seed 42\n"
                                 "    ended with status 1\n"
                                 "    telephone: audio file nowhere.wav: System error : No such file or directory.\n"
                                 "    again: telephone --time virtual --seed 42 --check events --config " +
                                 config + " play " + script +
                                 "\n"
                                 "    files: " +
                                 file("files") + "/failure-42\n");
    std::set<std::string> kept;
    for (auto const& each : fs::directory_iterator(file("files"))) {
        kept.insert(each.path().filename());
    }
    EXPECT_EQ(kept, (std::set<std::string>{"failure-42", "failure-42.script"}));
    EXPECT_EQ(contentOf(script), "\n");
}

// --- store

TEST_F(Commands, Store_IsReadAndWrittenWithoutATelephone)
{
    write("desk.toml", "[store]\npath = \"" + file("desk.db") + "\"\n");

    Ended const none = store({"list"});
    EXPECT_EQ(none.status, 1);
    EXPECT_EQ(none.output, "telephone store: there is no store \"" + file("desk.db") +
                               "\" yet: the first start or the first set creates it\n");
    Ended const set = store({"set", "call-dnd-activated", "true"});
    EXPECT_EQ(set.status, 0);
    EXPECT_EQ(set.output, "");
    EXPECT_EQ(store({"get", "call-dnd-activated"}).output, "true\n");
    EXPECT_NE(store({"list"}).output.find("call-dnd-activated = true\n"), std::string::npos);
    Ended const unknown = store({"get", "call-dnd-activate"});
    EXPECT_EQ(unknown.status, 1);
    EXPECT_TRUE(unknown.output.starts_with("telephone store: ")) << unknown.output;
    Ended const wrong = store({"erase"});
    EXPECT_EQ(wrong.status, 2);
    EXPECT_EQ(wrong.output, "usage: telephone store list | get KEY | set KEY VALUE\n");
}

TEST_F(Commands, StoreInMemory_HasNothingToRead)
{
    Ended const result = run({TELEPHONE, "store", "list"});

    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output,
              "telephone store: this telephone keeps its settings in memory: name a file in store.path\n");
}

// --- exchange

TEST_F(Commands, ExchangeAlone_HasThePortOfItsConfigurationUnlessTheCommandNamesOne)
{
    std::string const config = write("desk.toml", "[exchange]\nport = 47321\n");

    for (auto const& [words, port] :
         {std::pair<std::vector<std::string>, std::string>{{}, "47321"}, {{"--port", "47322"}, "47322"}}) {
        std::vector<std::string> command{TELEPHONE, "--time", "virtual", "--config", config, "exchange"};
        command.insert(command.end(), words.begin(), words.end());
        Process exchange(command);
        exchange.readUntil("the exchange is sip:127.0.0.1:" + port + "\n");
        exchange.readUntil("  100 ");
        exchange.signal(SIGTERM);
        EXPECT_EQ(exchange.wait(), 0) << exchange.output();
    }
}

// --- the log

TEST_F(Commands, ConsoleWithoutConfigurationAndLogFile_LogsWarningsAlone)
{
    constexpr char const* kEnded = "info [telephone] ended\n";
    std::string const config = write("desk.toml", "");
    auto const isInformed = [&](std::vector<std::string> const& options) {
        std::vector<std::string> command{TELEPHONE, "--time", "virtual", "--socket", file("socket")};
        command.insert(command.end(), options.begin(), options.end());
        return run(command).output.find(kEnded) != std::string::npos;
    };

    EXPECT_FALSE(isInformed({"console"}));
    EXPECT_TRUE(isInformed({"--config", config, "console"}));
    EXPECT_TRUE(isInformed({"--log-level", "4", "console"}));
    EXPECT_FALSE(isInformed({"--config", config, "--log-level", "3", "console"}));
    EXPECT_FALSE(isInformed({"--log-file", file("log"), "console"}));
    EXPECT_NE(contentOf(file("log")).find(kEnded), std::string::npos);
}

// --- play

TEST_F(Commands, JUnitFileOfAScript_SaysWhetherItHeld)
{
    std::string const good = write("good.script", "say hello\n");
    std::string const bad = write("bad.script", "say hello\nexpect lamp 1 steady within 0\n");
    pugi::xml_document report;

    EXPECT_EQ(run({TELEPHONE, "--time", "virtual", "play", good, "--junit", file("good.xml")}).status, 0);
    ASSERT_TRUE(report.load_file(file("good.xml").c_str()));
    pugi::xml_node suite = report.child("testsuites").child("testsuite");
    EXPECT_STREQ(suite.attribute("name").value(), "telephone");
    EXPECT_STREQ(suite.attribute("failures").value(), "0");
    EXPECT_EQ(suite.child("testcase").attribute("name").value(), good);
    EXPECT_FALSE(suite.child("testcase").child("failure"));
    EXPECT_EQ(run({TELEPHONE, "--time", "virtual", "play", bad, "--junit", file("bad.xml")}).status, 1);
    ASSERT_TRUE(report.load_file(file("bad.xml").c_str()));
    suite = report.child("testsuites").child("testsuite");
    EXPECT_STREQ(suite.attribute("failures").value(), "1");
    std::string const failure = suite.child("testcase").child("failure").text().get();
    std::string const message = suite.child("testcase").child("failure").attribute("message").value();
    EXPECT_NE((message + failure).find(bad + ":2: expect lamp 1 steady within 0: it is off"), std::string::npos);
    Ended const nowhere = run({TELEPHONE, "--time", "virtual", "play", good, "--junit", "/nowhere/good.xml"});
    EXPECT_EQ(nowhere.status, 1);
    EXPECT_NE(nowhere.output.find("/nowhere/good.xml"), std::string::npos) << nowhere.output;
}

// --- replay

TEST_F(Commands, Replay_WritesItsReportWhereItIsWanted)
{
    std::string const script = write("a.script", kHold);
    std::string const recording = file("a.recording");
    ASSERT_EQ(run({TELEPHONE, "--time", "virtual", "--record", recording, "play", script}).status, 0);
    auto const replay = [&recording](std::vector<std::string> const& options) {
        std::vector<std::string> command{TELEPHONE, "--time", "virtual", "--log-level", "0", "replay", recording};
        command.insert(command.end(), options.begin(), options.end());
        return run(command);
    };
    std::string const rows = recording + ": 11 messages, no difference\n";
    std::string const table =
        "message                       recorded   equal      different  missing    extra      reordered  elements\n"
        "CallHeldEvent                 1          1          0          0          0          0\n"
        "CallStateChangeEvent          4          4          0          0          0          0\n"
        "HoldCall                      1          1          0          0          0          0\n"
        "OutgoingCallMakeRequest       1          1          0          0          0          0\n"
        "RegistrationStateChangeEvent  2          2          0          0          0          0\n"
        "messageWaitingEvent           2          2          0          0          0          0\n";

    EXPECT_EQ(replay({}).output, rows);
    EXPECT_EQ(replay({"--report"}).output, rows + table);
    EXPECT_EQ(replay({"--report", file("table")}).output, rows);
    EXPECT_EQ(contentOf(file("table")), table);
    EXPECT_EQ(replay({"--json", "--report", file("json")}).output, rows);
    EXPECT_EQ(replay({"--json"}).output, contentOf(file("json")));
    EXPECT_TRUE(contentOf(file("json")).starts_with("{\"recording\":\"" + recording + "\",\"equal\":true,"));
    Ended const nowhere = replay({"--report", "/nowhere/table"});
    EXPECT_EQ(nowhere.status, 1);
    EXPECT_EQ(nowhere.output, rows + "telephone: cannot write the report /nowhere/table\n");
}

TEST_F(Commands, ReplayAsTelephone_NeedsRealTimeAndARecordedSession)
{
    std::string const script = write("a.script", kHold);
    std::string const recording = file("a.recording");
    ASSERT_EQ(run({TELEPHONE, "--time", "virtual", "--record", recording, "play", script}).status, 0);

    Ended const time = run({TELEPHONE, "--time", "virtual", "replay", recording, "--as-telephone"});
    EXPECT_EQ(time.status, 1);
    EXPECT_EQ(time.output, "telephone: an application runs in real time: leave --time out\n");
    Ended const session =
        run({TELEPHONE, "--time", "real", "replay", recording, "--as-telephone", "--session", "view"});
    EXPECT_EQ(session.status, 1);
    EXPECT_EQ(session.output, "telephone: " + recording + " has no session view; it has console\n");
}
