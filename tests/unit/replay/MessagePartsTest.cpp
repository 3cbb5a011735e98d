#include "telephone/replay/MessageParts.h"

#include <gtest/gtest.h>

#include "CommunicationsServiceEvents.h"
#include "CommunicationsServiceRequests.h"
#include "RecordingText.h"
#include "telephone/protocol/Phrases.h"

using namespace telephone;

TEST(MessageParts, Event_HasItsElementsAndItsCall)
{
    MessageParts const parts = eventParts(retrieved("1001"));

    EXPECT_EQ(parts.method, "CallRetrievedEvent");
    EXPECT_EQ(parts.call(), "1001");
    EXPECT_EQ(parts.value("URI"), "sip:100@127.0.0.1:5060");
    EXPECT_EQ(parts.value("Reason"), "");
}

TEST(MessageParts, CallZero_IsNoCall)
{
    EXPECT_EQ(eventParts("<Method>RegistrationStateChangeEvent</Method><LineID>4711</LineID><CallID>0</CallID>"
                         "<Registered>1</Registered><RegistrationResult>0</RegistrationResult>")
                  .call(),
              "");
}

TEST(MessageParts, NamesWithTags_StayOneValue)
{
    EXPECT_EQ(eventParts("<Method>IncomingPickupCallEvent</Method><LineID>4711</LineID><CallID>2</CallID>"
                         "<URI></URI><Name>a</Name><CallID>9</CallID></Name>")
                  .value("Name"),
              "a</Name><CallID>9</CallID>");
}

TEST(MessageParts, EveryKindOfCallParameter_IsACall)
{
    MessageParts const parts = requestParts(
        "<Method>AttendedTransfer</Method><Line>4711</Line><activeCall>2</activeCall><heldCall>1001</heldCall>");

    ASSERT_EQ(parts.parts.size(), 3U);
    EXPECT_FALSE(parts.parts[0].isCall);
    EXPECT_TRUE(parts.parts[1].isCall);
    EXPECT_TRUE(parts.parts[2].isCall);
}

TEST(MessageParts, BodyOfARequest_IsOnePart)
{
    MessageParts const parts =
        requestParts("<Method>SendCSTARequest</Method><Line>4711</Line><?xml?><CallID>1</CallID>");

    ASSERT_EQ(parts.parts.size(), 2U);
    EXPECT_EQ(parts.parts[1].tag, "");
    EXPECT_EQ(parts.parts[1].value, "<?xml?><CallID>1</CallID>");
    EXPECT_FALSE(parts.parts[1].isCall);
}

TEST(MessageParts, EveryRequestAndEvent_IsTheSameTextAgain)
{
    for (RequestDescription const& each : kRequestDescriptions) {
        EXPECT_EQ(textOf(requestParts(sampleOf(each))), sampleOf(each));
    }
    for (EventDescription const& each : kEventDescriptions) {
        EXPECT_EQ(textOf(eventParts(formOf(each))), formOf(each));
    }
    for (char const* const text : {"", "SigEvent: 7", "<Method>", "<Method></Method><Line>4711</Line>",
                                   "<Method>HoldCall</Method><Line>4711", "x<a>"}) {
        EXPECT_EQ(textOf(requestParts(text)), text);
        EXPECT_EQ(textOf(eventParts(text)), text);
    }
}
