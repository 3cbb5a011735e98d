// The record of a call, the reservation of appearances and lines, and the permission to dial.
#include "ServiceTest.h"

namespace {

class AppearancesTest : public ServiceTest
{
protected:
    void SetUp() override { initialise(); }

    sfiCallInfo record(std::string const& lineURI, int callID, bool assign = true)
    {
        sfiCallInfo info{99, 98, 97, 96};
        service_->generateCallInfoForLine(&info, lineURI, callID, assign);
        return info;
    }

    void isAppearanceLine(std::string const& baseURI)
    {
        isKeyset();
        EXPECT_CALL(lines_, isMCALine(baseURI)).WillRepeatedly(Return(true));
        EXPECT_CALL(sfi_, GetMCAMapper()).WillRepeatedly(Return(&mapper_));
    }

    void isNotMapped(int callID)
    {
        EXPECT_CALL(mapper_, findVirtualLineforCallID(callID, Eq(0), Eq(0))).WillOnce(Return(false));
    }

    void lineInState(ELineState state, Line* line)
    {
        EXPECT_CALL(lines_, getLineInState(state, "4711")).WillOnce(Return(line));
    }

    void splitsInto(std::string const& device, std::string const& baseURI, int index)
    {
        EXPECT_CALL(clientUtils_, splitMCADeviceIndex(device, Eq(""), Eq(0)))
            .WillOnce(DoAll(SetArgReferee<1>(baseURI), SetArgReferee<2>(index)));
    }

