#include "telephone/fleet/FleetTable.h"

#include <gmock/gmock.h>

using namespace telephone;

namespace {

FleetRow rowInACall()
{
    FleetRow row{.number = 7, .condition = FleetCondition::kRunning, .process = 4242, .starts = 1};
    row.use = {2'700'000, std::chrono::milliseconds(310)};
    row.state = Json::parse(R"({"time":"2026-03-01T12:00:05.000Z","domain":"127.0.0.1:5060",
        "lines":[{"id":"1007","registration":"registered","state":"active"}],
        "keys":[{"function":"hold","lamp":{"mode":"off","colour":"none"}},
                {"function":"line","lamp":{"mode":"steady","colour":"green"}}],
        "calls":[{"id":1,"state":"idle","over":true,"party":{"address":"sip:9@127.0.0.1:5060","name":null}},
                 {"id":2,"state":"connected","over":false,
                  "party":{"address":"sip:1008@127.0.0.1:5060","name":null}}]})");
    return row;
}

FleetRow rowThatHasEnded()
{
    return {.number = 8, .condition = FleetCondition::kWaiting, .reason = "ended by signal 9 (Killed)", .starts = 2};
}

TEST(FleetTable, Rows_AreColumnsWithAHeadingAndTheSums)
{
    FleetRow unregistered = rowInACall();
    unregistered.number = 9;
    unregistered.state["lines"][0]["registration"] = "not registered";
    unregistered.state["calls"] = Json::array();

    EXPECT_THAT(
        fleetTable({rowInACall(), rowThatHasEnded(), unregistered}, {}),
        testing::ElementsAre("telephone  line      registration     memory    processor  starts  calls",
                             "7          1007      registered       2.7 MB    0.31 s     1       connected 1008",
                             "8                    ended by signal 9 (Killed); it is started again",
                             "9          1007      not registered   2.7 MB    0.31 s     1",
                             "3 telephones, 1 registered, 1 in a call, 5.4 MB of memory, 0.6 s of processor time"));
}

TEST(FleetTable, TelephoneThatIsSilent_IsSaid)
{
    FleetRow row = rowInACall();
    row.state = Json();

    EXPECT_EQ(fleetTable({row}, {})[1], "7                    does not answer  2.7 MB    0.31 s     1");
}

TEST(FleetTable, Json_HasTheLampOfTheLineAndTheCallsThatAreNotOver)
{
    EXPECT_EQ(lineOf(fleetJson({rowInACall()})),
              R"([{"number":7,"condition":"running","reason":null,"process":4242,"starts":1,"memory":2700000,)"
              R"("processor":0.31,"domain":"127.0.0.1:5060","time":"2026-03-01T12:00:05.000Z","line":"1007",)"
              R"("registration":"registered","state":"active","lamp":{"mode":"steady","colour":"green"},)"
              R"("calls":[{"id":2,"state":"connected","over":false,)"
              R"("party":{"address":"sip:1008@127.0.0.1:5060","name":null}}]}])");
    EXPECT_EQ(lineOf(fleetJson({rowThatHasEnded()})),
              R"json([{"number":8,"condition":"waiting","reason":"ended by signal 9 (Killed)","process":null,)json"
              R"("starts":2,)"
              R"("memory":0,"processor":0.0,"domain":null,"time":null,"line":null,"registration":null,"state":null,)"
              R"("lamp":null,"calls":null}])");
}

}  // namespace
