#include "telephone/fleet/Members.h"

#include <csignal>

#include <gmock/gmock.h>

#include "FleetDouble.h"

using namespace telephone;
using testing::ElementsAre;

namespace {

class MembersTest : public FleetDouble
{
protected:
    // Their numbers, or the reason of the refusal.
    std::vector<std::string> selected(std::string_view text)
    {
        auto const chosen = members_->select(text);
        if (!chosen) {
            return {chosen.error().reason};
        }
        std::vector<std::string> numbers;
        for (FleetTelephone const* const each : *chosen) {
            numbers.push_back(std::to_string(each->number()));
        }
        return numbers;
    }
};

TEST_F(MembersTest, Start_RunsAllInFoldersOfTheirOwn)
{
    make(3, kRuns);

    start();

    for (int number : {1, 2, 3}) {
        EXPECT_EQ(telephone(number).condition(), FleetCondition::kRunning);
        EXPECT_EQ(telephone(number).panel(), "http://127.0.0.1:1/panel");
    }
    EXPECT_EQ(contentOf(folder_.file("002/telephone.toml")), "# 2\n");
}

TEST_F(MembersTest, Start_OfOneThatEndsBeforeItRuns_IsRefusedWithItsReason)
{
    make(2, "echo first >&2; echo 'telephone: no such line' >&2; exit 3");

    auto const started = members_->start([](int) {});

    ASSERT_FALSE(started);
    EXPECT_THAT(started.error().reason, testing::MatchesRegex("telephone [12] ended with status 3: telephone: no such "
                                                              "line; its files are in .*/00[12]"));
}

TEST_F(MembersTest, Stop_DuringTheStart_EndsIt)
{
    make(2, "exec sleep 600");
    stop_.signal();

    EXPECT_EQ(members_->start([](int) {}), false);
}

TEST_F(MembersTest, TelephoneThatDies_IsReportedAndStartedAgain)
{
    make(2, kRuns);
    start();

    kill(telephone(2).process(), SIGKILL);
    waitForNotes(2);

    EXPECT_THAT(notes_, ElementsAre("telephone 2 ended by signal 9 (Killed); it is started again in 0.001 s",
                                    "telephone 2 runs again"));
    EXPECT_EQ(telephone(2).starts(), 2);
    EXPECT_EQ(telephone(1).starts(), 1);
    EXPECT_TRUE(members_->hasFailures());
}

TEST_F(MembersTest, TelephoneThatCannotRun_IsStartedAfterPausesThatGrow)
{
    make(1, "test -e ../broken && exit 1; " + std::string(kRuns));
    start();
    std::ofstream(folder_.file("broken")) << "yes\n";

    kill(telephone(1).process(), SIGKILL);
    waitForNotes(4);

    EXPECT_EQ(notes_[0], "telephone 1 ended by signal 9 (Killed); it is started again in 0.001 s");
    EXPECT_EQ(notes_[1], "telephone 1 ended with status 1; it is started again in 0.002 s");
    EXPECT_EQ(notes_[2], "telephone 1 ended with status 1; it is started again in 0.004 s");
    EXPECT_EQ(notes_[3], "telephone 1 ended with status 1; it is started again in 0.008 s");
}

TEST_F(MembersTest, TelephoneThatIsStopped_StaysSoUntilItIsStarted)
{
    make(1, kRuns);
    start();

    telephone(1).end(true);
    members_->wakeUp();
    waitForNotes(1);
    EXPECT_EQ(notes_[0], "telephone 1 is stopped");
    EXPECT_EQ(telephone(1).condition(), FleetCondition::kStopped);
    EXPECT_EQ(members_->wait(-1, SteadyClock::now() + std::chrono::milliseconds(50)), Members::Came::kDeadline);
    EXPECT_EQ(telephone(1).process(), 0);
    EXPECT_EQ(telephone(1).send("lines").error().reason, "telephone 1 is stopped; start it with start");

    telephone(1).startNow();
    waitForNotes(2);
    EXPECT_EQ(notes_[1], "telephone 1 runs again");
    EXPECT_FALSE(members_->hasFailures());
}

TEST_F(MembersTest, Destructor_EndsAll)
{
    make(3, kRuns);
    start();
    pid_t const process = telephone(3).process();

    members_.reset();

    EXPECT_EQ(kill(process, 0), -1);
}

TEST_F(MembersTest, Wait_EndsWithTheStop)
{
    make(1, kRuns);
    start();
    stop_.signal();

    EXPECT_EQ(members_->wait(-1, kNoDeadline), Members::Came::kStop);
}

TEST_F(MembersTest, Selection_IsNumbersRangesOrAll)
{
    make(5, kRuns);

    EXPECT_THAT(selected("all"), ElementsAre("1", "2", "3", "4", "5"));
    EXPECT_THAT(selected("3"), ElementsAre("3"));
    EXPECT_THAT(selected("2-4"), ElementsAre("2", "3", "4"));
    EXPECT_THAT(selected("1,4-5,2"), ElementsAre("1", "4", "5", "2"));
}

TEST_F(MembersTest, Selection_OfWhatIsNotThere_IsRefused)
{
    make(5, kRuns);

    EXPECT_THAT(selected("6"), ElementsAre("there is no telephone 6; the fleet has 1 to 5"));
    EXPECT_THAT(selected("0"), ElementsAre("there is no telephone 0; the fleet has 1 to 5"));
    EXPECT_THAT(selected("1-9"), ElementsAre("there is no telephone 9; the fleet has 1 to 5"));
    EXPECT_THAT(selected("4-2"), ElementsAre("4-2 runs backwards: write the smaller number first"));
    EXPECT_THAT(selected("every"), ElementsAre("\"every\" does not name telephones: write 7, 3-5, 1,4 or all"));
    EXPECT_THAT(selected("1,"), ElementsAre("\"\" does not name telephones: write 7, 3-5, 1,4 or all"));
}

}  // namespace
