#include "telephone/access/EventPattern.h"

#include <gtest/gtest.h>

using namespace telephone;

namespace {

EventPattern pattern(std::string const& text)
{
    return EventPattern::parse(splitWords(text).value(), 0).value();
}

std::string refusalOfPattern(std::string const& text)
{
    auto const parsed = EventPattern::parse(splitWords(text).value(), 0);
    return parsed ? "accepted" : parsed.error().reason;
}

constexpr char const* kHeld = "<Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>1</CallID>";
constexpr char const* kConnected =
    "<Method>CallStateChangeEvent</Method><LineID>4711</LineID><CallID>1</CallID><CallState>6</CallState>";
constexpr char const* kRegistered = "<Method>RegistrationStateChangeEvent</Method><LineID>4711</LineID>"
                                    "<CallID>0</CallID><Registered>1</Registered>";

}  // namespace

TEST(EventPattern, Name_MayBeMethodOperationOrEitherInOtherCapitals)
{
    for (char const* const name : {"CallHeldEvent", "callHeld", "CALLHELDEVENT", "CallHeld"}) {
        EXPECT_TRUE(pattern(name).matches(kHeld)) << name;
    }
    EXPECT_FALSE(pattern("CallRetrievedEvent").matches(kHeld));
}

TEST(EventPattern, Values_MustAllBeEqual)
{
    EXPECT_TRUE(pattern("CallHeldEvent LineID=4711 CallID=1").matches(kHeld));
    EXPECT_FALSE(pattern("CallHeldEvent LineID=4711 CallID=2").matches(kHeld));
    EXPECT_FALSE(pattern("CallHeldEvent LineID=471").matches(kHeld));
}

TEST(EventPattern, CallState_MayBeWrittenByName)
{
    for (char const* const value : {"6", "connected", "Connected", "sfiCallStateConnected"}) {
        EXPECT_TRUE(pattern("CallStateChangeEvent CallState=" + std::string(value)).matches(kConnected)) << value;
    }
    EXPECT_FALSE(pattern("CallStateChangeEvent CallState=held").matches(kConnected));
}

TEST(EventPattern, NameOfSeveralWords_MayBeQuotedOrRunTogether)
{
    constexpr char const* kRinging =
        "<Method>CallStateChangeEvent</Method><LineID>4711</LineID><CallID>1</CallID><CallState>3</CallState>";
    for (char const* const value : {"\"remote ringing\"", "remoteRinging", "remote-ringing", "3"}) {
        EXPECT_TRUE(pattern("CallStateChangeEvent CallState=" + std::string(value)).matches(kRinging)) << value;
    }
}

TEST(EventPattern, Name_MeansTheValueOfTheEventsOwnEnumeration)
{
    EXPECT_TRUE(pattern("CallForwardedEvent Reason=busy")
                    .matches("<Method>CallForwardedEvent</Method>"
                             "<Reason>2</Reason>"));
    EXPECT_TRUE(pattern("CallStateChangeEvent Reason=busy")
                    .matches("<Method>CallStateChangeEvent</Method>"
                             "<Reason>1</Reason>"));
    EXPECT_TRUE(pattern("AgentStateEvent agentState=\"logged on\"")
                    .matches("<Method>AgentStateEvent</Method><agentState>loggedOn</agentState>"));
}

TEST(EventPattern, NumberWithoutName_IsTakenAsItStands)
{
    EXPECT_TRUE(pattern("CallStateChangeEvent CallState=15")
                    .matches("<Method>CallStateChangeEvent</Method>"
                             "<CallState>15</CallState>"));
    EXPECT_TRUE(pattern("FeatureFailedEvent Feature=77")
                    .matches("<Method>FeatureFailedEvent</Method>"
                             "<Feature>77</Feature>"));
}

TEST(EventPattern, UnknownValue_IsRefusedWithTheNearestName)
{
    EXPECT_EQ(refusalOfPattern("CallStateChangeEvent CallState=remoteRining"),
              "\"remoteRining\" is not a value of CallState (did you mean remote ringing?)");
    EXPECT_EQ(refusalOfPattern("CallForwardedEvent Reason=deflectd"),
              "\"deflectd\" is not a value of ForwardReason (did you mean deflected?)");
    EXPECT_EQ(refusalOfPattern("AgentStateEvent agentState=readi"),
              "\"readi\" is not a value of AgentState (did you mean ready?)");
}

TEST(EventPattern, Flag_MayBeWrittenAsWord)
{
    EXPECT_TRUE(pattern("RegistrationStateChangeEvent Registered=true").matches(kRegistered));
    EXPECT_FALSE(pattern("RegistrationStateChangeEvent Registered=false").matches(kRegistered));
}

TEST(EventPattern, Line_NamesTheLineOfAnyEvent)
{
    EXPECT_TRUE(pattern("CallHeldEvent Line=4711").matches(kHeld));
    EXPECT_TRUE(pattern("impactLevelChanged Line=4711 CallID=2")
                    .matches("<Method>impactLevelChanged</Method><lineURI>4711</lineURI><callId>2</callId>"));
}

TEST(EventPattern, UnknownNames_AreRefusedWithWhatThereIs)
{
    EXPECT_EQ(refusalOfPattern("CallHoldEvent"), "no event CallHoldEvent (did you mean CallHeldEvent?)");
    EXPECT_EQ(refusalOfPattern("CallHeldEvent State=1"), "CallHeldEvent has no State; it has LineID, CallID");
    EXPECT_EQ(refusalOfPattern("CallHeldEvent 1"), "\"1\" is not understood: write Tag=value, or within SECONDS");
    EXPECT_EQ(refusalOfPattern(""), "the name of an event is missing");
    EXPECT_EQ(refusalOfPattern("csCommunicationsServiceEvent").substr(0, 8), "no event");
}
