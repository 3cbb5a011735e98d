#include "telephone/faults/FaultOrder.h"

#include <optional>

#include <gtest/gtest.h>

#include "FaultSurroundings.h"
#include "telephone/time/VirtualTime.h"

namespace telephone {
namespace {

using namespace std::chrono_literals;

class FaultOrderTest : public testing::Test
{
protected:
    FaultOrder read(std::string const& text) { return FaultOrder::read(text, surroundings_.targets).value(); }
    std::string reasonOf(std::string const& text)
    {
        auto const order = FaultOrder::read(text, surroundings_.targets);
        return order ? "accepted" : order.error().reason;
    }
    std::string reasonOfConfigured(FaultConfiguration const& configured)
    {
        auto const order = FaultOrder::of(configured, surroundings_.targets);
        return order ? "accepted" : order.error().reason;
    }

    VirtualTime const time_{{}};
    FaultSurroundings surroundings_;
};

TEST_F(FaultOrderTest, Name_AloneBeginsNow)
{
    FaultOrder const order = read("Store Full");

    EXPECT_EQ(order.kind->name, "store full");
    EXPECT_EQ(order.text, "Store Full");
    EXPECT_FALSE(order.at);
    EXPECT_FALSE(order.on);
    EXPECT_EQ(order.afterRequests, 0);
    EXPECT_FALSE(order.lasts);
}

TEST_F(FaultOrderTest, MomentAndDuration_AreRead)
{
    FaultOrder const order = read("store slow 200ms at 3s for 1.5");

    EXPECT_EQ(order.kind->name, "store slow");
    EXPECT_EQ(order.at, 3000ms);
    EXPECT_EQ(order.lasts, 1500ms);
}

TEST_F(FaultOrderTest, Event_IsReadWithItsElements)
{
    FaultOrder const order = read("lamps stuck on CallStateChange CallState=remote ringing CallID=1 for 2");

    ASSERT_TRUE(order.on);
    EXPECT_EQ(order.on->method(), "CallStateChangeEvent");
    EXPECT_TRUE(order.on->matches("<Method>CallStateChangeEvent</Method><LineID>4711</LineID><CallID>1</CallID>"
                                  "<CallState>3</CallState>"));
    EXPECT_EQ(order.lasts, 2000ms);
}

TEST_F(FaultOrderTest, Requests_AreCounted)
{
    EXPECT_EQ(read("datagrams lost 2 all after 5 requests").afterRequests, 5);
    EXPECT_EQ(read("lamps stuck after 1 request").afterRequests, 1);
}

TEST_F(FaultOrderTest, WrongForms_AreRefusedWithTheReason)
{
    struct
    {
        char const* text;
        char const* reason;
    } const cases[] = {
        {"datagram lost 2", "no fault \"datagram lost\" (did you mean datagrams lost?); there are registrar away, "
                            "far-end silent, datagrams lost, datagrams doubled, datagrams late, datagrams overtaken, "
                            "rtp loss, rtp delay, store full, store slow, lamps stuck, keys bounce, applications slow"},
        {"datagrams lost", "COUNT is missing; write it as: datagrams lost COUNT [sip|rtp|all]"},
        {"datagrams lost 2 tcp", "\"tcp\" is not sip or rtp or all; write it as: datagrams lost COUNT [sip|rtp|all]"},
        {"datagrams lost 0", "\"0\" is not a number from 1 to 100000"},
        {"datagrams late 2", "by is missing; write it as: datagrams late COUNT by SECONDS [sip|rtp|all]"},
        {"datagrams late 2 by soon", "\"soon\" is not a number of seconds from 0 to 86400"},
        {"rtp loss 101", "\"101\" is not a number from 1 to 100"},
        {"rtp delay x", "\"x\" is not a number of seconds from 0 to 86400"},
        {"store slow", "SECONDS is missing; write it as: store slow SECONDS"},
        {"keys bounce 1", "\"1\" is not a number from 2 to 100"},
        {"applications slow 0", "\"0\" is not a number from 1 to 1000000000"},
        {"store full now", "\"now\" is not expected; write it as: store full"},
        {"store full at", "at: write a number of seconds"},
        {"store full at 3 s", "at: write a number of seconds"},
        {"store full at dawn", "at: \"dawn\" is not a number of seconds from 0 to 86400"},
        {"store full for", "for: write a number of seconds"},
        {"store full on", "on: the name of an event is missing"},
        {"store full on CallHeldEvent Colour=1", "on: CallHeldEvent has no Colour; it has LineID, CallID"},
        {"store full after 5", "after: write a number of requests: after 5 requests"},
        {"store full after five requests", "after: \"five\" is not a number from 1 to 1000000"},
        {"store full at 1 at 2", "\"at\" is given twice"},
        {"store full at 1 after 5 requests", "a fault begins at one moment: at, on or after"},
        {"registrar away", "this telephone runs without the built-in exchange"},
        {"far-end silent", "this telephone runs without the built-in exchange"},
    };
    for (auto const& each : cases) {
        EXPECT_EQ(reasonOf(each.text), each.reason) << each.text;
    }
}

TEST_F(FaultOrderTest, Configuration_IsReadAsTheCommand)
{
    FaultOrder const order =
        FaultOrder::of({.what = "datagrams lost 2", .at = "3s", .lasts = "10"}, surroundings_.targets).value();

    EXPECT_EQ(order.text, "datagrams lost 2 at 3s for 10");
    EXPECT_EQ(order.at, 3000ms);
    EXPECT_EQ(order.lasts, 10000ms);
    EXPECT_EQ(FaultOrder::of({.what = "lamps stuck", .after = 5}, surroundings_.targets).value().afterRequests, 5);
}

TEST_F(FaultOrderTest, WrongConfiguration_IsRefusedWithItsKey)
{
    EXPECT_EQ(reasonOfConfigured({.what = "keys bounce"}),
              "fault.what: COUNT is missing; write it as: keys bounce COUNT");
    EXPECT_EQ(reasonOfConfigured({.what = "store full at 3s"}),
              "fault.what: \"at\" is not expected; write it as: store full");
    EXPECT_EQ(reasonOfConfigured({.what = "store full", .at = "soon"}),
              "fault.at: \"soon\" is not a number of seconds from 0 to 86400");
    EXPECT_EQ(reasonOfConfigured({.what = "store full", .on = "CallHolding"}),
              "fault.on: no event CallHolding (did you mean CallHeldEvent?)");
    EXPECT_EQ(reasonOfConfigured({.what = "store full", .lasts = "-1"}),
              "fault.for: \"-1\" is not a number of seconds from 0 to 86400");
}

TEST(FaultOrderInRealTime, FaultOfTheNetwork_IsRefusedWithItsReason)
{
    FaultSurroundings surroundings;

    auto const order = FaultOrder::read("datagrams lost 2", surroundings.targets);

    ASSERT_FALSE(order);
    EXPECT_EQ(order.error().kind, RefusalKind::kNotSupported);
    EXPECT_EQ(order.error().reason, "datagrams lost needs the network of virtual time: start with --time virtual");
    EXPECT_TRUE(FaultOrder::read("store full", surroundings.targets));
}

}  // namespace
}  // namespace telephone
