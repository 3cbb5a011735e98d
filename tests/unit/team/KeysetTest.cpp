#include "telephone/team/Keyset.h"

#include <gmock/gmock.h>

#include "TeamFixture.h"

namespace telephone {
namespace {

using testing::ElementsAre;

class KeysetTest : public TeamFixture
{};

TEST_F(KeysetTest, Instances_AreTheOnesThatLive)
{
    buildTeam();
    EXPECT_EQ(TeamServiceKeyset::Instance(), keyset_.get());
    EXPECT_EQ(TeamServiceFeatures::Instance(), features_.get());
    EXPECT_EQ(DirectedPickupHandler::Instance(), pickup_.get());
    EXPECT_EQ(FeatureToggle::Instance(), toggles_.get());
}

TEST_F(KeysetTest, Keyset_IsActiveOnATelephoneWithSeveralLines)
{
    buildTeam();
    EXPECT_TRUE(keyset_->isKeysetActive());
}

TEST_F(KeysetTest, Keyset_OfASingleLineTelephone_IsNotActive)
{
    configuration_.keyset = false;
    configuration_.lines.resize(1);
    configuration_.keys.clear();
    buildTeam();

    EXPECT_FALSE(keyset_->isKeysetActive());
    EXPECT_FALSE(keyset_->isSpoofedDummyLine("anyLine"));
    EXPECT_FALSE(keyset_->changeMultiUser("4711"));
}

TEST_F(KeysetTest, AnswerCall_AnswersTheCallRingingOnTheLine)
{
    buildTeam();
    offer(130, 1001);

    EXPECT_EQ(keyset_->answerCall("4713"), sfiSuccess);
    EXPECT_EQ(keyset_->answerCall("4713#2"), sfiSuccess);
    EXPECT_EQ(keyset_->answerCall("4713#1"), sfiFailure);
    EXPECT_EQ(keyset_->answerCall("4711"), sfiFailure);
    EXPECT_EQ(keyset_->answerCall("4799"), sfiFailure);
    EXPECT_THAT(calls_.takeAsked(), ElementsAre("answer 1001", "answer 1001"));
}

TEST_F(KeysetTest, RetrieveCall_RetrievesTheNamedCall_OrElseTheOneOnHold)
{
    buildTeam();
    changeCall(1, 5, sfiCallStateHeld);

    EXPECT_EQ(keyset_->retrieveCall("4711", 5), sfiSuccess);
    EXPECT_EQ(keyset_->retrieveCall("4711", 77), sfiSuccess);
    EXPECT_EQ(keyset_->retrieveCall("4712", 5), sfiFailure);
    EXPECT_EQ(keyset_->retrieveCall("4799", 5), sfiFailure);
    EXPECT_THAT(calls_.takeAsked(), ElementsAre("retrieve 5", "retrieve 5"));
}

TEST_F(KeysetTest, MakeCall_SelectsTheLine_AndUnreserveReleasesIt)
{
    buildTeam();
    keyset_->makeCall("4712");
    EXPECT_EQ(stateOf("4712"), 21);
    EXPECT_TRUE(keyset_->unreserveLine("4712"));
    EXPECT_EQ(stateOf("4712"), eLineStateIdle);
    EXPECT_FALSE(keyset_->unreserveLine("4799"));

    changeCall(2, 5, sfiCallStateConnected);
    keyset_->makeCall("4712");
    EXPECT_EQ(stateOf("4712"), eLineStateActive);
}

TEST_F(KeysetTest, ReserveNextAppearance_IsUsedByTheNextCall)
{
    buildTeam();
    changeCall(129, 5, sfiCallStateConnected);

    EXPECT_TRUE(keyset_->reserveNextSCA("4713"));
    EXPECT_EQ(stateOf("4713#2"), 24);
    EXPECT_EQ(lines_->getLine("4713")->getChildBCALineIdReservedForConsultationCall(), 130);
    EXPECT_EQ(table_->appearances().findFirstFreeVirtualLine(3), 130);
    EXPECT_EQ(table_->seizeForIncoming(3, 1001)->recordLine, 131);

    changeCall(130, 6, sfiCallStateDialling);
    EXPECT_EQ(stateOf("4713#2"), eLineStateDialling);
    EXPECT_EQ(lines_->getLine("4713")->getChildBCALineIdReservedForConsultationCall(), 0);
}

TEST_F(KeysetTest, ReserveNextAppearance_OfAFullLine_Fails)
{
    buildTeam();
    changeCall(1, 1, sfiCallStateConnected);
    for (int const line : {129, 130, 131}) {
        changeCall(line, line, sfiCallStateHeld);
    }

    EXPECT_FALSE(keyset_->reserveNextSCA("4711"));
    EXPECT_FALSE(keyset_->reserveNextSCA("4713"));
    EXPECT_FALSE(keyset_->reserveNextSCA("4799"));
}

TEST_F(KeysetTest, BridgedOutgoingCall_ReservesAndDials_OrReleasesTheLine)
{
    buildTeam();
    keyset_->initiateBCAOutgoingCall("4713", "103");
    EXPECT_THAT(calls_.takeAsked(), ElementsAre("make 4713#1 1001 103"));

    calls_.refuseAll();
    keyset_->initiateBCAOutgoingCall("4712", "103");
    EXPECT_EQ(stateOf("4712"), eLineStateIdle);
    keyset_->initiateBCAOutgoingCall("4799", "103");
    EXPECT_THAT(calls_.takeAsked(), ElementsAre("make 4712 1002 103"));
}

TEST_F(KeysetTest, AnyLine_StandsForTheFirstFreeLine)
{
    buildTeam();
    EXPECT_TRUE(keyset_->isSpoofedDummyLine("anyLine"));
    EXPECT_FALSE(keyset_->isSpoofedDummyLine("4711"));
    EXPECT_FALSE(keyset_->isSpoofedDummyLine(""));

    changeCall(1, 5, sfiCallStateConnected);
    EXPECT_TRUE(keyset_->dummyLine_reserve());
    EXPECT_EQ(stateOf("4712"), eLineStateSelected);
}

TEST_F(KeysetTest, IncomingCallPriority_RanksRingingLines_PrimaryFirst_IgnoredLast)
{
    buildTeam();
    EXPECT_EQ(keyset_->getIncomingCallPriority("4711"), 0);
    offer(129, 1001);
    offer(2, 1002);
    offer(1, 1003);
    EXPECT_EQ(keyset_->getIncomingCallPriority("4711"), 1);
    EXPECT_EQ(keyset_->getIncomingCallPriority("4712"), 2);
    EXPECT_EQ(keyset_->getIncomingCallPriority("4713"), 3);
    EXPECT_EQ(keyset_->getIncomingCallPriority("4799"), 0);

    keyset_->callIgnored("4711");
    EXPECT_EQ(keyset_->getIncomingCallPriority("4711"), 3);
    EXPECT_EQ(keyset_->getIncomingCallPriority("4712"), 1);
}

TEST_F(KeysetTest, MultiUser_IsThePrimaryLineUntilAnotherIsChosen)
{
    buildTeam();
    EXPECT_EQ(keyset_->getCurrentMultiUser(), "4711");
    EXPECT_TRUE(keyset_->changeMultiUser("4713#2"));
    EXPECT_EQ(keyset_->getCurrentMultiUser(), "4713");
    EXPECT_EQ(settings_->text("current-multi-user"), "4713");
    EXPECT_FALSE(keyset_->changeMultiUser("4799"));
    EXPECT_EQ(keyset_->getCurrentMultiUser(), "4713");
}

TEST_F(KeysetTest, ServiceInitiatedLine_StaysSelectedWhileInitiated)
{
    buildTeam();
    keyset_->setIsInServiceInitiatedState("4712", true);
    EXPECT_EQ(stateOf("4712"), eLineStateSelected);
    keyset_->setIsInServiceInitiatedState("4712", false);
    EXPECT_EQ(stateOf("4712"), eLineStateIdle);
    keyset_->setIsInServiceInitiatedState("4799", true);
}

TEST_F(KeysetTest, PreviewKey_StepsThroughTheCalls_AndIgnoreSilencesTheOneShown)
{
    buildTeam();
    offer(1, 1001);
    offer(2, 1002);
    keyset_->handleButtonPressedEvent(PhysDefs::keyFunctionPreview);
    EXPECT_EQ(keyset_->preview(), lines_->find("4711"));
    keyset_->handleButtonPressedEvent(PhysDefs::keyFunctionPreview);
    EXPECT_EQ(keyset_->preview(), lines_->find("4712"));
    keyset_->handleButtonPressedEvent(PhysDefs::keyFunctionIgnoreCall);
    EXPECT_TRUE(lines_->find("4712")->silenced());
    EXPECT_FALSE(lines_->find("4711")->silenced());
    keyset_->handleButtonPressedEvent(PhysDefs::keyFunctionPreview);
    EXPECT_EQ(keyset_->preview(), nullptr);

    keyset_->handleButtonPressedEvent(PhysDefs::keyFunctionPreview);
    EXPECT_EQ(keyset_->preview(), lines_->find("4711"));
    changeCall(1, 1001, sfiCallStateIdle);
    EXPECT_EQ(keyset_->preview(), nullptr);
    keyset_->terminatePreview();
    keyset_->handleButtonPressedEvent(PhysDefs::keyFunctionHold);
}

TEST_F(KeysetTest, IgnoreKey_WithoutAPreview_SilencesTheFirstRingingLine)
{
    buildTeam();
    keyset_->handleButtonPressedEvent(PhysDefs::keyFunctionIgnoreCall);
    offer(2, 1002);
    offer(1, 1001);

    keyset_->handleButtonPressedEvent(PhysDefs::keyFunctionIgnoreCall);

    EXPECT_TRUE(lines_->find("4711")->silenced());
    EXPECT_FALSE(lines_->find("4712")->silenced());
    keyset_->handleButtonPressedEvent(PhysDefs::keyFunctionIgnoreCall);
    EXPECT_TRUE(lines_->find("4712")->silenced());
}

TEST_F(KeysetTest, Preview_CanBeEnded)
{
    buildTeam();
    keyset_->handleButtonPressedEvent(PhysDefs::keyFunctionPreview);
    EXPECT_EQ(keyset_->preview(), nullptr);
    offer(1, 1001);
    offer(2, 1002);
    keyset_->handleButtonPressedEvent(PhysDefs::keyFunctionPreview);
    EXPECT_EQ(keyset_->preview(), lines_->find("4711"));

    keyset_->terminatePreview();

    EXPECT_EQ(keyset_->preview(), nullptr);
    keyset_->handleButtonPressedEvent(PhysDefs::keyFunctionPreview);
    EXPECT_EQ(keyset_->preview(), lines_->find("4711"));
    changeCall(2, 1002, sfiCallStateIdle);  // another line
    EXPECT_EQ(keyset_->preview(), lines_->find("4711"));
}

TEST_F(KeysetTest, RingingLines_AreInTheOrderOfTheOverview)
{
    configuration_.lines[0].overviewPosition = 3;
    configuration_.lines[0].primary = false;
    configuration_.lines[1].overviewPosition = 2;
    configuration_.lines[2].overviewPosition = 1;
    configuration_.lines[2].appearances = 0;
    configuration_.lines[1].primary = true;
    buildTeam();
    offer(1, 1001);
    offer(2, 1002);
    offer(3, 1003);

    EXPECT_EQ(keyset_->getIncomingCallPriority("4712"), 1);  // the primary line
    EXPECT_EQ(keyset_->getIncomingCallPriority("4713"), 2);
    EXPECT_EQ(keyset_->getIncomingCallPriority("4711"), 3);
}

TEST_F(KeysetTest, ChosenUser_WhoseLineIsGone_IsThePrimaryLineAgain)
{
    buildTeam();
    ASSERT_TRUE(settings_->set("current-multi-user", "4799"));

    EXPECT_EQ(keyset_->getCurrentMultiUser(), "4711");
}

}  // namespace
}  // namespace telephone
