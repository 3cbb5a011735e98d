#include "telephone/replay/ReplayReport.h"

#include <gtest/gtest.h>

using namespace telephone;

namespace {

ReplayReport sampleReport()
{
    ReplayReport report("hold.recording");
    report.addEqual("HoldCall");
    report.addEqual("HoldCall");
    report.addEqual("CallHeldEvent");
    report.add({DifferenceKind::kExtra, 21, "CallHeldEvent", "CallHeldEvent 4711 call 2: held"});
    report.add({DifferenceKind::kMissing, 17, "CallHeldEvent", "CallHeldEvent 4711 call 1: held"});
    report.add({DifferenceKind::kDifferent,
                14,
                "CallStateChangeEvent",
                "CallStateChangeEvent 4711 call 1: connected",
                {{"CallState", "3", "6", &enumerations::kCallState}, {"Name", "", "Ann", nullptr}}});
    report.add({DifferenceKind::kOutOfOrder, 17, "CallRetrievedEvent", "CallRetrievedEvent 4711 call 1: retrieved"});
    return report;
}

}  // namespace

TEST(ReplayReport, WithoutDifference_SaysSo)
{
    ReplayReport report("hold.recording");
    report.addEqual("HoldCall");

    EXPECT_TRUE(report.isEqual());
    EXPECT_EQ(report.rows(), TableRows{"hold.recording: 1 message, no difference"});
}

TEST(ReplayReport, Differences_AreInTheOrderOfTheRecording)
{
    ReplayReport const report = sampleReport();

    EXPECT_FALSE(report.isEqual());
    EXPECT_EQ(report.rows(),
              (TableRows{"hold.recording:14: different: CallStateChangeEvent 4711 call 1: connected; CallState was "
                         "remote ringing and is connected; Name was empty and is Ann",
                         "hold.recording:17: missing: CallHeldEvent 4711 call 1: held",
                         "hold.recording:17: not at its place: CallRetrievedEvent 4711 call 1: retrieved",
                         "hold.recording:21: extra, behind this line: CallHeldEvent 4711 call 2: held",
                         "hold.recording: 6 messages, 4 differences"}));
}

TEST(ReplayReport, Table_HasARowForEachMessage)
{
    EXPECT_EQ(
        sampleReport().table(),
        (TableRows{
            "message               recorded   equal      different  missing    extra      reordered  elements",
            "CallHeldEvent         2          1          0          1          1          0",
            "CallRetrievedEvent    1          0          0          0          0          1",
            "CallStateChangeEvent  1          0          1          0          0          0          CallState, Name",
            "HoldCall              2          2          0          0          0          0",
        }));
}

TEST(ReplayReport, Json_HasBoth)
{
    ReplayReport report("a.recording");
    report.addEqual("HoldCall");
    report.add({DifferenceKind::kDifferent, 3, "HoldCall", "HoldCall 4711", {{"answer", "x", "y", nullptr}}});

    EXPECT_EQ(report.json(),
              R"({"recording":"a.recording","equal":false,"messages":[{"message":"HoldCall","recorded":2,"equal":1,)"
              R"("different":1,"missing":0,"extra":0,"reordered":0,"elements":["answer"]}],"differences":[)"
              R"({"kind":"different","line":3,"message":"HoldCall","text":"HoldCall 4711",)"
              R"("elements":[{"element":"answer","recorded":"x","present":"y"}]}]})");
}

TEST(ReplayReport, TextFromTheNetwork_CannotControlTheTerminal)
{
    ReplayReport report("a");
    report.add({DifferenceKind::kDifferent, 3, "X", "X", {{"Name", "a\x1b[2J", "b", nullptr}}});

    EXPECT_EQ(report.rows().front(), "a:3: different: X; Name was a\\x1b[2J and is b");
}
