#include "telephone/replay/EventTracker.h"

#include <gtest/gtest.h>

#include "RecordingText.h"

using namespace telephone;

namespace {

// Compares events with those of a recording, one a line from line 2 on.
class EventTrackerTest : public testing::Test
{
protected:
    void expect(std::vector<std::string> const& events)
    {
        std::string lines;
        for (std::string const& each : events) {
            lines += eventLine(0, 1, each);
        }
        recording_ = recordingOf(lines);
        tracker_ = std::make_unique<EventTracker>(recording_, ids_);
    }

    TableRows compare() const
    {
        ReplayReport report("r");
        tracker_->compare(report, {.ownDomain = "127.0.0.1:5060"});
        return report.rows();
    }

    Recording recording_;
    IdMap ids_{"", ""};
    std::unique_ptr<EventTracker> tracker_;
};

}  // namespace

TEST_F(EventTrackerTest, SameEvents_AreEqual)
{
    expect({held("1"), retrieved("1")});

    tracker_->came(held("1"));
    tracker_->came(retrieved("1"));

    EXPECT_EQ(compare(), TableRows{"r: 2 messages, no difference"});
}

TEST_F(EventTrackerTest, OtherId_IsTheSameCall)
{
    expect({held("1001"), held("1002"), retrieved("1001")});

    tracker_->came(held("1005"));
    tracker_->came(held("1004"));
    tracker_->came(retrieved("1005"));

    EXPECT_EQ(compare(), TableRows{"r: 3 messages, no difference"});
    EXPECT_EQ(ids_.presentCall("1001"), "1005");
    EXPECT_EQ(ids_.presentCall("1002"), "1004");
}

TEST_F(EventTrackerTest, EventsOfDifferentCalls_MayCross)
{
    expect({held("1"), held("2"), retrieved("1"), retrieved("2")});
    ids_.bind(eventParts(held("1")), eventParts(held("1")));
    ids_.bind(eventParts(held("2")), eventParts(held("2")));

    tracker_->came(held("2"));
    tracker_->came(retrieved("2"));
    tracker_->came(held("1"));
    tracker_->came(retrieved("1"));

    EXPECT_EQ(compare(), TableRows{"r: 4 messages, no difference"});
}

TEST_F(EventTrackerTest, EventsOfOneCall_MayNot)
{
    expect({held("1"), retrieved("1")});

    tracker_->came(retrieved("1"));
    tracker_->came(held("1"));

    ASSERT_EQ(compare().size(), 2U);
    EXPECT_EQ(compare().back(), "r: 2 messages, 1 difference");
    EXPECT_NE(compare().front().find(": not at its place: Call"), std::string::npos) << compare().front();
}

TEST_F(EventTrackerTest, MissingEvent_IsReportedWithItsLine)
{
    expect({held("1"), retrieved("1"), held("1")});

    tracker_->came(held("1"));
    tracker_->came(held("1"));

    EXPECT_EQ(compare(), (TableRows{"r:3: missing: CallRetrievedEvent 4711 call 1: retrieved, 100",
                                    "r: 3 messages, 1 difference"}));
}

TEST_F(EventTrackerTest, ExtraEvent_IsReportedBehindTheOneBefore)
{
    expect({held("1"), held("1")});

    tracker_->came(held("1"));
    tracker_->came(retrieved("1"));
    tracker_->came(held("1"));

    EXPECT_EQ(compare(), (TableRows{"r:2: extra, behind this line: CallRetrievedEvent 4711 call 1: retrieved, 100",
                                    "r: 2 messages, 1 difference"}));
}

TEST_F(EventTrackerTest, ChangedElement_IsReportedWithBothValues)
{
    expect({held("1"), retrieved("1")});

    tracker_->came(held("1"));
    tracker_->came(retrieved("1", "sip:103@127.0.0.1:5060"));

    EXPECT_EQ(compare(), (TableRows{"r:3: different: CallRetrievedEvent 4711 call 1: retrieved, 103; URI was "
                                    "sip:100@127.0.0.1:5060 and is sip:103@127.0.0.1:5060",
                                    "r: 2 messages, 1 difference"}));
}

TEST_F(EventTrackerTest, ChangedFirstEvent_StillBeginsTheCall)
{
    expect({retrieved("1001"), held("1001")});

    tracker_->came(retrieved("1002", "sip:103@127.0.0.1:5060"));
    tracker_->came(held("1002"));

    EXPECT_EQ(compare().back(), "r: 2 messages, 1 difference");
}

TEST_F(EventTrackerTest, CallThatNeverCame_IsMissing)
{
    expect({held("1001")});

    EXPECT_EQ(compare(), (TableRows{"r:2: missing: CallHeldEvent 4711 call 1001: held", "r: 1 message, 1 difference"}));
}

TEST_F(EventTrackerTest, EventsStillToCome_AreWaitedForUntilGivenUp)
{
    expect({held("1"), retrieved("1")});

    EXPECT_TRUE(tracker_->haveComeBefore(0));
    EXPECT_FALSE(tracker_->haveComeBefore(1));
    tracker_->came(held("1"));
    EXPECT_TRUE(tracker_->haveComeBefore(1));
    EXPECT_FALSE(tracker_->haveComeBefore(2));
    tracker_->giveUpBefore(2);
    EXPECT_TRUE(tracker_->haveComeBefore(2));
    EXPECT_EQ(compare().back(), "r: 2 messages, 1 difference");
}

TEST_F(EventTrackerTest, UnknownText_IsComparedAsItStands)
{
    expect({"nonsense"});

    tracker_->came("nonsense");

    EXPECT_EQ(compare(), TableRows{"r: 1 message, no difference"});
}
