// Operations on one line that depend on its state: hot and warm lines, calls held elsewhere, missed calls.
#include "ServiceTest.h"

namespace {

class LineStatusTest : public ServiceTest
{
protected:
    void SetUp() override { initialise(); }

    void lineInState(int state)
    {
        EXPECT_CALL(lines_, getLine("4711")).WillOnce(Return(&line_));
        EXPECT_CALL(line_, getLineState()).WillRepeatedly(Return(static_cast<ELineState>(state)));
    }

    void deviceIs(std::string const& device, std::string const& lineURI)
    {
        EXPECT_CALL(clientUtils_, splitMCADeviceIndex(device, Eq(""), Eq(0)))
            .WillOnce(DoAll(SetArgReferee<1>(lineURI), SetArgReferee<2>(2)));
    }

    void lineIs(int primary, int shared)
    {
        EXPECT_CALL(lines_, getLine("4711")).WillOnce(Return(&line_));
        EXPECT_CALL(line_, getLineData()).WillRepeatedly(Return(&data_));
        EXPECT_CALL(data_, getPrimary()).WillRepeatedly(Return(primary));
        EXPECT_CALL(data_, getSharedLineType()).WillRepeatedly(Return(shared));
    }
};

TEST_F(LineStatusTest, GetHotWarmLineStatus_OfASeizedLine_IsItsKind)
{
    for (int const kind : {0, 1, 2}) {
        lineInState(21);
        EXPECT_CALL(line_, getLineData()).WillRepeatedly(Return(&data_));
        EXPECT_CALL(data_, getHotWarmType()).WillOnce(Return(kind));

        EXPECT_EQ(service_->getHotWarmLineStatus("4711"), kind);
    }

    EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(LineStatusTest, GetHotWarmLineStatus_OfASeizedLineWithoutConfiguration_IsZero)
{
    lineInState(21);
    EXPECT_CALL(line_, getLineData()).WillRepeatedly(Return(nullptr));

    EXPECT_EQ(service_->getHotWarmLineStatus("4711"), 0);
}

TEST_F(LineStatusTest, GetHotWarmLineStatus_OfALineInAnyOtherState_IsFive)
{
    for (int const state : {0, 1, 20, 22, 24}) {
        lineInState(state);

        EXPECT_EQ(service_->getHotWarmLineStatus("4711"), 5);
    }
}

TEST_F(LineStatusTest, GetHotWarmLineStatus_OfNoLineOnAnActiveKeyset_IsZero)
{
    keysetIsActive(true);
    EXPECT_CALL(lines_, getLine("4799")).WillOnce(Return(nullptr));

    EXPECT_EQ(service_->getHotWarmLineStatus("4799"), 0);
}

TEST_F(LineStatusTest, GetHotWarmLineStatus_OfNoLineElsewhere_AsksCallControlForThePhone)
{
    keysetIsActive(false);
    EXPECT_CALL(lines_, getLine("4799")).WillRepeatedly(Return(nullptr));
    EXPECT_CALL(sfi_, GetHotWarmLineStatus(0))
        .WillOnce(Return(1))
        .WillOnce(Return(2))
        .WillOnce(Return(0))
        .WillOnce(Return(-1));

    EXPECT_EQ(service_->getHotWarmLineStatus("4799"), 5);
    EXPECT_EQ(service_->getHotWarmLineStatus("4799"), 5);
    EXPECT_EQ(service_->getHotWarmLineStatus("4799"), 0);
    EXPECT_EQ(service_->getHotWarmLineStatus("4799"), 0);
}

TEST_F(LineStatusTest, RetrieveRemotelyHeldCall_TakesBackWhatIsHeldElsewhere)
{
    for (int const state : {10, 12}) {
        lineInState(state);
        EXPECT_CALL(line_, retrieve()).WillOnce(Return(sfiFailureCallBackNoCallInfo));

        EXPECT_EQ(service_->retrieveRemotelyHeldCall("4711"), sfiFailureCallBackNoCallInfo);
    }

    EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(LineStatusTest, RetrieveRemotelyHeldCall_InAnyOtherState_DoesNothing)
{
    for (int const state : {0, 7, 9, 11, 13}) {
        lineInState(state);

        EXPECT_EQ(service_->retrieveRemotelyHeldCall("4711"), 0);
    }
}

TEST_F(LineStatusTest, RetrieveRemotelyHeldCall_OfNoLine_DoesNothing)
{
    EXPECT_CALL(lines_, getLine("4799")).WillOnce(Return(nullptr));

    EXPECT_EQ(service_->retrieveRemotelyHeldCall("4799"), 0);
}

TEST_F(LineStatusTest, SetMissedCallIndication_OnASingleLinePhone_DoesNothing)
{
    isSingleLinePhone();
    deviceIs("4711:2", "4711");

    service_->setMissedCallIndication("4711:2", true);
}

TEST_F(LineStatusTest, SetMissedCallIndication_OfASharedLine_IsSet)
{
    isKeyset();
    for (bool const indicated : {true, false}) {
        deviceIs("4711:2", "4711");
        lineIs(0, 1);
        EXPECT_CALL(line_, setMissedCallIndicated(indicated));

        service_->setMissedCallIndication("4711:2", indicated);
    }

    EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(LineStatusTest, SetMissedCallIndication_OfAnAppearanceLine_IsSet)
{
    isKeyset();
    deviceIs("4711:2", "4711");
    lineIs(0, 2);
    EXPECT_CALL(lines_, isMCALine("4711")).WillOnce(Return(true));
    EXPECT_CALL(line_, setMissedCallIndicated(true));

    service_->setMissedCallIndication("4711:2", true);
}

TEST_F(LineStatusTest, SetMissedCallIndication_OfAPlainLine_IsLeft)
{
    isKeyset();
    for (int const shared : {0, 2}) {
        deviceIs("4711:2", "4711");
        lineIs(0, shared);
        EXPECT_CALL(lines_, isMCALine("4711")).WillOnce(Return(false));

        service_->setMissedCallIndication("4711:2", true);
    }
}

TEST_F(LineStatusTest, SetMissedCallIndication_OfAPrimaryLine_IsLeft)
{
    isKeyset();
    deviceIs("4711:2", "4711");
    lineIs(1, 1);

    service_->setMissedCallIndication("4711:2", true);
}

TEST_F(LineStatusTest, SetMissedCallIndication_OfNoLineOrNoConfiguration_IsLeft)
{
    isKeyset();
    EXPECT_CALL(lines_, getLine("4799")).WillOnce(Return(nullptr));
    EXPECT_CALL(lines_, getLine("4711")).WillOnce(Return(&line_));
    EXPECT_CALL(line_, getLineData()).WillRepeatedly(Return(nullptr));

    service_->setMissedCallIndication("4799", true);
    service_->setMissedCallIndication("4711", true);
}

}  // namespace
