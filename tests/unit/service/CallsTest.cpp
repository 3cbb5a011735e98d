// Every call operation: its record, its lock, its call with all arguments, its result and its log line.
#include "CallsTest.h"

void CallsTest::SetUp()
{
    initialise();
    isKeyset();
    EXPECT_CALL(lines_, isMCALine("4711")).WillRepeatedly(Return(true));
    EXPECT_CALL(lines_, getLineInState(eLineStateSelected, "4711")).WillRepeatedly(Return(&line_));
    EXPECT_CALL(line_, getLineID()).WillRepeatedly(Return(17));
    EXPECT_CALL(line_, getLineData()).WillRepeatedly(Return(&data_));
    EXPECT_CALL(data_, getPrimary()).WillRepeatedly(Return(4));
    EXPECT_CALL(sfi_, GetMCAMapper()).WillRepeatedly(Return(&mapper_));
    EXPECT_CALL(mapper_, findVirtualLineforCallID(_, _, _)).WillRepeatedly(Return(false));
}

void CallsTest::expectRecordBuilt(int callID)
{
    EXPECT_CALL(mapper_, assignCallToLine(17, callID, Eq(0))).WillOnce(SetArgReferee<2>(2));
}

void CallsTest::expectLocked()
{
    EXPECT_CALL(sfi_, Lock());
}

void CallsTest::expectUnlocked()
{
    EXPECT_CALL(sfi_, Unlock());
}

void CallsTest::expectNumberAsked(std::string const& number, std::string const& answer)
{
    EXPECT_CALL(digits_, queryNumberFlag(number, Eq("false"))).WillOnce(SetArgReferee<1>(answer));
}

std::vector<std::string> CallsTest::logOf(std::string const& entry, int callID)
{
    return {entry, "5 generateCallInfoForLine - found MCA line in selected state: callID(" + std::to_string(callID) +
                       "), lineID(17), appearanceIndex(2)"};
}

void CallsTest::withoutDialPlan()
{
    EXPECT_CALL(semaphores_, created(_, _, _)).Times(AnyNumber());
    service_ = std::make_unique<CommunicationsService>();
}