    // A line with this number and, with configuration, primary value 4.
    void lineIs(int lineID, bool withData = true)
    {
        EXPECT_CALL(line_, getLineID()).WillRepeatedly(Return(static_cast<unsigned char>(lineID)));
        EXPECT_CALL(line_, getLineData()).WillRepeatedly(Return(withData ? &data_ : nullptr));
        EXPECT_CALL(data_, getPrimary()).WillRepeatedly(Return(4));
    }
};

TEST_F(AppearancesTest, WithoutARecord_NothingHappens)
{
    service_->generateCallInfoForLine(nullptr, "bluetoothDeviceID", 10000, true);

    EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(AppearancesTest, OnASingleLinePhone_EveryLineGivesTheDefaultRecord)
{
    isSingleLinePhone();

    EXPECT_THAT(record("4711", 7), IsRecord(0, 1, 7, 0));
    EXPECT_THAT(record("", -1), IsRecord(0, 1, -1, 0));

    EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(AppearancesTest, APlainLine_GivesItsNumberAndPrimary)
{
    isKeyset();
    splitsInto("4711:2", "4711", 2);
    EXPECT_CALL(lines_, isMCALine("4711")).WillOnce(Return(false));
    lineExists("4711", line_, 200);
    EXPECT_CALL(data_, getPrimary()).WillRepeatedly(Return(6));

    EXPECT_THAT(record("4711:2", 7), IsRecord(200, 6, 7, 0));

    EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(AppearancesTest, APlainLineWithoutConfiguration_HasPrimaryOne)
{
    isKeyset();
    EXPECT_CALL(lines_, isMCALine("4711")).WillOnce(Return(false));
    EXPECT_CALL(lines_, getLine("4711")).WillOnce(Return(&line_));
    lineIs(3, false);

    EXPECT_THAT(record("4711", 7), IsRecord(3, 1, 7, 0));
}

TEST_F(AppearancesTest, AnUnknownPlainLine_GivesTheDefaultRecord)
{
    isKeyset();
    EXPECT_CALL(lines_, isMCALine("4711")).WillOnce(Return(false));
    EXPECT_CALL(lines_, getLine("4711")).WillOnce(Return(nullptr));

    EXPECT_THAT(record("4711", 7), IsRecord(0, 1, 7, 0));
}

TEST_F(AppearancesTest, AMappedCall_KeepsItsAppearanceAndThePrimaryOfTheRecord)
{
    isAppearanceLine("4711");
    EXPECT_CALL(mapper_, findVirtualLineforCallID(7, Eq(0), Eq(0)))
        .WillOnce(DoAll(SetArgReferee<1>(18), SetArgReferee<2>(3), Return(true)));

    EXPECT_THAT(record("4711", 7), IsRecord(18, 98, 7, 3));

    EXPECT_THAT(log_.texts(), ElementsAre("5 generateCallInfoForLine - got already assigned MCA line for callID(7): "
                                          "lineID(18), appearanceIndex(3)"));
}

TEST_F(AppearancesTest, ANamedAppearance_IsLookedUpByTheWholeIdentifierAndTaken)
{
    isAppearanceLine("4711");
    splitsInto("4711:2", "4711", 2);
    isNotMapped(7);
    EXPECT_CALL(lines_, getLine("4711:2")).WillOnce(Return(&line_));
    lineIs(17);
    EXPECT_CALL(mapper_, assignCallToLine(17, 7, Eq(2))).WillOnce(SetArgReferee<2>(5));

    EXPECT_THAT(record("4711:2", 7), IsRecord(17, 4, 7, 5));

    EXPECT_THAT(log_.texts(), ElementsAre("5 generateCallInfoForLine(4711:2) - assign callID(7) to MCA lineID(17), "
                                          "appearanceIndex(5)"));
}

TEST_F(AppearancesTest, ANamedAppearance_WithoutAssigning_IsNamedOnly)
{
    isAppearanceLine("4711");
    splitsInto("4711:1", "4711", 1);
    isNotMapped(7);
    EXPECT_CALL(lines_, getLine("4711:1")).WillOnce(Return(&line_));
    lineIs(17);

    EXPECT_THAT(record("4711:1", 7, false), IsRecord(17, 4, 7, 1));

    EXPECT_THAT(log_.texts(), ElementsAre("5 generateCallInfoForLine(4711:1) - assign callID(7) to MCA lineID(17), "
                                          "appearanceIndex(1)"));
}

TEST_F(AppearancesTest, ANamedAppearanceThatIsUnknown_FallsThroughToTheSelectedOne)
{
    isAppearanceLine("4711");
    splitsInto("4711:2", "4711", 2);
    lineIs(17);
    InSequence order;
    isNotMapped(7);
    EXPECT_CALL(lines_, getLine("4711:2")).WillOnce(Return(nullptr));
    lineInState(static_cast<ELineState>(21), &line_);
    EXPECT_CALL(mapper_, assignCallToLine(17, 7, Eq(0)));

    EXPECT_THAT(record("4711:2", 7), IsRecord(17, 4, 7, 0));
}

TEST_F(AppearancesTest, AnIndexBelowOne_NamesNoAppearance)
{
    isAppearanceLine("4711");
    splitsInto("4711:-1", "4711", -1);
    isNotMapped(7);
    EXPECT_CALL(lines_, getLine(_)).Times(0);
    lineInState(eLineStateSelected, &line_);
    lineIs(17);

    EXPECT_THAT(record("4711:-1", 7, false), IsRecord(17, 4, 7, 0));
}

TEST_F(AppearancesTest, TheSelectedAppearance_IsTaken)
{
    isAppearanceLine("4711");
    isNotMapped(7);
    lineInState(static_cast<ELineState>(21), &line_);
    lineIs(17);
    EXPECT_CALL(mapper_, assignCallToLine(17, 7, Eq(0))).WillOnce(SetArgReferee<2>(2));

    EXPECT_THAT(record("4711", 7), IsRecord(17, 4, 7, 2));

    EXPECT_THAT(log_.texts(), ElementsAre("5 generateCallInfoForLine - found MCA line in selected state: callID(7), "
                                          "lineID(17), appearanceIndex(2)"));
}

TEST_F(AppearancesTest, WhatTheFailedLookUpWrote_IsTheAppearanceThatIsOffered)
{
    isAppearanceLine("4711");
    EXPECT_CALL(mapper_, findVirtualLineforCallID(7, Eq(0), Eq(0)))
        .WillOnce(DoAll(SetArgReferee<1>(44), SetArgReferee<2>(6), Return(false)));
    lineInState(static_cast<ELineState>(21), &line_);
    lineIs(17, false);
    EXPECT_CALL(mapper_, assignCallToLine(17, 7, Eq(6)));

    EXPECT_THAT(record("4711", 7), IsRecord(17, 1, 7, 6));
}

TEST_F(AppearancesTest, TheAppearanceOnHoldForConsultation_IsTakenNext)
{
    isAppearanceLine("4711");
    lineIs(17);
    InSequence order;
    isNotMapped(7);
    lineInState(static_cast<ELineState>(21), nullptr);
    lineInState(static_cast<ELineState>(8), &line_);
    EXPECT_CALL(mapper_, assignCallToLine(17, 7, Eq(0))).WillOnce(SetArgReferee<2>(2));

    EXPECT_THAT(record("4711", 7), IsRecord(17, 4, 7, 2));

    EXPECT_THAT(log_.texts(), ElementsAre("5 generateCallInfoForLine - found MCA line in HoldConsult state: callID(7), "
                                          "lineID(17), appearanceIndex(2)"));
}

TEST_F(AppearancesTest, TheFirstFreeVirtualLine_IsTakenLast)
{
    isAppearanceLine("4711");
    lineIs(17);
    InSequence order;
    isNotMapped(7);
    lineInState(static_cast<ELineState>(21), nullptr);
    lineInState(static_cast<ELineState>(8), nullptr);
    EXPECT_CALL(lines_, getLine("4711")).WillOnce(Return(&line_));
    EXPECT_CALL(mapper_, findFirstFreeVirtualLine(17)).WillOnce(Return(19));
    EXPECT_CALL(mapper_, assignCallToLine(19, 7, Eq(0))).WillOnce(SetArgReferee<2>(1));

    EXPECT_THAT(record("4711", 7), IsRecord(19, 4, 7, 1));

    EXPECT_THAT(log_.texts(), ElementsAre("5 generateCallInfoForLine - use first free MCA line: callID(7), lineID(19), "
                                          "appearanceIndex(1)"));
}

TEST_F(AppearancesTest, WithoutAssigning_NoStepMakesAMapping)
{
    isAppearanceLine("4711");
    EXPECT_CALL(mapper_, findVirtualLineforCallID(7, Eq(0), Eq(0))).WillRepeatedly(Return(false));
    EXPECT_CALL(mapper_, assignCallToLine(_, _, _)).Times(0);
    EXPECT_CALL(mapper_, findFirstFreeVirtualLine(17)).WillOnce(Return(19));
    EXPECT_CALL(lines_, getLine("4711")).WillOnce(Return(&line_));
    lineIs(17);
    {
        InSequence order;
        lineInState(eLineStateSelected, nullptr);
        lineInState(eLineStateHoldConsult, nullptr);
        lineInState(eLineStateSelected, &line_);
        lineInState(eLineStateSelected, nullptr);
        lineInState(eLineStateHoldConsult, &line_);
    }

    EXPECT_THAT(record("4711", 7, false), IsRecord(19, 4, 7, 0));
    EXPECT_THAT(record("4711", 7, false), IsRecord(17, 4, 7, 0));
    EXPECT_THAT(record("4711", 7, false), IsRecord(17, 4, 7, 0));
}

TEST_F(AppearancesTest, AnAppearanceLineThatIsUnknown_GivesTheDefaultRecord)
{
    isAppearanceLine("4711");
    isNotMapped(7);
    lineInState(eLineStateSelected, nullptr);
    lineInState(eLineStateHoldConsult, nullptr);
    EXPECT_CALL(lines_, getLine("4711")).WillOnce(Return(nullptr));

    EXPECT_THAT(record("4711", 7), IsRecord(0, 1, 7, 0));

    EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(AppearancesTest, WithoutAMapper_TheLineItselfIsUsedAndNothingIsAssigned)
{
    isKeyset();
    EXPECT_CALL(lines_, isMCALine("4711")).WillRepeatedly(Return(true));
    EXPECT_CALL(sfi_, GetMCAMapper()).WillRepeatedly(Return(nullptr));
    lineIs(17);
    InSequence order;
    lineInState(eLineStateSelected, &line_);
    lineInState(eLineStateSelected, nullptr);
    lineInState(eLineStateHoldConsult, nullptr);
    EXPECT_CALL(lines_, getLine("4711")).WillOnce(Return(&line_));

    EXPECT_THAT(record("4711", 7), IsRecord(17, 4, 7, 0));
    EXPECT_THAT(record("4711", 7), IsRecord(17, 4, 7, 0));
}

TEST_F(AppearancesTest, ABluetoothCall_IsOnTheLineThatTheDeviceNames)
{
    for (int const callID : {10000, 10250, 10500}) {
        log_.clear();
        isAppearanceLine("4711");
        EXPECT_CALL(sfi_, GetBluetoothLineURI(0, Eq(""), Eq("")))
            .WillOnce(DoAll(SetArgReferee<1>("4711:2"), SetArgReferee<2>("Headset")));
        splitsInto("4711:2", "4711", 2);
        isNotMapped(callID);
        EXPECT_CALL(lines_, getLine("4711:2")).WillOnce(Return(&line_));
        lineIs(17);
        EXPECT_CALL(mapper_, assignCallToLine(17, callID, Eq(2)));

        EXPECT_THAT(record("bluetoothDeviceID", callID), IsRecord(17, 4, callID, 2));

        auto const id = std::to_string(callID);
        EXPECT_THAT(log_.texts(), ElementsAre("5 generateCallInfoForLine - replacing lineURI for callID(" + id +
                                                  "): previous lineURI=bluetoothDeviceID, new lineURI=4711:2",
                                              "5 generateCallInfoForLine(4711:2) - assign callID(" + id +
                                                  ") to MCA lineID(17), appearanceIndex(2)"));
    }
}

TEST_F(AppearancesTest, OnlyTheMarkerWithACallIdOfTheRange_IsABluetoothCall)
{
    isSingleLinePhone();
    EXPECT_CALL(sfi_, GetBluetoothLineURI(_, _, _)).Times(0);

    EXPECT_THAT(record("bluetoothDeviceID", 9999), IsRecord(0, 1, 9999, 0));
    EXPECT_THAT(record("bluetoothDeviceID", 10501), IsRecord(0, 1, 10501, 0));
    EXPECT_THAT(record("bluetoothDeviceId", 10000), IsRecord(0, 1, 10000, 0));
    EXPECT_THAT(record("bluetoothDeviceID ", 10000), IsRecord(0, 1, 10000, 0));
    EXPECT_THAT(record("", 10000), IsRecord(0, 1, 10000, 0));
}

class ReservationTest : public AppearancesTest
{
protected:
    void serverReserves() { ON_CALL(configuration_, serverType()).WillByDefault(Return(7)); }

    void lineIsInState(ELineState state, bool busy)
    {
        EXPECT_CALL(lines_, getLine("4711:1")).WillOnce(Return(&line_));
        EXPECT_CALL(line_, getLineState()).WillRepeatedly(Return(state));
        EXPECT_CALL(utility_, isLineStateBusy(state)).WillOnce(Return(busy));
    }
};

TEST_F(ReservationTest, OnOtherServers_SucceedsWithoutALook)
{
    for (int const server : {0, 1, 6, 8}) {
        ON_CALL(configuration_, serverType()).WillByDefault(Return(server));
        EXPECT_TRUE(service_->checkBCAForNextAppearanceReservation("4711:1"));
    }
}

TEST_F(ReservationTest, OfAnUnknownLine_Succeeds)
{
    serverReserves();
    EXPECT_CALL(lines_, getLine("4711:1")).WillOnce(Return(nullptr));

    EXPECT_TRUE(service_->checkBCAForNextAppearanceReservation("4711:1"));
}

TEST_F(ReservationTest, OfABusyLine_IsUpToTheKeyset)
{
    serverReserves();
    for (bool const reserved : {true, false}) {
        lineIsInState(eLineStateHoldConsult, true);
        EXPECT_CALL(keyset_, reserveNextSCA("4711:1")).WillOnce(Return(reserved));

        EXPECT_EQ(service_->checkBCAForNextAppearanceReservation("4711:1"), reserved);
    }

    EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(ReservationTest, OfAnIdleLine_IsNotNeeded)
{
    serverReserves();
    lineIsInState(eLineStateHold, false);

    EXPECT_TRUE(service_->checkBCAForNextAppearanceReservation("4711:1"));
}

TEST_F(ReservationTest, DuringAConsultation_IsNotNeededTwice)
{
    serverReserves();
    lineIsInState(static_cast<ELineState>(8), false);
    EXPECT_CALL(line_, getChildBCALineIdReservedForConsultationCall()).WillRepeatedly(Return(-3));

    EXPECT_TRUE(service_->checkBCAForNextAppearanceReservation("4711:1"));

    EXPECT_THAT(log_.texts(), ElementsAre("5 checkBCAForNextAppearanceReservation(4711:1) - eLineStateHoldConsult, "
                                          "reserved appearance: -3"));
}

TEST_F(ReservationTest, DuringAConsultation_IsUpToTheKeysetTheFirstTime)
{
    serverReserves();
    for (bool const reserved : {true, false}) {
        lineIsInState(static_cast<ELineState>(8), false);
        EXPECT_CALL(line_, getChildBCALineIdReservedForConsultationCall()).WillRepeatedly(Return(0));
        EXPECT_CALL(keyset_, reserveNextSCA("4711:1")).WillOnce(Return(reserved));

        EXPECT_EQ(service_->checkBCAForNextAppearanceReservation("4711:1"), reserved);
    }
}

TEST_F(ReservationTest, ReserveLine_SeizesTheLineUnderTheTeamLock)
{
    listenToLog();
    for (int const state : {21, 24}) {
        InSequence order;
        EXPECT_CALL(logListener_, written(5, "reserveLine(4711)"));
        expectTeamLockTaken();
        EXPECT_CALL(keyset_, isSpoofedDummyLine("4711")).WillOnce(Return(false));
        EXPECT_CALL(keyset_, makeCall("4711"));
        EXPECT_CALL(lines_, getLine("4711")).WillOnce(Return(&line_));
        EXPECT_CALL(line_, getLineState()).WillOnce(Return(static_cast<ELineState>(state)));
        expectTeamLockGiven();

        EXPECT_TRUE(service_->reserveLine("4711"));
    }
}

TEST_F(ReservationTest, ReserveLine_ThatFails_SaysInWhichState)
{
    for (int const state : {20, 22, 23, 25}) {
        log_.clear();
        InSequence order;
        expectTeamLockTaken();
        EXPECT_CALL(keyset_, isSpoofedDummyLine("4711")).WillOnce(Return(false));
        EXPECT_CALL(keyset_, makeCall("4711"));
        EXPECT_CALL(lines_, getLine("4711")).WillOnce(Return(&line_));
        EXPECT_CALL(line_, getLineState()).WillOnce(Return(static_cast<ELineState>(state)));
        expectTeamLockGiven();

        EXPECT_FALSE(service_->reserveLine("4711"));

        EXPECT_THAT(log_.texts(), ElementsAre("5 reserveLine(4711)",
                                              "2 reserveLine(4711) failed, line state: " + std::to_string(state)));
    }
}

TEST_F(ReservationTest, ReserveLine_OfAnUnknownLine_IsFalseWithoutAReason)
{
    InSequence order;
    expectTeamLockTaken();
    EXPECT_CALL(keyset_, isSpoofedDummyLine("4711")).WillOnce(Return(false));
    EXPECT_CALL(keyset_, makeCall("4711"));
    EXPECT_CALL(lines_, getLine("4711")).WillOnce(Return(nullptr));
    expectTeamLockGiven();

    EXPECT_FALSE(service_->reserveLine("4711"));

    EXPECT_THAT(log_.texts(), ElementsAre("5 reserveLine(4711)"));
}

TEST_F(ReservationTest, ReserveLine_OfTheDummyLine_IsUpToTheKeyset)
{
    for (bool const reserved : {true, false}) {
        InSequence order;
        expectTeamLockTaken();
        EXPECT_CALL(keyset_, isSpoofedDummyLine("dummy")).WillOnce(Return(true));
        EXPECT_CALL(keyset_, dummyLine_reserve()).WillOnce(Return(reserved));
        expectTeamLockGiven();

        EXPECT_EQ(service_->reserveLine("dummy"), reserved);
    }
}

class PermissionTest : public ServiceTest
{
protected:
    void phoneIs(int restriction, bool locked)
    {
        EXPECT_CALL(sfi_, GetDialRestrictionMode()).WillRepeatedly(Return(restriction));
        EXPECT_CALL(sfi_, IsPhoneLocked()).WillRepeatedly(Return(locked));
    }

    void planSays(bool permitted, bool permittedInContext)
    {
        EXPECT_CALL(digits_, isPermittedNumber("112")).WillOnce(Return(permitted));
        EXPECT_CALL(digits_, isPermittedNumberInContext("112", 0)).WillOnce(Return(permittedInContext));
    }
};

TEST_F(PermissionTest, WithoutANumber_IsRefused)
{
    initialise();

    EXPECT_FALSE(service_->isOutgoingCallAllowed(nullptr));
}

TEST_F(PermissionTest, WhileDiallingIsBarred_IsRefusedWhateverTheDialPlanSays)
{
    initialise();
    EXPECT_CALL(sfi_, GetDialRestrictionMode()).WillOnce(Return(4));

    EXPECT_FALSE(service_->isOutgoingCallAllowed("112"));
}

TEST_F(PermissionTest, OnAnUnlockedPhone_IsGivenAndKeepsDoNotDisturb)
{
    initialise();
    for (int const restriction : {0, 3, 5}) {
        phoneIs(restriction, false);

        EXPECT_TRUE(service_->isOutgoingCallAllowed("4712"));
    }
}

TEST_F(PermissionTest, OnALockedPhoneWithoutDialPlan_IsRefused)
{
    phoneIs(0, true);

    EXPECT_FALSE(service_->isOutgoingCallAllowed("112"));
}

TEST_F(PermissionTest, OnALockedPhone_AsksBothAndEndsDoNotDisturb)
{
    initialise();
    phoneIs(0, true);
    struct Answers
    {
        bool permitted, inContext;
    };
    for (auto const answers : {Answers{true, true}, Answers{true, false}, Answers{false, true}}) {
        planSays(answers.permitted, answers.inContext);
        InSequence order;
        EXPECT_CALL(sfi_, GetDoNotDisturb(0, Eq(false))).WillOnce(DoAll(SetArgReferee<1>(true), Return(sfiSuccess)));
        EXPECT_CALL(sfi_, SetDoNotDisturb(0, false));

        EXPECT_TRUE(service_->isOutgoingCallAllowed("112"));
    }

    EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(PermissionTest, OnALockedPhone_IsRefusedForAnOrdinaryNumber)
{
    initialise();
    phoneIs(0, true);
    planSays(false, false);

    EXPECT_FALSE(service_->isOutgoingCallAllowed("112"));
}

}  // namespace
