#include "telephone/testing/Coverage.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "telephone/base/Touched.h"

using namespace telephone;

namespace {

using Names = std::set<std::string>;

class CoverageTest : public testing::Test
{
protected:
    void say(MessageKind kind, std::string_view text) { coverage_.note({kind, text}); }
    Names touched(std::string const& kind) const { return coverage_.touched().at(kind); }
    Names untouched(std::string const& kind) const
    {
        return nlohmann::json::parse(coverage_.json()).at(kind).at("untouched").get<Names>();
    }

    Coverage coverage_;
};

}  // namespace

TEST_F(CoverageTest, Request_CountsWithTheValuesOfItsParameters)
{
    say(MessageKind::kRequest, "<Method>setLampMode</Method><lampId>Hold</lampId><lampMode>2</lampMode>");

    EXPECT_EQ(touched("requests"), Names{"setLampMode"});
    EXPECT_EQ(touched("values"), (Names{"Lamp hold lamp", "LampMode flashing"}));
}

TEST_F(CoverageTest, UnknownRequest_DoesNotCount)
{
    say(MessageKind::kRequest, "<Method>holdcall</Method><lampMode>2</lampMode>");
    say(MessageKind::kAnswer, "sfiFailure");

    EXPECT_EQ(touched("requests"), Names{});
    EXPECT_EQ(touched("values"), Names{});
}

TEST_F(CoverageTest, ValueThatDoesNotExist_DoesNotCount)
{
    say(MessageKind::kRequest, "<Method>setLampMode</Method><lampId>Mute</lampId><lampMode>99</lampMode>");
    say(MessageKind::kRequest, "<Method>setLampMode</Method><lampMode>4294967298</lampMode>");
    say(MessageKind::kRequest, "<Method>setLampMode</Method><lampMode>two</lampMode>");

    EXPECT_EQ(touched("values"), Names{});
}

TEST_F(CoverageTest, Answer_CountsWithItsResultAndValue)
{
    say(MessageKind::kRequest, "<Method>GetServiceState</Method>");
    say(MessageKind::kAnswer, "sfiSuccess,sfiServiceInService");

    EXPECT_EQ(touched("values"), (Names{"Result success", "ServiceState in service"}));
}

TEST_F(CoverageTest, AnswerOfElements_CountsWithTheirValues)
{
    say(MessageKind::kRequest, "<Method>GetMessageWaitingIndicator</Method>");
    say(MessageKind::kAnswer, "<Type>1</Type><newMsgs>0</newMsgs><return_type>1</return_type>");

    EXPECT_EQ(touched("values"), (Names{"MWIMessageReturnType voice mail", "MWIServiceType voice"}));
}

TEST_F(CoverageTest, Event_CountsWithItsValues)
{
    say(MessageKind::kEvent, "<Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>1</CallID>");
    say(MessageKind::kEvent, "<Method>LampModeEvent</Method>");

    EXPECT_EQ(touched("events"), Names{"CallHeldEvent"});
}

TEST_F(CoverageTest, WhatIsNotAMessageOfTheProtocol_DoesNotCount)
{
    for (auto const kind : {MessageKind::kError, MessageKind::kResult, MessageKind::kReason}) {
        say(kind, "<Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>1</CallID>");
    }

    EXPECT_EQ(touched("events"), Names{});
    EXPECT_EQ(touched("requests"), Names{});
}

TEST_F(CoverageTest, PlacesInTheTelephone_CountUnlessTheTablesDoNotHaveThem)
{
    keepTouched();
    touch(Touched::kKey, "hold");
    touch(Touched::kKey, "no such function");
    touch(Touched::kLamp, "line flashing");
    touch(Touched::kReason, "HoldCall: unknown call");
    touch(PhoneTimer::kNoReply);

    EXPECT_EQ(touched("keys"), Names{"hold"});
    EXPECT_EQ(touched("lamps"), Names{"line flashing"});
    EXPECT_EQ(touched("reasons"), Names{"HoldCall: unknown call"});
    EXPECT_EQ(touched("timers"), Names{"nobody answers a forwarded line"});
}

TEST_F(CoverageTest, OtherTelephones_Add)
{
    say(MessageKind::kRequest, "<Method>HoldCall</Method>");

    coverage_.add({{"requests", {"Consult"}}, {"events", {"CallHeldEvent"}}});

    EXPECT_EQ(touched("requests"), (Names{"Consult", "HoldCall"}));
    EXPECT_EQ(touched("events"), Names{"CallHeldEvent"});
}

TEST_F(CoverageTest, WhatThereIs_ComesFromTheTables)
{
    EXPECT_EQ(untouched("requests").size(), 43U);
    EXPECT_TRUE(untouched("requests").contains("OutgoingCallMakeRequest"));
    EXPECT_TRUE(untouched("events").contains("CallStateChangeEvent"));
    EXPECT_TRUE(untouched("values").contains("CallState remote ringing"));
    EXPECT_EQ(untouched("keys").size() + touched("keys").size(), 14U);
    EXPECT_EQ(untouched("timers").size() + touched("timers").size(), 19U);
    EXPECT_TRUE(untouched("reasons").contains("RefuseCall: out of range"));
}

TEST_F(CoverageTest, Json_HasBothSidesOfEachKind)
{
    say(MessageKind::kRequest, "<Method>HoldCall</Method>");

    auto const document = nlohmann::json::parse(coverage_.json());

    EXPECT_EQ(document.size(), 7U);
    EXPECT_EQ(document["requests"]["touched"], nlohmann::json::array({"HoldCall"}));
    EXPECT_FALSE(untouched("requests").contains("HoldCall"));
}

TEST_F(CoverageTest, Table_CountsAndNamesTheRestWithinItsWidth)
{
    Names all = untouched("requests");
    all.erase("AcceptCall");
    all.erase("ActivateCallbackBusy");
    all.erase("setLampMode");
    coverage_.add({{"requests", all}});

    std::string const table = coverage_.table(44);

    EXPECT_EQ(table.substr(0, table.find("events")), "requests   40 of  43; not touched:\n"
                                                     "    AcceptCall, ActivateCallbackBusy,\n"
                                                     "    setLampMode\n");
}

TEST_F(CoverageTest, TableOfAKindThatIsComplete_NamesNothing)
{
    coverage_.add({{"requests", untouched("requests")}});

    std::string const table = coverage_.table(80);

    EXPECT_EQ(table.substr(0, table.find("events")), "requests   43 of  43\n");
}
