#include "telephone/console/EventJournal.h"

#include <gtest/gtest.h>

using namespace telephone;

namespace {

std::string held(int callID)
{
    return "<Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>" + std::to_string(callID) + "</CallID>";
}

std::string retrieved(int callID)
{
    return "<Method>CallRetrievedEvent</Method><LineID>4711</LineID><CallID>" + std::to_string(callID) + "</CallID>";
}

EventPattern const kAnyHeld = EventPattern::parse({"CallHeldEvent"}, 0).value();
EventPattern const kAnyRetrieved = EventPattern::parse({"CallRetrievedEvent"}, 0).value();

}  // namespace

TEST(EventJournal, Take_GivesEachEventOnce)
{
    EventJournal journal;
    journal.add(held(1));
    journal.add(held(2));

    EXPECT_EQ(*journal.take(kAnyHeld), held(1));
    EXPECT_EQ(*journal.take(kAnyHeld), held(2));
    EXPECT_EQ(journal.take(kAnyHeld), nullptr);
}

TEST(EventJournal, Take_OfAnEventPassedOverSinceTheRequest_StillFindsIt)
{
    EventJournal journal;
    journal.requestSent();
    journal.add(retrieved(1));
    journal.add(held(2));

    EXPECT_EQ(*journal.take(kAnyHeld), held(2));
    EXPECT_EQ(*journal.take(kAnyRetrieved), retrieved(1));
}

TEST(EventJournal, Take_OfAnEventPassedOverBeforeTheRequest_DoesNotFindIt)
{
    EventJournal journal;
    journal.add(retrieved(1));
    journal.add(held(2));
    journal.take(kAnyHeld);
    journal.requestSent();

    EXPECT_EQ(journal.take(kAnyRetrieved), nullptr);
}

TEST(EventJournal, Take_OfAnEventAfterTheLastWaitButBeforeTheRequest_FindsIt)
{
    EventJournal journal;
    journal.add(held(1));
    journal.take(kAnyHeld);
    journal.add(retrieved(1));
    journal.requestSent();

    EXPECT_EQ(*journal.take(kAnyRetrieved), retrieved(1));
}

TEST(EventJournal, Take_PrefersEventsAfterTheLastWait)
{
    EventJournal journal;
    journal.requestSent();
    journal.add(retrieved(1));
    journal.add(held(1));
    journal.add(retrieved(2));
    journal.take(kAnyHeld);

    EXPECT_EQ(*journal.take(kAnyRetrieved), retrieved(2));
}

TEST(EventJournal, Find_LooksSinceTheLastRequestOrWait)
{
    EventJournal journal;
    journal.add(held(1));
    journal.requestSent();
    EXPECT_EQ(journal.find(kAnyHeld), nullptr);

    journal.add(held(2));
    ASSERT_NE(journal.find(kAnyHeld), nullptr);
    EXPECT_EQ(*journal.find(kAnyHeld), held(2));

    journal.take(kAnyHeld);
    journal.take(kAnyHeld);
    EXPECT_EQ(journal.find(kAnyHeld), nullptr);
}

TEST(EventJournal, Untaken_IsWhatNoWaitTook)
{
    EventJournal journal;
    journal.requestSent();
    journal.add(retrieved(1));
    journal.add(held(1));
    journal.take(kAnyHeld);

    EXPECT_EQ(journal.untaken(), std::vector{retrieved(1)});
}
