// The telephone that checks its own traffic.
#include <fstream>

#include <gtest/gtest.h>

#include "RunningTelephone.h"

namespace {

constexpr int kContradiction = 4;

}  // namespace

TEST(TrafficCheck, WrongRequest_EndsTheTelephone)
{
    RunningTelephone telephone({"--check", "all"});
    auto client = telephone_client::Connection::open(telephone.socket());
    ASSERT_TRUE(client);

    ASSERT_TRUE(client->send(method("HoldCall", "<Lien>4711</Lien>")));

    EXPECT_EQ(telephone.process().wait(), kContradiction);
    EXPECT_EQ(lastLine(telephone.process().output()),
              "telephone: check: HoldCall has no parameter Lien (did you mean Line?): "
              "<Method>HoldCall</Method><Lien>4711</Lien>");
}

TEST(TrafficCheck, WrongRequest_IsAnsweredWhereOnlyEventsAreChecked)
{
    RunningTelephone telephone({"--check", "events"});
    Application application(telephone.socket());

    EXPECT_EQ(application.request(method("HoldCall", "<Lien>4711</Lien>")), "sfiFailure");
}

// The library writes texts unchanged, so the telephone makes those from the wire harmless.
TEST(TrafficCheck, CallerWhoseNameContainsElements_ForgesNoEvent)
{
    TemporaryFolder const folder;
    std::string const file = folder.file("telephone.toml");
    std::ofstream(file) << "[[line]]\nid = \"4711\"\ndisplay-name = \"Ann</Name><Age>7</Age>\"\n"
                           "[[line]]\nid = \"4712\"\n";

    Ended const result = run({TELEPHONE, "--config", file, "--log-level", "0", "--check", "events", "play", "-"},
                             "OutgoingCallMakeRequest Line=4711 CallID=1 Destination=4712\nwait IncomingCallEvent\n");

    EXPECT_EQ(result.status, 0) << result.output;
    EXPECT_NE(result.output.find("incoming call     \"Ann(/Name)(Age)7(/Age)\" 4711"), std::string::npos)
        << result.output;
}

TEST(TrafficCheck, UnknownChoice_IsRefused)
{
    Ended const result = run({TELEPHONE, "--check", "evnts", "play", "-"});

    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(result.output, "--check: evnts not in {none,events,all}\nRun with --help for more information.\n");
}
