// Recordings of the real telephone: their form, their replay by another telephone, and to an application.
#include <filesystem>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "RunningTelephone.h"

namespace {

// The lines of a page's block that begins with a text.
std::string pageBlock(std::string const& file, std::string const& beginning)
{
    std::string const page = contentOf(file);
    auto const begin = page.find("\n```\n" + beginning) + 5;
    return page.substr(begin, page.find("```", begin) - begin);
}

std::string checkedForm(std::string const& recording)
{
    return run({SYSTEM_PYTHON, CHECK_RECORDING, PROJECT "/docs/recording.schema.json"}, recording).output;
}

std::string withChange(std::string text, std::string const& what, std::string const& with)
{
    auto const at = text.find(what);
    EXPECT_NE(at, std::string::npos) << what;
    return at == std::string::npos ? text : text.replace(at, what.size(), with);
}

std::vector<std::string> rowsIn(std::string const& text)
{
    std::vector<std::string> lines;
    std::istringstream input(text);
    for (std::string line; std::getline(input, line);) {
        lines.push_back(line);
    }
    return lines;
}

// The number of the first line with all of the parts, from 1 on.
std::size_t lineHaving(std::vector<std::string> const& lines, std::vector<std::string> const& parts)
{
    for (std::size_t i = 0; i < lines.size(); ++i) {
        bool hasAll = true;
        for (std::string const& each : parts) {
            hasAll = hasAll && lines[i].find(each) != std::string::npos;
        }
        if (hasAll) {
            return i + 1;
        }
    }
    ADD_FAILURE() << "no line with " << parts.front();
    return 0;
}

class Replay : public testing::Test
{
protected:
    std::string file(std::string const& name) const { return folder_.file(name); }

    void write(std::string const& name, std::string const& text) const { std::ofstream(file(name)) << text; }

    // Plays a script and records it.
    void record(std::string const& script)
    {
        write("a.script", script);
        ASSERT_NO_FATAL_FAILURE(recordScript(file("a.script")));
    }
    void recordScript(std::string const& script)
    {
        Ended const played =
            run({TELEPHONE, "--time", "virtual", "--check", "events", "--record", file("a.recording"), "play", script});
        ASSERT_EQ(played.status, 0) << played.output;
    }

    Ended replay(std::vector<std::string> const& options = {}) const
    {
        // From the folder of the scripts, where the files lie that their commands name.
        std::vector<std::string> command{"env",         "--chdir", SCRIPTS,   TELEPHONE, "--time", "virtual",
                                         "--log-level", "0",       "--check", "events",  "replay", file("a.recording")};
        command.insert(command.end(), options.begin(), options.end());
        return run(command);
    }

    std::string application(std::string const& socket, std::vector<std::string> const& options) const
    {
        std::vector<std::string> command{SYSTEM_PYTHON, APPLICATION, socket};
        command.insert(command.end(), options.begin(), options.end());
        return run(command).output;
    }

    // Records what the application does with a telephone.
    void recordApplication()
    {
        RunningTelephone telephone({"--record", file("a.recording")});
        ASSERT_EQ(application(telephone.socket(), {"1"}), "sfiSuccess\nsfiSuccess\n[(1, 'held')]\nsfiSuccess\n");
        telephone.process().signal(SIGTERM);
        EXPECT_EQ(telephone.process().wait(), 0);
    }

    TemporaryFolder const folder_;
};

constexpr char const* kRecordedHold = "OutgoingCallMakeRequest Line=4711 CallID=1 Destination=100\n"
                                      "wait CallStateChangeEvent CallID=1 CallState=connected\n"
                                      "HoldCall Line=4711 CallID=1\n"
                                      "wait CallHeldEvent CallID=1\n"
                                      "RetrieveCall Line=4711 CallID=1\n"
                                      "wait CallRetrievedEvent CallID=1\n"
                                      "CallClearRequest Line=4711 CallID=1\n"
                                      "wait CallStateChangeEvent CallID=1 CallState=idle\n";

}  // namespace

