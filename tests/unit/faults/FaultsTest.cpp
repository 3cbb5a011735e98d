#include "telephone/faults/Faults.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "FaultSurroundings.h"
#include "telephone/framework/TimerService.h"
#include "telephone/time/VirtualTime.h"
#include "telephone/time/Waiting.h"
#include "tests/unit/access/TelephoneDouble.h"

namespace telephone {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace std::chrono_literals;

class FaultsTest : public testing::Test
{
protected:
    explicit FaultsTest(std::vector<FaultConfiguration> const& configured = {})
    {
        EXPECT_TRUE(faults_.start(telephone_.services().history, configured));
    }
    ~FaultsTest() override { faults_.stop(); }

    bool isStoreFull() { return !surroundings_.settings.set("cfu-address", std::to_string(++writes_)); }

    VirtualTime const time_{{}};
    FaultSurroundings surroundings_;
    TelephoneDouble telephone_;
    TimerService timers_;
    Faults faults_{surroundings_.targets, timers_};
    int writes_ = 100;
};

TEST_F(FaultsTest, FaultWithoutMoment_BeginsAtOnceAndLastsUntilItIsEnded)
{
    EXPECT_TRUE(faults_.add("store full"));

    EXPECT_THAT(faults_.rows(), ElementsAre("active: store full"));
    EXPECT_TRUE(isStoreFull());
    sleepFor(24h);
    EXPECT_TRUE(isStoreFull());
    EXPECT_TRUE(faults_.end("STORE FULL"));
    EXPECT_FALSE(isStoreFull());
    EXPECT_THAT(faults_.rows(), IsEmpty());
}

TEST_F(FaultsTest, FaultAtAMoment_WaitsAndEndsAfterItsDuration)
{
    EXPECT_TRUE(faults_.add("store full at 3s for 2s"));

    EXPECT_THAT(faults_.rows(), ElementsAre("waiting: store full at 3s for 2s"));
    sleepFor(2900ms);
    EXPECT_FALSE(isStoreFull());
    sleepFor(200ms);
    EXPECT_TRUE(isStoreFull());
    sleepFor(1800ms);
    EXPECT_TRUE(isStoreFull());
    sleepFor(200ms);
    EXPECT_FALSE(isStoreFull());
    EXPECT_THAT(faults_.rows(), IsEmpty());
}

TEST_F(FaultsTest, FaultOnAnEvent_BeginsAtTheFirstThatMatchesAndCameLater)
{
    telephone_.held(7);
    awaitRest();
    EXPECT_TRUE(faults_.add("store full on CallHeldEvent CallID=7"));
    telephone_.held(8);
    awaitRest();
    EXPECT_FALSE(isStoreFull());

    telephone_.held(7);
    awaitRest();

    EXPECT_TRUE(isStoreFull());
}

TEST_F(FaultsTest, ActiveFault_DoesNotBeginAnewAtItsEvent)
{
    EXPECT_TRUE(faults_.add("store full on CallHeldEvent for 2s"));
    EXPECT_TRUE(faults_.add("keys bounce 2 on CallHeldEvent CallID=9"));
    telephone_.held(7);
    awaitRest();
    EXPECT_TRUE(isStoreFull());

    sleepFor(1s);
    telephone_.held(7);
    sleepFor(1100ms);

    EXPECT_FALSE(isStoreFull());
    EXPECT_THAT(faults_.rows(), ElementsAre("waiting: keys bounce 2 on CallHeldEvent CallID=9"));
}

TEST_F(FaultsTest, Event_ConcernsTheFaultsThatWaitForOneAlone)
{
    EXPECT_TRUE(faults_.add("store full at 100s"));
    EXPECT_TRUE(faults_.add("applications slow 100 after 5 requests"));
    EXPECT_TRUE(faults_.add("keys bounce 2 on CallHeldEvent CallID=9"));

    telephone_.held(9);
    awaitRest();

    EXPECT_THAT(faults_.rows(),
                ElementsAre("waiting: store full at 100s", "waiting: applications slow 100 after 5 requests",
                            "active: keys bounce 2 on CallHeldEvent CallID=9"));
}

TEST_F(FaultsTest, EventBehindManyOthers_BeginsItsFault)
{
    EXPECT_TRUE(faults_.add("store full on CallHeldEvent CallID=600"));

    for (int call = 1; call <= 600; ++call) {
        telephone_.held(call);
    }
    awaitRest();

    EXPECT_TRUE(isStoreFull());
}

TEST_F(FaultsTest, AfterTheEnd_NoFaultBegins)
{
    EXPECT_TRUE(faults_.add("store full at 1s"));
    faults_.stop();
    EXPECT_TRUE(faults_.add("store full"));

    sleepFor(2s);

    EXPECT_FALSE(isStoreFull());
    EXPECT_THAT(faults_.rows(), IsEmpty());
}

TEST_F(FaultsTest, FaultAfterRequests_BeginsWhenTheLastOfThemIsDone)
{
    EXPECT_TRUE(faults_.add("store full after 2 requests"));

    faults_.noteActivity();
    EXPECT_FALSE(isStoreFull());
    faults_.noteActivity();
    EXPECT_TRUE(isStoreFull());
    faults_.noteActivity();
    EXPECT_TRUE(isStoreFull());
}

TEST_F(FaultsTest, SecondFaultOfAKind_ReplacesTheFirst)
{
    EXPECT_TRUE(faults_.add("keys bounce 2"));
    EXPECT_TRUE(faults_.add("keys bounce 3 for 1s"));

    EXPECT_THAT(faults_.rows(), ElementsAre("active: keys bounce 3 for 1s"));
}

TEST_F(FaultsTest, WaitingFault_CanBeCalledOff)
{
    EXPECT_TRUE(faults_.add("store full at 3s"));
    EXPECT_TRUE(faults_.add("lamps stuck at 3s"));

    EXPECT_TRUE(faults_.end("store full"));
    sleepFor(4s);

    EXPECT_FALSE(isStoreFull());
    EXPECT_THAT(faults_.rows(), ElementsAre("active: lamps stuck at 3s"));
}

TEST_F(FaultsTest, EndWithoutName_EndsAllAndNeedsNone)
{
    EXPECT_TRUE(faults_.end(""));
    EXPECT_TRUE(faults_.add("store full"));
    EXPECT_TRUE(faults_.add("lamps stuck at 3s"));

    EXPECT_TRUE(faults_.end(""));

    EXPECT_THAT(faults_.rows(), IsEmpty());
}

TEST_F(FaultsTest, EndOfAFaultThatIsNotThere_IsRefused)
{
    EXPECT_EQ(faults_.end("store full").error().reason, "no fault \"store full\" is active or waiting");
    EXPECT_EQ(faults_.end("store ful").error().reason,
              "no fault \"store ful\" is active or waiting (did you mean store full?)");
}

TEST_F(FaultsTest, SlowStore_DelaysEachWrite)
{
    EXPECT_TRUE(faults_.add("store slow 0.2"));
    auto const start = SteadyClock::now();

    EXPECT_FALSE(isStoreFull());
    EXPECT_EQ(SteadyClock::now() - start, 200ms);
    EXPECT_TRUE(faults_.end("store slow"));
    EXPECT_FALSE(isStoreFull());
    EXPECT_EQ(SteadyClock::now() - start, 200ms);
}

TEST_F(FaultsTest, SlowApplications_HaveTheRate)
{
    EXPECT_TRUE(faults_.add("applications slow 300 for 1s"));

    EXPECT_EQ(surroundings_.readingRate, 300);
    sleepFor(1100ms);
    EXPECT_EQ(surroundings_.readingRate, 0);
}

TEST_F(FaultsTest, WrongFault_IsRefused)
{
    EXPECT_EQ(faults_.add("store slow x").error().reason, "\"x\" is not a number of seconds from 0 to 86400");
    EXPECT_THAT(faults_.rows(), IsEmpty());
}

class ConfiguredFaultsTest : public FaultsTest
{
protected:
    ConfiguredFaultsTest()
        : FaultsTest({{.what = "store full"}, {.what = "lamps stuck", .at = "3s"}})
    {}
};

TEST_F(ConfiguredFaultsTest, FaultsOfTheConfiguration_BeginWithTheTelephone)
{
    EXPECT_THAT(faults_.rows(), ElementsAre("active: store full", "waiting: lamps stuck at 3s"));
    EXPECT_TRUE(isStoreFull());
}

TEST_F(FaultsTest, WrongConfiguration_IsRefusedAndNothingBegins)
{
    Faults faults(surroundings_.targets, timers_);

    auto const started =
        faults.start(telephone_.services().history, {{.what = "store full"}, {.what = "lamps stuck", .at = "soon"}});

    EXPECT_EQ(started.error().reason, "fault.at: \"soon\" is not a number of seconds from 0 to 86400");
    EXPECT_THAT(faults.rows(), IsEmpty());
    EXPECT_FALSE(isStoreFull());
}

}  // namespace
}  // namespace telephone
