#include "telephone/replay/IdMap.h"

#include <gtest/gtest.h>

#include "RecordingText.h"

using namespace telephone;

namespace {

std::string tags(std::vector<PartDifference> const& differences)
{
    std::string text;
    for (PartDifference const& each : differences) {
        text += each.tag + " " + each.recorded + "|" + each.present + ";";
    }
    return text;
}

}  // namespace

TEST(IdMap, UnknownIds_MayCorrespond)
{
    IdMap const ids("", "");

    EXPECT_EQ(tags(ids.differences(eventParts(held("1001")), eventParts(held("1003")))), "");
    EXPECT_EQ(tags(ids.differences(eventParts(held("1001")), eventParts(held("1003", "4712")))), "LineID 4711|4712;");
}

TEST(IdMap, KnownId_AlwaysCorrespondsToTheSame)
{
    IdMap ids("", "");
    ids.bind(eventParts(held("1001")), eventParts(held("1003")));

    EXPECT_EQ(ids.presentCall("1001"), "1003");
    EXPECT_TRUE(ids.isKnown("1003"));
    EXPECT_EQ(tags(ids.differences(eventParts(held("1001")), eventParts(held("1003")))), "");
    EXPECT_EQ(tags(ids.differences(eventParts(held("1001")), eventParts(held("1004")))), "CallID 1003|1004;");
    EXPECT_EQ(tags(ids.differences(eventParts(held("1002")), eventParts(held("1003")))), "CallID 1002|1003;");
    EXPECT_EQ(textOf(ids.presented(eventParts(held("1001")))), held("1003"));
    EXPECT_EQ(textOf(ids.presented(eventParts(held("1002")))), held("1002"));
}

TEST(IdMap, SecondBinding_ChangesNothing)
{
    IdMap ids("", "");
    ids.bind(eventParts(held("1001")), eventParts(held("1003")));
    ids.bind(eventParts(held("1001")), eventParts(held("1004")));
    ids.bind(eventParts(held("1002")), eventParts(held("1003")));

    EXPECT_EQ(ids.presentCall("1001"), "1003");
    EXPECT_EQ(ids.presentCall("1002"), std::nullopt);
    EXPECT_FALSE(ids.isKnown("1004"));
}

TEST(IdMap, NoCall_DoesNotCorrespondToACall)
{
    IdMap const ids("", "");

    EXPECT_EQ(tags(ids.differences(eventParts(held("0")), eventParts(held("7")))), "CallID 0|7;");
}

TEST(IdMap, OwnDomain_IsThePresentOne)
{
    IdMap const ids("127.0.0.1:5060", "127.0.0.1:40001");

    EXPECT_EQ(tags(ids.differences(eventParts(retrieved("1")), eventParts(retrieved("1", "sip:100@127.0.0.1:40001")))),
              "");
    EXPECT_EQ(tags(ids.differences(eventParts(retrieved("1")), eventParts(retrieved("1")))),
              "URI sip:100@127.0.0.1:40001|sip:100@127.0.0.1:5060;");
    EXPECT_EQ(ids.presented("call 4711 from sip:5@127.0.0.1:5060"), "call 4711 from sip:5@127.0.0.1:40001");
}

TEST(IdMap, OrderOfParameters_IsNoDifference)
{
    IdMap const ids("", "");

    EXPECT_EQ(tags(ids.differences(requestParts(holdCall("1")),
                                   requestParts("<Method>HoldCall</Method><CallID>1</CallID><Line>4711</Line>"))),
              "");
}

TEST(IdMap, MissingAndSurplusElements_AreDifferences)
{
    IdMap const ids("", "");

    EXPECT_EQ(tags(ids.differences(requestParts(holdCall("1")),
                                   requestParts("<Method>HoldCall</Method><Line>4711</Line><Manual>1</Manual>"))),
              "CallID 1|;Manual |1;");
    EXPECT_EQ(tags(ids.differences(eventParts(held("1")), requestParts(holdCall("1")))),
              "Method CallHeldEvent|HoldCall;LineID 4711|;Line |4711;");
}