namespace {

using testing::ElementsAreArray;

constexpr auto kAnyResult = sfiFailureCallBackNoCallInfo;

TEST_F(CallsTest, AcceptCall_LetsTheCallRing)
{
    InSequence order;
    expectRecordBuilt(7);
    expectLocked();
    EXPECT_CALL(sfi_, CallAccept(Pointee(IsRecord(17, 4, 7, 2)))).WillOnce(Return(kAnyResult));
    expectUnlocked();

    EXPECT_EQ(service_->acceptCall("4711", 7, false), kAnyResult);

    EXPECT_THAT(log_.texts(), ElementsAreArray(logOf("5 acceptCall (callID = 7)", 7)));
}

TEST_F(CallsTest, AcceptCall_OnTheKeysetOnly_TellsAnActiveKeysetAndNobodyElse)
{
    keysetIsActive(true);
    EXPECT_CALL(keyset_, callStateChanged("4711", static_cast<sfiCallState>(17), 7, 0));

    EXPECT_EQ(service_->acceptCall("4711", 7, true), 5);

    EXPECT_THAT(log_.texts(), ElementsAre("5 acceptCall (callID = 7)"));
}

TEST_F(CallsTest, AcceptCall_OnAnInactiveKeysetOnly_SucceedsAndDoesNothing)
{
    keysetIsActive(false);

    EXPECT_EQ(service_->acceptCall("4711", 7, true), 5);

    EXPECT_THAT(log_.texts(), ElementsAre("5 acceptCall (callID = 7)"));
}

TEST_F(CallsTest, AnswerCall_WithoutActiveKeyset_AnswersInCallControl)
{
    keysetIsActive(false);
    InSequence order;
    expectRecordBuilt(7);
    expectLocked();
    EXPECT_CALL(sfi_, CallAnswer(Pointee(IsRecord(17, 4, 7, 2)))).WillOnce(Return(sfiSuccess));
    expectUnlocked();

    EXPECT_EQ(service_->answerCall("4711", 7), 5);

    EXPECT_THAT(log_.texts(), ElementsAreArray(logOf("5 answerCall (callID = 7)", 7)));
}

TEST_F(CallsTest, AnswerCall_ThatCallControlRefuses_IsLoggedUnderTheLock)
{
    keysetIsActive(false);
    listenToLog();
    InSequence order;
    EXPECT_CALL(logListener_, written(5, "answerCall (callID = 7)"));
    expectRecordBuilt(7);
    EXPECT_CALL(logListener_, written(5, _));
    expectLocked();
    EXPECT_CALL(sfi_, CallAnswer(_)).WillOnce(Return(sfiFailureCallBackToMany));
    EXPECT_CALL(logListener_, written(2, "Sfi->CallAnswer() for line 4711 failed with code 3"));
    expectUnlocked();

    EXPECT_EQ(service_->answerCall("4711", 7), 3);
}

TEST_F(CallsTest, AnswerCall_OnAnActiveKeyset_NeverAsksCallControl)
{
    keysetIsActive(true);
    InSequence order;
    expectRecordBuilt(7);
    expectLocked();
    EXPECT_CALL(keyset_, answerCall("4711")).WillOnce(Return(sfiSuccess));
    expectUnlocked();

    EXPECT_EQ(service_->answerCall("4711", 7), 5);

    EXPECT_THAT(log_.texts(), ElementsAreArray(logOf("5 answerCall (callID = 7)", 7)));
}

TEST_F(CallsTest, AnswerCall_ThatTheKeysetRefuses_IsLoggedUnderTheLock)
{
    keysetIsActive(true);
    listenToLog();
    InSequence order;
    EXPECT_CALL(logListener_, written(5, "answerCall (callID = 7)"));
    expectRecordBuilt(7);
    EXPECT_CALL(logListener_, written(5, _));
    expectLocked();
    EXPECT_CALL(keyset_, answerCall("4711")).WillOnce(Return(sfiFailure));
    EXPECT_CALL(logListener_, written(2, "TeamServiceKeyset.answerCall(4711) failed with code 0"));
    expectUnlocked();

    EXPECT_EQ(service_->answerCall("4711", 7), 0);
}

TEST_F(CallsTest, DeflectCall_AsksTheDialPlanAndDropsTheAnswer)
{
    InSequence order;
    expectNumberAsked("4712", "true");
    expectRecordBuilt(7);
    expectLocked();
    EXPECT_CALL(sfi_, CallFeature(Pointee(IsRecord(17, 4, 7, 2)), static_cast<sfiFeature>(1), StrEq("4712"), 1))
        .WillOnce(Return(kAnyResult));
    expectUnlocked();

    EXPECT_EQ(service_->deflectCall("4711", 7, "4712"), kAnyResult);

    EXPECT_THAT(log_.texts(), ElementsAreArray(logOf("5 deflectCall (callID = 7, Destination = 4712)", 7)));
}

TEST_F(CallsTest, HoldCall_TellsFirstWhetherItWasByHand)
{
    for (bool const manual : {true, false}) {
        InSequence order;
        expectRecordBuilt(7);
        expectLocked();
        EXPECT_CALL(sfi_, SetManualHoldIndication(Pointee(IsRecord(17, 4, 7, 2)), manual));
        EXPECT_CALL(sfi_, CallFeature(Pointee(IsRecord(17, 4, 7, 2)), static_cast<sfiFeature>(6), StrEq(""), 1))
            .WillOnce(Return(kAnyResult));
        expectUnlocked();

        EXPECT_EQ(service_->holdCall("4711", 7, static_cast<sfiFeature>(6), manual), kAnyResult);
    }
    EXPECT_EQ(log_.texts().front(), "5 holdCall (callID = 7)");
    EXPECT_EQ(log_.texts().size(), 4U);
}

TEST_F(CallsTest, HoldCall_WithoutAReason_PassesMinusOne)
{
    InSequence order;
    expectRecordBuilt(7);
    expectLocked();
    EXPECT_CALL(sfi_, SetManualHoldIndication(_, true));
    EXPECT_CALL(sfi_, CallFeature(_, static_cast<sfiFeature>(-1), StrEq(""), 1)).WillOnce(Return(sfiSuccess));
    expectUnlocked();

    EXPECT_EQ(service_->holdCall("4711", 7, static_cast<sfiFeature>(-1), true), 5);
}

TEST_F(CallsTest, RetrieveCall_WithoutActiveKeyset_RetrievesInCallControl)
{
    keysetIsActive(false);
    InSequence order;
    expectRecordBuilt(7);
    expectLocked();
    EXPECT_CALL(sfi_, CallRetrieve(Pointee(IsRecord(17, 4, 7, 2)))).WillOnce(Return(kAnyResult));
    expectUnlocked();

    EXPECT_EQ(service_->retrieveCall("4711", 7), kAnyResult);

    EXPECT_THAT(log_.texts(), ElementsAreArray(logOf("5 retrieveCall (callID = 7)", 7)));
}

TEST_F(CallsTest, RetrieveCall_OnAnActiveKeyset_SucceedsWhateverTheKeysetSays)
{
    keysetIsActive(true);
    InSequence order;
    expectRecordBuilt(7);
    expectLocked();
    EXPECT_CALL(keyset_, retrieveCall("4711", 7)).WillOnce(Return(sfiFailure));
    expectUnlocked();

    EXPECT_EQ(service_->retrieveCall("4711", 7), 5);

    EXPECT_THAT(log_.texts(), ElementsAreArray(logOf("5 retrieveCall (callID = 7)", 7)));
}

TEST_F(CallsTest, AttendedTransferCall_IsForTheSecondCall)
{
    InSequence order;
    expectRecordBuilt(8);
    expectLocked();
    EXPECT_CALL(sfi_, CallFeature(Pointee(IsRecord(17, 4, 8, 2)), static_cast<sfiFeature>(4), IsNull(), 1))
        .WillOnce(Return(kAnyResult));
    expectUnlocked();

    EXPECT_EQ(service_->attendedTransferCall("4711", 7, 8), kAnyResult);

    EXPECT_THAT(log_.texts(), ElementsAreArray(logOf("5 attendedTransferCall (7,8)", 8)));
}

TEST_F(CallsTest, BlindTransferCall_AsksTheDialPlanAndDropsTheAnswer)
{
    InSequence order;
    expectNumberAsked("4712", "true");
    expectRecordBuilt(7);
    expectLocked();
    EXPECT_CALL(sfi_, CallFeature(Pointee(IsRecord(17, 4, 7, 2)), static_cast<sfiFeature>(2), StrEq("4712"), 1))
        .WillOnce(Return(kAnyResult));
    expectUnlocked();

    EXPECT_EQ(service_->blindTransferCall("4711", 7, "4712"), kAnyResult);

    EXPECT_THAT(log_.texts(), ElementsAreArray(logOf("5 blindTransferCall (callID = 7, Destination = 4712)", 7)));
}

TEST_F(CallsTest, RefuseCall_PassesTheReason)
{
    InSequence order;
    expectRecordBuilt(7);
    expectLocked();
    EXPECT_CALL(sfi_, CallRefuse(Pointee(IsRecord(17, 4, 7, 2)), static_cast<sfiRefuseCall>(3)))
        .WillOnce(Return(kAnyResult));
    expectUnlocked();

    EXPECT_EQ(service_->refuseCall("4711", 7, static_cast<sfiRefuseCall>(3)), kAnyResult);

    EXPECT_THAT(log_.texts(), ElementsAreArray(logOf("5 refuseCall (7,3)", 7)));
}

TEST_F(CallsTest, CallClear_TakesNoAppearance)
{
    EXPECT_CALL(mapper_, assignCallToLine(_, _, _)).Times(0);
    InSequence order;
    expectLocked();
    EXPECT_CALL(sfi_, CallClear(Pointee(IsRecord(17, 4, 7, 0)), static_cast<CSTAEventCause>(5)))
        .WillOnce(Return(kAnyResult));
    expectUnlocked();

    EXPECT_EQ(service_->callClear("4711", 7, static_cast<CSTAEventCause>(5)), kAnyResult);

    EXPECT_THAT(log_.texts(), ElementsAre("5 callClear (callID = 7, cause = 5)",
                                          "5 generateCallInfoForLine - found MCA line in selected state: callID(7), "
                                          "lineID(17), appearanceIndex(0)"));
}

TEST_F(CallsTest, GenerateDigits_PassesTheDigits)
{
    InSequence order;
    expectRecordBuilt(7);
    expectLocked();
    EXPECT_CALL(sfi_, GenerateDigits(Pointee(IsRecord(17, 4, 7, 2)), StrEq("12#"))).WillOnce(Return(kAnyResult));
    expectUnlocked();

    EXPECT_EQ(service_->generateDigits("4711", 7, "12#"), kAnyResult);

    EXPECT_THAT(log_.texts(), ElementsAreArray(logOf("5 generateDigits activeCallID=7,digits=12#", 7)));
}

TEST_F(CallsTest, GenerateDigits_WithoutDigits_PassesNull)
{
    InSequence order;
    expectRecordBuilt(7);
    expectLocked();
    EXPECT_CALL(sfi_, GenerateDigits(_, IsNull())).WillOnce(Return(sfiFailure));
    expectUnlocked();

    EXPECT_EQ(service_->generateDigits("4711", 7, nullptr), 0);

    EXPECT_THAT(log_.texts(), ElementsAreArray(logOf("5 generateDigits activeCallID=7,digits=(null)", 7)));
}

TEST_F(CallsTest, GroupPickupCall_PicksUpInTheGroup)
{
    InSequence order;
    expectRecordBuilt(7);
    expectLocked();
    EXPECT_CALL(sfi_, GroupPickup(Pointee(IsRecord(17, 4, 7, 2)))).WillOnce(Return(kAnyResult));
    expectUnlocked();

    EXPECT_EQ(service_->groupPickupCall("4711", 7), kAnyResult);

    EXPECT_THAT(log_.texts(), ElementsAreArray(logOf("5 groupPickupCall (callID = 7)", 7)));
}

TEST_F(CallsTest, ActivateCallbackRinging_SetsTheCallBack)
{
    InSequence order;
    expectRecordBuilt(7);
    expectLocked();
    EXPECT_CALL(sfi_, ActivateCallbackRinging(Pointee(IsRecord(17, 4, 7, 2)))).WillOnce(Return(kAnyResult));
    expectUnlocked();

    EXPECT_EQ(service_->activateCallbackRinging("4711", 7), kAnyResult);

    EXPECT_THAT(log_.texts(), ElementsAreArray(logOf("5 activateCallbackRinging (7)", 7)));
}

TEST_F(CallsTest, ActivateCallbackBusy_SetsTheCallBack)
{
    InSequence order;
    expectRecordBuilt(7);
    expectLocked();
    EXPECT_CALL(sfi_, ActivateCallbackBusy(Pointee(IsRecord(17, 4, 7, 2)))).WillOnce(Return(kAnyResult));
    expectUnlocked();

    EXPECT_EQ(service_->activateCallbackBusy("4711", 7), kAnyResult);

    EXPECT_THAT(log_.texts(), ElementsAreArray(logOf("5 activateCallbackBusy (7)", 7)));
}

TEST_F(CallsTest, CancelCallbacks_PassesACopyOfTheTarget)
{
    std::string const target = "4712";
    for (bool const display : {true, false}) {
        InSequence order;
        expectRecordBuilt(7);
        expectLocked();
        EXPECT_CALL(sfi_, CancelCallbacks(Pointee(IsRecord(17, 4, 7, 2)), Eq("4712"),
                                          static_cast<sfiCancelCallBackType>(2), display))
            .WillOnce(DoAll(SetArgReferee<1>("written over"), Return(kAnyResult)));
        expectUnlocked();

        EXPECT_EQ(service_->cancelCallbacks("4711", 7, target, static_cast<sfiCancelCallBackType>(2), display),
                  kAnyResult);
    }

    EXPECT_EQ(target, "4712");
    EXPECT_EQ(log_.texts().front(), "5 cancelCallbacks (7)");
}

TEST_F(CallsTest, GetManualHoldIndication_IsTrueForAnyAnswerButZero)
{
    for (int const answer : {0, 1, 5, -1}) {
        InSequence order;
        expectRecordBuilt(7);
        expectLocked();
        EXPECT_CALL(sfi_, GetManualHoldIndication(Pointee(IsRecord(17, 4, 7, 2))))
            .WillOnce(Return(static_cast<sfiResult>(answer)));
        expectUnlocked();

        EXPECT_EQ(service_->getManualHoldIndication("4711", 7), answer != 0);
    }

    EXPECT_EQ(log_.texts().front(), "5 getManualHoldIndication");
}

TEST_F(CallsTest, ConferenceCall_IsForTheSecondCall)
{
    InSequence order;
    expectRecordBuilt(8);
    expectLocked();
    EXPECT_CALL(sfi_, CallFeature(Pointee(IsRecord(17, 4, 8, 2)), static_cast<sfiFeature>(3), IsNull(), 1))
        .WillOnce(Return(kAnyResult));
    expectUnlocked();

    EXPECT_EQ(service_->conferenceCall("4711", 7, 8, static_cast<sfiFeature>(3)), kAnyResult);

    EXPECT_THAT(log_.texts(), ElementsAreArray(logOf("5 conferenceCall (Device: 4711 - 7,8)", 8)));
}

TEST_F(CallsTest, AlternateCalls_IsForCallZero)
{
    InSequence order;
    expectRecordBuilt(0);
    expectLocked();
    EXPECT_CALL(sfi_, CallFeature(Pointee(IsRecord(17, 4, 0, 2)), static_cast<sfiFeature>(0), IsNull(), 1))
        .WillOnce(Return(kAnyResult));
    expectUnlocked();

    EXPECT_EQ(service_->alternateCalls("4711"), kAnyResult);

    EXPECT_THAT(log_.texts(), ElementsAreArray(logOf("5 alternateCalls", 0)));
}

TEST_F(CallsTest, MakeSecurityChangeReinvite_LocksBeforeTheRecordAndHasNoEntryLine)
{
    for (bool const secure : {true, false}) {
        InSequence order;
        expectLocked();
        expectRecordBuilt(7);
        EXPECT_CALL(sfi_, SecurityChangeReinvite(Pointee(IsRecord(17, 4, 7, 2)), secure)).WillOnce(Return(kAnyResult));
        expectUnlocked();

        EXPECT_EQ(service_->makeSecurityChangeReinvite("4711", 7, secure), kAnyResult);
    }

    EXPECT_THAT(log_.texts(), ElementsAre(testing::StartsWith("5 generateCallInfoForLine - found"),
                                          testing::StartsWith("5 generateCallInfoForLine - found")));
}

TEST_F(CallsTest, AnUnknownLine_DoesNotStopAnOperation)
{
    EXPECT_CALL(lines_, isMCALine("4799")).WillOnce(Return(false));
    EXPECT_CALL(lines_, getLine("4799")).WillOnce(Return(nullptr));
    InSequence order;
    expectLocked();
    EXPECT_CALL(sfi_, CallAccept(Pointee(IsRecord(0, 1, 7, 0)))).WillOnce(Return(sfiFailure));
    expectUnlocked();

    EXPECT_EQ(service_->acceptCall("4799", 7, false), 0);
}

TEST_F(CallsTest, ACallThatIsMapped_IsNamedWithPrimaryZero)
{
    EXPECT_CALL(mapper_, findVirtualLineforCallID(7, Eq(0), Eq(0)))
        .WillOnce(DoAll(SetArgReferee<1>(18), SetArgReferee<2>(3), Return(true)));
    InSequence order;
    expectLocked();
    EXPECT_CALL(sfi_, CallAccept(Pointee(IsRecord(18, 0, 7, 3)))).WillOnce(Return(sfiSuccess));
    expectUnlocked();

    EXPECT_EQ(service_->acceptCall("4711", 7, false), 5);
}

TEST_F(CallsTest, ATransferWithoutDestination_FailsBeforeTheLock)
{
    EXPECT_THROW(service_->deflectCall("4711", 7, nullptr), std::logic_error);
    EXPECT_THROW(service_->blindTransferCall("4711", 7, nullptr), std::logic_error);
    EXPECT_THROW(service_->consultationCall("4711", 7, nullptr), std::logic_error);

    EXPECT_THAT(log_.texts(), ElementsAre("5 deflectCall (callID = 7, Destination = (null))",
                                          "5 blindTransferCall (callID = 7, Destination = (null))",
                                          "5 consultationCall (consulationCallID = 7, Destination = (null))"));
}

TEST_F(CallsTest, ATransferWithoutDialPlan_IsMade)
{
    withoutDialPlan();
    InSequence order;
    expectRecordBuilt(7);
    expectLocked();
    EXPECT_CALL(sfi_, CallFeature(_, static_cast<sfiFeature>(1), StrEq("4712"), 1)).WillOnce(Return(sfiSuccess));
    expectUnlocked();
    expectRecordBuilt(7);
    expectLocked();
    EXPECT_CALL(sfi_, CallFeature(_, static_cast<sfiFeature>(2), StrEq("4712"), 1)).WillOnce(Return(sfiSuccess));
    expectUnlocked();

    EXPECT_EQ(service_->deflectCall("4711", 7, "4712"), 5);
    EXPECT_EQ(service_->blindTransferCall("4711", 7, "4712"), 5);
}

TEST_F(CallsTest, TraceOff_WritesNoneOfTheLinesAndCallsAllTheSame)
{
    log_.setLevel(4);
    keysetIsActive(false);
    InSequence order;
    expectRecordBuilt(7);
    expectLocked();
    EXPECT_CALL(sfi_, CallAnswer(_)).WillOnce(Return(sfiFailure));
    expectUnlocked();

    EXPECT_EQ(service_->answerCall("4711", 7), 0);

    EXPECT_THAT(log_.texts(), ElementsAre("2 Sfi->CallAnswer() for line 4711 failed with code 0"));
}

}  // namespace
