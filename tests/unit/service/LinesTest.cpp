// The presentation of lines, the answers for a missing line, and operations that are only passed on.
#include "ServiceTest.h"

namespace {

class LinesTest : public ServiceTest
{
protected:
    void TearDown() override
    {
        EXPECT_THAT(log_.texts(), IsEmpty()) << "none of these operations logs";
        ServiceTest::TearDown();
    }

    void lineHasData()
    {
        EXPECT_CALL(lines_, getLine("4711")).WillRepeatedly(Return(&line_));
        EXPECT_CALL(line_, getLineData()).WillRepeatedly(Return(&data_));
    }

    void lineHasNoData()
    {
        EXPECT_CALL(lines_, getLine("4711")).WillRepeatedly(Return(&line_));
        EXPECT_CALL(line_, getLineData()).WillRepeatedly(Return(nullptr));
    }

    void lineIsMissing() { EXPECT_CALL(lines_, getLine("4711")).WillRepeatedly(Return(nullptr)); }
};

TEST_F(LinesTest, IsKeyset_WhenThereIsAKeysetType)
{
    EXPECT_CALL(lines_, getKeysetType()).WillOnce(Return("x")).WillOnce(Return(""));

    EXPECT_TRUE(service_->isKeyset());
    EXPECT_FALSE(service_->isKeyset());
}

TEST_F(LinesTest, ALine_IsPresentedByItsConfiguration)
{
    isKeyset();
    lineHasData();
    EXPECT_CALL(data_, getPrimary()).WillOnce(Return(31));
    EXPECT_CALL(data_, getShortDescription()).WillOnce(Return("Front desk"));
    EXPECT_CALL(data_, getRing()).WillOnce(Return(32));
    EXPECT_CALL(data_, getRingDelay()).WillOnce(Return(33));
    EXPECT_CALL(data_, getOverviewPosition()).WillOnce(Return(34));
    EXPECT_CALL(data_, getVisibleOnOverview()).WillOnce(Return(true)).WillOnce(Return(false));
    EXPECT_CALL(data_, getLineAudibleAlert()).WillOnce(Return(35));
    EXPECT_CALL(line_, getLastNotifyRemoteURI()).WillOnce(Return("sip:4712"));
    EXPECT_CALL(line_, getLineState()).WillOnce(Return(static_cast<ELineState>(24)));

    EXPECT_EQ(service_->getPrimary("4711"), 31);
    EXPECT_EQ(service_->getShortDescription("4711"), "Front desk");
    EXPECT_EQ(service_->getLineRing("4711"), 32);
    EXPECT_EQ(service_->getLineRingDelay("4711"), 33);
    EXPECT_EQ(service_->getOverviewPosition("4711"), 34);
    EXPECT_TRUE(service_->getVisibleOnOverview("4711"));
    EXPECT_FALSE(service_->getVisibleOnOverview("4711"));
    EXPECT_EQ(service_->getLineAudibleAlert("4711"), 35);
    EXPECT_EQ(service_->getRemoteURI("4711"), "sip:4712");
    EXPECT_EQ(service_->getState("4711"), 24);
}

TEST_F(LinesTest, AMissingLine_IsPresentedByDefaults)
{
    isKeyset();
    lineIsMissing();

    EXPECT_EQ(service_->getPrimary("4711"), 0);
    EXPECT_EQ(service_->getShortDescription("4711"), "");
    EXPECT_EQ(service_->getLineRing("4711"), 0);
    EXPECT_EQ(service_->getLineRingDelay("4711"), 0);
    EXPECT_EQ(service_->getOverviewPosition("4711"), 1);
    EXPECT_FALSE(service_->getVisibleOnOverview("4711"));
    EXPECT_EQ(service_->getLineAudibleAlert("4711"), -1);
    EXPECT_EQ(service_->getRemoteURI("4711"), "");
    EXPECT_EQ(service_->getState("4711"), 0);
    EXPECT_EQ(service_->getHotWarmLineDialInfo("4711"), "");
}

TEST_F(LinesTest, ALineWithoutConfiguration_IsPresentedAsAMissingOne)
{
    isKeyset();
    lineHasNoData();
    EXPECT_CALL(lines_, getURIforFPK(4)).WillOnce(Return("4711"));

    EXPECT_EQ(service_->getPrimary("4711"), 0);
    EXPECT_EQ(service_->getShortDescription("4711"), "");
    EXPECT_EQ(service_->getLineRing("4711"), 0);
    EXPECT_EQ(service_->getLineRingDelay("4711"), 0);
    EXPECT_EQ(service_->getOverviewPosition("4711"), 1);
    EXPECT_FALSE(service_->getVisibleOnOverview("4711"));
    EXPECT_EQ(service_->getLineAudibleAlert("4711"), -1);
    EXPECT_EQ(service_->getHotWarmLineDialInfo("4711"), "");
    EXPECT_EQ(service_->getURIforFPK(4), "");
}

TEST_F(LinesTest, GetPrimary_OnASingleLinePhone_IsOneForItsOwnNumberOnly)
{
    isSingleLinePhone();
    ON_CALL(configuration_, currentPhoneNumber()).WillByDefault(Return("4711"));

    EXPECT_EQ(service_->getPrimary("4711"), 1);
    EXPECT_EQ(service_->getPrimary("4712"), 0);
    EXPECT_EQ(service_->getPrimary("47"), 0);
    EXPECT_EQ(service_->getPrimary("47110"), 0);
    EXPECT_EQ(service_->getPrimary(""), 0);
}

TEST_F(LinesTest, GetPrimary_OfNoLineOnAPhoneWithoutNumber_IsZero)
{
    isSingleLinePhone();
    EXPECT_CALL(configuration_, currentPhoneNumber()).Times(0);

    EXPECT_EQ(service_->getPrimary(""), 0);
}

TEST_F(LinesTest, GetHotWarmLineDialInfo_IsThatOfAHotOrWarmLine)
{
    lineHasData();
    EXPECT_CALL(data_, getHotWarmType()).WillOnce(Return(1)).WillOnce(Return(2)).WillOnce(Return(0));
    EXPECT_CALL(data_, getHotWarmDigits()).WillRepeatedly(Return("112"));

    EXPECT_EQ(service_->getHotWarmLineDialInfo("4711"), "112");
    EXPECT_EQ(service_->getHotWarmLineDialInfo("4711"), "112");
    EXPECT_EQ(service_->getHotWarmLineDialInfo("4711"), "");
}

TEST_F(LinesTest, GetHotWarmLineDialInfo_WithoutDigits_IsEmpty)
{
    lineHasData();
    EXPECT_CALL(data_, getHotWarmType()).WillRepeatedly(Return(1));
    EXPECT_CALL(data_, getHotWarmDigits()).WillRepeatedly(Return(""));

    EXPECT_EQ(service_->getHotWarmLineDialInfo("4711"), "");
}

TEST_F(LinesTest, GetURIforFPK_IsThatOfTheKeysLine)
{
    EXPECT_CALL(lines_, getURIforFPK(4)).WillOnce(Return("4711"));
    lineHasData();
    EXPECT_CALL(data_, getURI()).WillOnce(Return("sip:4711@example.org"));

    EXPECT_EQ(service_->getURIforFPK(4), "sip:4711@example.org");
}

TEST_F(LinesTest, GetURIforFPK_OfAKeyWithoutLine_LooksForTheEmptyOne)
{
    EXPECT_CALL(lines_, getURIforFPK(5)).WillOnce(Return(""));
    EXPECT_CALL(lines_, getLine("")).WillOnce(Return(nullptr));

    EXPECT_EQ(service_->getURIforFPK(5), "");
}

TEST_F(LinesTest, QuestionsToTheLineManager_AreHandedOn)
{
    EXPECT_CALL(lines_, getFPKforUri("4711")).WillOnce(Return(9));
    EXPECT_CALL(lines_, lineConsideredAsPrivate("4711")).WillOnce(Return(true)).WillOnce(Return(false));

    EXPECT_EQ(service_->getFPKforUri("4711"), 9);
    EXPECT_TRUE(service_->lineConsideredAsPrivate("4711"));
    EXPECT_FALSE(service_->lineConsideredAsPrivate("4711"));
}

TEST_F(LinesTest, QuestionsToTheKeyset_AreHandedOn)
{
    EXPECT_CALL(keyset_, reserveNextSCA("4711")).WillOnce(Return(true)).WillOnce(Return(false));
    EXPECT_CALL(keyset_, getIncomingCallPriority("4711")).WillOnce(Return(6));
    EXPECT_CALL(keyset_, getImmediateRing()).WillOnce(Return(true)).WillOnce(Return(false));

    EXPECT_TRUE(service_->reserveNextSCA("4711"));
    EXPECT_FALSE(service_->reserveNextSCA("4711"));
    EXPECT_EQ(service_->getIncomingCallPriority("4711"), 6);
    EXPECT_TRUE(service_->getImmediateRing());
    EXPECT_FALSE(service_->getImmediateRing());
}

TEST_F(LinesTest, UnreserveLine_SucceedsWhateverTheKeysetSays)
{
    EXPECT_CALL(keyset_, unreserveLine("4711")).WillOnce(Return(false)).WillOnce(Return(true));

    EXPECT_TRUE(service_->unreserveLine("4711"));
    EXPECT_TRUE(service_->unreserveLine("4711"));
}

TEST_F(LinesTest, OrdersToTheKeyset_AreHandedOn)
{
    InSequence order;
    EXPECT_CALL(keyset_, setImmediateRing(true, Eq(""))).WillOnce(SetArgReferee<1>("discarded"));
    EXPECT_CALL(keyset_, setImmediateRing(false, Eq("")));
    EXPECT_CALL(keyset_, callIgnored("4711"));
    EXPECT_CALL(keyset_, callIsolation("4711", true));
    EXPECT_CALL(keyset_, callIsolation("4711", false));
    EXPECT_CALL(keyset_, terminatePreview());
    EXPECT_CALL(keyset_, initiateBCAOutgoingCall("4711", "4712"));
    EXPECT_CALL(keyset_, setIsInServiceInitiatedState("4711", true));
    EXPECT_CALL(keyset_, setIsInServiceInitiatedState("4711", false));

    service_->setImmediateRing(true);
    service_->setImmediateRing(false);
    service_->callIgnored("4711");
    service_->callIsolation("4711", true);
    service_->callIsolation("4711", false);
    service_->terminatePreview();
    service_->initiateBCAOutgoingCall("4711", "4712");
    service_->setIsInServiceInitiatedState("4711", true);
    service_->setIsInServiceInitiatedState("4711", false);
}

TEST_F(LinesTest, OrdersToTheTeamFeatures_AreHandedOn)
{
    std::string url = "http://127.0.0.1/push";
    std::string data = "data";
    InSequence order;
    EXPECT_CALL(features_, sendURLPushRequest(Ref(url), Ref(data)));
    EXPECT_CALL(features_, processInvokeDOAction(1, 2, true, "on"));
    EXPECT_CALL(features_, processInvokeDOAction(3, 4, false, "off"));
    EXPECT_CALL(features_, processInvokeDVAction(ZEBLocalFeaturesDefs::LF_NOTIFICATION_FAILED, 5, 6,
                                                 ZEBLocalFeaturesDefs::eActionToggle));
    EXPECT_CALL(features_, callbackDOFeatureCallID("call", 7));
    EXPECT_CALL(toggle_, ftToggleKeyPressed(8));

    service_->pushRequest(url, data);
    service_->processInvokeDOAction(1, 2, true, "on");
    service_->processInvokeDOAction(3, 4, false, "off");
    service_->processInvokeDVAction(ZEBLocalFeaturesDefs::LF_NOTIFICATION_FAILED, 5, 6,
                                    ZEBLocalFeaturesDefs::eActionToggle);
    service_->callbackDOFeatureCallID("call", 7);
    service_->ftToggleKeyPressed(8);
}

}  // namespace
