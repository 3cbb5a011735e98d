#include "telephone/access/RequestShorthand.h"

#include <gtest/gtest.h>

using namespace telephone;

namespace {

std::string textOf(std::string const& line)
{
    return splitWords(line).and_then(requestText).value();
}

std::string refusalOfRequest(std::string const& line)
{
    auto const text = splitWords(line).and_then(requestText);
    return text ? "accepted: " + *text : text.error().reason;
}

}  // namespace

TEST(RequestShorthand, ShortForm_BecomesElementsInTheOrderWritten)
{
    EXPECT_EQ(textOf("HoldCall Line=4711 CallID=1"), "<Method>HoldCall</Method><Line>4711</Line><CallID>1</CallID>");
    EXPECT_EQ(textOf("HoldCall CallID=1 Line=4711"), "<Method>HoldCall</Method><CallID>1</CallID><Line>4711</Line>");
}

TEST(RequestShorthand, ShortForm_CapitalsOfNamesDoNotMatter)
{
    EXPECT_EQ(textOf("holdcall line=4711 callid=1"), "<Method>HoldCall</Method><Line>4711</Line><CallID>1</CallID>");
}

TEST(RequestShorthand, ShortForm_WithoutParameters_IsTheMethodAlone)
{
    EXPECT_EQ(textOf("GetDevices"), "<Method>GetDevices</Method>");
}

TEST(RequestShorthand, ShortForm_EmptyAndQuotedValues_AreKept)
{
    EXPECT_EQ(textOf("SystemStatus SystemStatus= SystemStatusInfo=\"a b\""),
              "<Method>SystemStatus</Method><SystemStatus></SystemStatus><SystemStatusInfo>a b</SystemStatusInfo>");
}

TEST(RequestShorthand, ShortForm_BodyFollowsTheElementsAsItStands)
{
    EXPECT_EQ(textOf("SendCSTARequest Body='<a>b</a>' Line=4711"),
              "<Method>SendCSTARequest</Method><Line>4711</Line><a>b</a>");
}

TEST(RequestShorthand, UnknownRequest_IsRefused)
{
    EXPECT_EQ(refusalOfRequest("HoldTheCall"), "no request HoldTheCall (did you mean HoldCall?)");
}

TEST(RequestShorthand, UnknownParameter_IsRefusedWithTheNearest)
{
    EXPECT_EQ(refusalOfRequest("HoldCall Lin=4711"),
              "HoldCall has no parameter Lin (did you mean Line?); it has Line, CallID, HoldCallReason, Manual");
    EXPECT_EQ(refusalOfRequest("GetDevices Line=4711"), "GetDevices has no parameter Line; it has none");
}

TEST(RequestShorthand, WordThatIsNoParameter_IsRefused)
{
    EXPECT_EQ(refusalOfRequest("HoldCall 4711"), "\"4711\" is not a parameter: write it as Name=value");
}

TEST(RequestShorthand, ValueWithItsOwnEnd_IsRefused)
{
    EXPECT_EQ(refusalOfRequest("HoldCall Line=a</Line>b"), "the value of Line must not contain </Line>");
}

TEST(RequestShorthand, IsRequestText_ElementsAndSignallingEvents)
{
    EXPECT_TRUE(isRequestText("<Method>GetDevices</Method>"));
    EXPECT_TRUE(isRequestText("SigEvent:abc"));
    EXPECT_TRUE(isRequestText("SigEvent"));
    EXPECT_FALSE(isRequestText("HoldCall"));
}

TEST(RequestShorthand, ElementValue_OfTheFirstElement)
{
    EXPECT_EQ(elementValue("<A>1</A><A>2</A>", "A"), "1");
    EXPECT_EQ(elementValue("<A></A>", "A"), "");
    EXPECT_EQ(elementValue("<A>1</A>", "B"), std::nullopt);
    EXPECT_EQ(elementValue("<A>1", "A"), std::nullopt);
}