TEST_F(Replay, RecordedTour_FitsItsSchemaAndIsRepeatedWithoutDifference)
{
    Ended const tour = run({TELEPHONE, "--time", "virtual", "--record", file("a.recording"), "tour"});
    ASSERT_EQ(tour.status, 0) << tour.output;

    std::string const form = checkedForm(contentOf(file("a.recording")));
    EXPECT_NE(form.find(" lines fit their schema\n"), std::string::npos) << form;
    Ended const replayed = replay();
    EXPECT_EQ(replayed.status, 0);
    EXPECT_EQ(replayed.output, file("a.recording") + ": 50 messages, no difference\n");
}

TEST_F(Replay, EveryScript_IsRepeatedWithoutDifference)
{
    for (auto const& script : std::filesystem::directory_iterator(SCRIPTS)) {
        SCOPED_TRACE(script.path());
        ASSERT_NO_FATAL_FAILURE(recordScript(script.path()));
        Ended const replayed = replay();
        EXPECT_EQ(replayed.status, 0) << replayed.output;
    }
}

TEST_F(Replay, KeysAndIncomingCalls_AreRepeated)
{
    record("call 4711 from 555 name \"Ann B\"\n"
           "wait IncomingCallEvent\n"
           "AnswerCall Line=4711 CallID={CallID}\n"
           "wait CallStateChangeEvent CallState=connected\n"
           "plug headset\n"
           "CallClearRequest Line=4711 CallID={CallID}\n"
           "wait CallStateChangeEvent CallState=idle\n");

    Ended const replayed = replay();

    EXPECT_EQ(replayed.status, 0) << replayed.output;
}

TEST_F(Replay, ChangedMissingAndExtraEvents_AreReportedWithTheirLines)
{
    ASSERT_NO_FATAL_FAILURE(record(kRecordedHold));
    auto lines = rowsIn(contentOf(file("a.recording")));
    std::size_t const connected = lineHaving(lines, {"CallStateChangeEvent", R"("name":"connected")"});
    lines[connected - 1] = withChange(lines[connected - 1], "<Name></Name>", "<Name>Ann</Name>");
    std::size_t const held = lineHaving(lines, {"CallHeldEvent"});
    lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(held), lines[held - 1]);
    std::size_t const retrieved = lineHaving(lines, {"CallRetrievedEvent"});
    lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(retrieved) - 1);
    std::string changed;
    for (std::string const& each : lines) {
        changed += each + "\n";
    }
    write("a.recording", changed);

    Ended const replayed = replay({"--report", file("report.json"), "--json"});

    EXPECT_EQ(replayed.status, 1);
    std::string const begin = file("a.recording") + ":";
    auto const rows = rowsIn(replayed.output);
    ASSERT_EQ(rows.size(), 4U) << replayed.output;
    EXPECT_EQ(rows[0], begin + std::to_string(connected) +
                           ": different: CallStateChangeEvent 4711 call 1: connected, 100, digits as events; Name was "
                           "Ann and is empty");
    EXPECT_EQ(rows[1], begin + std::to_string(held + 1) + ": missing: CallHeldEvent 4711 call 1: held");
    EXPECT_EQ(rows[2], begin + std::to_string(held + 1) +
                           ": extra, behind this line: CallRetrievedEvent 4711 call 1: retrieved, 100");
    EXPECT_NE(rows[3].find(" messages, 3 differences"), std::string::npos);
    EXPECT_NE(contentOf(file("report.json"))
                  .find(R"({"message":"CallHeldEvent","recorded":2,"equal":1,"different":0,"missing":1,"extra":0,)"
                        R"("reordered":0,"elements":[]})"),
              std::string::npos);
}

