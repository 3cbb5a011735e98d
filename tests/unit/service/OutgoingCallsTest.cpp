// Outgoing calls: ordinary, consultation and pickup calls; the obstacles, and what is passed to the call control.
#include "CallsTest.h"

namespace {

using testing::ElementsAreArray;

constexpr auto kAnyOutcome = sfiFailureCallBackAllreadyExists;

class OutgoingCallsTest : public CallsTest
{
protected:
    void mayDial()
    {
        EXPECT_CALL(sfi_, GetDialRestrictionMode()).WillRepeatedly(Return(0));
        EXPECT_CALL(sfi_, IsPhoneLocked()).WillRepeatedly(Return(false));
    }

    // The server requires reserved appearances, and the line is busy.
    void reservationNeeded(bool succeeds)
    {
        ON_CALL(configuration_, serverType()).WillByDefault(Return(7));
        EXPECT_CALL(lines_, getLine("4711")).WillOnce(Return(&line_));
        EXPECT_CALL(line_, getLineState()).WillOnce(Return(eLineStateActive));
        EXPECT_CALL(utility_, isLineStateBusy(eLineStateActive)).WillOnce(Return(true));
        EXPECT_CALL(keyset_, reserveNextSCA("4711")).WillOnce(Return(succeeds));
    }
};

TEST_F(OutgoingCallsTest, OutgoingCallMake_PassesItsFlagsInOrderWithoutTheLock)
{
    mayDial();
    struct Flags
    {
        bool first, second, third;
    };
    for (Flags const flags : {Flags{true, false, false}, Flags{false, true, false}, Flags{false, false, true}}) {
        InSequence order;
        expectNumberAsked("4712", "false");
        expectRecordBuilt(7);
        EXPECT_CALL(
            sfi_, CallMake(Pointee(IsRecord(17, 4, 7, 2)), "4712", 1, 0, flags.first, flags.second, flags.third, false))
            .WillOnce(Return(kAnyOutcome));

        EXPECT_EQ(service_->outgoingCallMake("4711", 7, "4712", flags.first, flags.second, flags.third), kAnyOutcome);
    }

    EXPECT_EQ(log_.texts().front(), "5 outgoingCallMake (callID = 7, Destination = 4712)");
    EXPECT_EQ(log_.texts().size(), 6U);
}

TEST_F(OutgoingCallsTest, OutgoingCallMake_MarksAnEmergencyNumber)
{
    mayDial();
    InSequence order;
    expectNumberAsked("112", "true");
    expectRecordBuilt(7);
    EXPECT_CALL(sfi_, CallMake(_, "112", 1, 0, true, true, true, true)).WillOnce(Return(sfiSuccess));

    EXPECT_EQ(service_->outgoingCallMake("4711", 7, "112", true, true, true), 5);
}

TEST_F(OutgoingCallsTest, OutgoingCallMake_TakesOnlyTheExactWordTrue)
{
    mayDial();
    for (std::string const answer : {"TRUE", "1", "", "true "}) {
        InSequence order;
        expectNumberAsked("112", answer);
        expectRecordBuilt(7);
        EXPECT_CALL(sfi_, CallMake(_, "112", 1, 0, true, true, true, false)).WillOnce(Return(sfiSuccess));

        EXPECT_EQ(service_->outgoingCallMake("4711", 7, "112", true, true, true), 5);
    }
}

TEST_F(OutgoingCallsTest, OutgoingCallMake_WithoutDialPlan_MarksNothing)
{
    withoutDialPlan();
    mayDial();
    InSequence order;
    expectRecordBuilt(7);
    EXPECT_CALL(sfi_, CallMake(_, "112", 1, 0, false, false, false, false)).WillOnce(Return(sfiSuccess));

    EXPECT_EQ(service_->outgoingCallMake("4711", 7, "112", false, false, false), 5);
}

TEST_F(OutgoingCallsTest, OutgoingCallMake_ThatIsNotAllowed_ReservesAndSendsNothing)
{
    ON_CALL(configuration_, serverType()).WillByDefault(Return(7));
    EXPECT_CALL(sfi_, GetDialRestrictionMode()).WillOnce(Return(4));

    EXPECT_EQ(service_->outgoingCallMake("4711", 7, "4712", true, true, true), 0);

    EXPECT_THAT(log_.texts(), ElementsAre("5 outgoingCallMake (callID = 7, Destination = 4712)"));
}

TEST_F(OutgoingCallsTest, OutgoingCallMake_WithoutDestination_IsRefused)
{
    EXPECT_EQ(service_->outgoingCallMake("4711", 7, nullptr, true, true, true), 0);

    EXPECT_THAT(log_.texts(), ElementsAre("5 outgoingCallMake (callID = 7, Destination = (null))"));
}

TEST_F(OutgoingCallsTest, OutgoingCallMake_WithoutAFreeAppearance_IsRefusedAfterTheDialPlanWasAsked)
{
    mayDial();
    InSequence order;
    expectNumberAsked("4712", "false");
    reservationNeeded(false);

    EXPECT_EQ(service_->outgoingCallMake("4711", 7, "4712", true, true, true), 0);

    EXPECT_THAT(log_.texts(), ElementsAre("5 outgoingCallMake (callID = 7, Destination = 4712)",
                                          "2 outgoingCallMake - cannot reserve next appearance for line(4711)"));
}

TEST_F(OutgoingCallsTest, OutgoingCallMake_WithAReservedAppearance_IsMade)
{
    mayDial();
    InSequence order;
    expectNumberAsked("4712", "false");
    reservationNeeded(true);
    expectRecordBuilt(7);
    EXPECT_CALL(sfi_, CallMake(_, "4712", 1, 0, false, false, false, false)).WillOnce(Return(sfiSuccess));

    EXPECT_EQ(service_->outgoingCallMake("4711", 7, "4712", false, false, false), 5);
}

TEST_F(OutgoingCallsTest, ConsultationCall_AsksNeitherPermissionNorReservation)
{
    ON_CALL(configuration_, serverType()).WillByDefault(Return(7));
    for (bool const emergency : {true, false}) {
        InSequence order;
        expectNumberAsked("4712", emergency ? "true" : "false");
        expectRecordBuilt(7);
        EXPECT_CALL(sfi_, CallMake(Pointee(IsRecord(17, 4, 7, 2)), "4712", 1, 0, false, false, false, emergency))
            .WillOnce(Return(kAnyOutcome));

        EXPECT_EQ(service_->consultationCall("4711", 7, "4712"), kAnyOutcome);
    }

    EXPECT_EQ(log_.texts().front(), "5 consultationCall (consulationCallID = 7, Destination = 4712)");
}

TEST_F(OutgoingCallsTest, DirectedPickupCall_OnAPickupServer_IsForTheHandler)
{
    EXPECT_CALL(configuration_, serverType()).WillRepeatedly(Return(1));
    InSequence order;
    expectRecordBuilt(7);
    expectNumberAsked("4712", "true");
    expectLocked();
    EXPECT_CALL(pickup_, directedPickupRequest(Pointee(IsRecord(17, 4, 7, 2)), Eq("4712")))
        .WillOnce(DoAll(SetArgReferee<1>("written over"), Return(kAnyOutcome)));
    expectUnlocked();
    std::string const target = "4712";

    EXPECT_EQ(service_->directedPickupCall("4711", 7, target, false), kAnyOutcome);

    EXPECT_EQ(target, "4712");
    EXPECT_THAT(log_.texts(),
                ElementsAreArray(
                    logOf("5 directedPickupCall (lineURI=4711, callID = 7, callToBePickedUp=4712, BLFPickup=0)", 7)));
}

TEST_F(OutgoingCallsTest, DirectedPickupCall_OnAnotherServer_CallsThePickupNumberWithoutTheLock)
{
    for (int const server : {0, 2, 7}) {
        ON_CALL(configuration_, serverType()).WillByDefault(Return(server));
        ON_CALL(configuration_, directedPickupUri()).WillByDefault(Return("*8"));
        InSequence order;
        expectRecordBuilt(7);
        EXPECT_CALL(sfi_, CallMake(Pointee(IsRecord(17, 4, 7, 2)), "*84712", 1, 0, false, false, false, false))
            .WillOnce(Return(kAnyOutcome));

        EXPECT_EQ(service_->directedPickupCall("4711", 7, "4712", false), kAnyOutcome);
    }
}

TEST_F(OutgoingCallsTest, DirectedPickupCall_OnAnotherServer_NeedsANumberAndAPickupNumber)
{
    expectRecordBuilt(7);
    EXPECT_EQ(service_->directedPickupCall("4711", 7, "4712", false), 0);

    ON_CALL(configuration_, directedPickupUri()).WillByDefault(Return("*8"));
    expectRecordBuilt(8);
    EXPECT_EQ(service_->directedPickupCall("4711", 8, "", false), 0);
}

TEST_F(OutgoingCallsTest, DirectedPickupCall_OnAPickupServer_PassesAnEmptyNumberOn)
{
    ON_CALL(configuration_, serverType()).WillByDefault(Return(1));
    InSequence order;
    expectRecordBuilt(7);
    expectNumberAsked("", "false");
    expectLocked();
    EXPECT_CALL(pickup_, directedPickupRequest(_, Eq(""))).WillOnce(Return(sfiFailure));
    expectUnlocked();

    EXPECT_EQ(service_->directedPickupCall("4711", 7, "", false), 0);
}

TEST_F(OutgoingCallsTest, DirectedPickupCall_FromABusyLampField_IsForTheFeaturesWhateverTheServer)
{
    for (int const server : {0, 1}) {
        ON_CALL(configuration_, serverType()).WillByDefault(Return(server));
        InSequence order;
        expectRecordBuilt(7);
        expectNumberAsked("4712", "false");
        expectLocked();
        EXPECT_CALL(features_, BLFPickupRequest(Pointee(IsRecord(17, 4, 7, 2)), Eq("4712")))
            .WillOnce(Return(kAnyOutcome));
        expectUnlocked();

        EXPECT_EQ(service_->directedPickupCall("4711", 7, "4712", true), kAnyOutcome);
    }

    EXPECT_EQ(log_.texts().front(),
              "5 directedPickupCall (lineURI=4711, callID = 7, callToBePickedUp=4712, BLFPickup=1)");
}

TEST_F(OutgoingCallsTest, DirectedPickupCall_FromABusyLampField_ReservesFirst)
{
    InSequence order;
    reservationNeeded(true);
    expectRecordBuilt(7);
    expectNumberAsked("4712", "false");
    expectLocked();
    EXPECT_CALL(features_, BLFPickupRequest(_, Eq("4712"))).WillOnce(Return(sfiSuccess));
    expectUnlocked();

    EXPECT_EQ(service_->directedPickupCall("4711", 7, "4712", true), 5);
}

TEST_F(OutgoingCallsTest, DirectedPickupCall_FromABusyLampFieldWithoutAFreeAppearance_IsRefused)
{
    reservationNeeded(false);

    EXPECT_EQ(service_->directedPickupCall("4711", 7, "4712", true), 0);

    EXPECT_THAT(log_.texts(),
                ElementsAre("5 directedPickupCall (lineURI=4711, callID = 7, callToBePickedUp=4712, BLFPickup=1)",
                            "2 directedPickupCall - BLF pickup - cannot reserve next appearance for line(4711)"));
}

TEST_F(OutgoingCallsTest, DirectedPickupCall_ByNumber_ReservesNothing)
{
    ON_CALL(configuration_, serverType()).WillByDefault(Return(7));
    ON_CALL(configuration_, directedPickupUri()).WillByDefault(Return("*8"));
    EXPECT_CALL(keyset_, reserveNextSCA(_)).Times(0);
    expectRecordBuilt(7);
    EXPECT_CALL(sfi_, CallMake(_, "*84712", 1, 0, false, false, false, false)).WillOnce(Return(sfiSuccess));

    EXPECT_EQ(service_->directedPickupCall("4711", 7, "4712", false), 5);
}

TEST_F(OutgoingCallsTest, DirectedPickupCall_WithoutDialPlan_IsMade)
{
    withoutDialPlan();
    ON_CALL(configuration_, serverType()).WillByDefault(Return(1));
    InSequence order;
    expectRecordBuilt(7);
    expectLocked();
    EXPECT_CALL(pickup_, directedPickupRequest(_, Eq("4712"))).WillOnce(Return(sfiSuccess));
    expectUnlocked();

    EXPECT_EQ(service_->directedPickupCall("4711", 7, "4712", false), 5);
}

}  // namespace