TEST_F(Replay, FileThatIsNotARecording_EndsWithStatus2)
{
    write("a.recording", "press 1\n");
    Ended const wrong = replay();
    EXPECT_EQ(wrong.status, 2);
    EXPECT_EQ(wrong.output, "telephone: " + file("a.recording") + ":1: not a JSON object\n");

    write("a.recording", pageBlock(PROJECT "/docs/replay.md", "{\"recording\"") + "{\"event\":1}\n");
    Ended const broken = replay({"--as-telephone"});
    EXPECT_EQ(broken.status, 2);
    EXPECT_EQ(broken.output, "telephone: " + file("a.recording") +
                                 ":10: \"time\" is missing, or is not in the form 2026-03-01T12:00:00.000Z\n");

    Ended const missing = run({TELEPHONE, "replay", "/nowhere/a.recording"});
    EXPECT_EQ(missing.status, 2);
    EXPECT_EQ(missing.output, "telephone: /nowhere/a.recording: cannot be read\n");
}

TEST_F(Replay, FormOnThePage_FitsItsSchema)
{
    EXPECT_EQ(checkedForm(pageBlock(PROJECT "/docs/replay.md", "{\"recording\"")), "9 lines fit their schema\n");
}

TEST_F(Replay, PlayedTelephone_IsOneForTheApplication)
{
    ASSERT_NO_FATAL_FAILURE(recordApplication());

    Process telephone(
        {TELEPHONE, "--time", "real", "--socket", file("socket"), "replay", file("a.recording"), "--as-telephone"});
    telephone.readUntil("applications can connect at " + file("socket") + "\n");
    EXPECT_EQ(application(file("socket"), {"7"}), "sfiSuccess\nsfiSuccess\n[(7, 'held')]\nsfiSuccess\n");
    EXPECT_EQ(lastLine(telephone.readAll()), file("a.recording") + ": 3 messages, no difference");
    EXPECT_EQ(telephone.wait(), 0);
}

TEST_F(Replay, PlayedTelephone_ReportsWhatTheApplicationDoesBesideTheRecording)
{
    ASSERT_NO_FATAL_FAILURE(recordApplication());

    Process telephone(
        {TELEPHONE, "--time", "real", "--socket", file("socket"), "replay", file("a.recording"), "--as-telephone"});
    telephone.readUntil("applications can connect at " + file("socket") + "\n");
    EXPECT_EQ(application(file("socket"), {"7", "twice"}),
              "sfiSuccess\nsfiSuccess\nsfiFailure\n[(7, 'held')]\nsfiSuccess\n");
    std::string const output = telephone.readAll();
    EXPECT_NE(output.find(": extra, behind this line: HoldCall 4711 call 7\n"), std::string::npos) << output;
    EXPECT_EQ(lastLine(output), file("a.recording") + ": 3 messages, 1 difference");
    EXPECT_EQ(telephone.wait(), 1);
}

TEST_F(Replay, PlayedTelephone_ReportsWhatTheApplicationLeftOut)
{
    ASSERT_NO_FATAL_FAILURE(recordApplication());

    Process process(
        {TELEPHONE, "--time", "real", "--socket", file("socket"), "replay", file("a.recording"), "--as-telephone"});
    process.readUntil("applications can connect at " + file("socket") + "\n");
    {
        auto silent = telephone_client::Connection::open(file("socket")).value();
        ASSERT_TRUE(silent.send("events"));
        ASSERT_TRUE(silent.receive());
    }
    auto const rows = rowsIn(process.readAll());
    ASSERT_EQ(rows.size(), 5U);
    EXPECT_NE(rows[1].find(": missing: OutgoingCallMakeRequest 4711 call 1 Destination=100"), std::string::npos);
    EXPECT_NE(rows[2].find(": missing: HoldCall 4711 call 1"), std::string::npos);
    EXPECT_NE(rows[3].find(": missing: CallClearRequest 4711 call 1"), std::string::npos);
    EXPECT_EQ(process.wait(), 1);
}

TEST_F(Replay, RecordingThatCannotBeWritten_DoesNotKeepTheTelephoneFromStarting)
{
    write("a.script", "say up\n");

    Ended const played =
        run({TELEPHONE, "--time", "virtual", "--record", "/nowhere/a.recording", "play", file("a.script")});

    EXPECT_EQ(played.status, 0) << played.output;
    EXPECT_NE(played.output.find("cannot write the recording /nowhere/a.recording: No such file or directory\n"),
              std::string::npos)
        << played.output;
}
