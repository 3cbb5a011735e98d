// Line keys, direct-station-select keys and busy-lamp fields: the look-ups, the locks, and the presses.
#include "ServiceTest.h"

namespace {

class KeysTest : public ServiceTest
{
protected:
    void SetUp() override
    {
        initialise();
        listenToLog();
    }

    void expectLine(std::string const& text) { EXPECT_CALL(logListener_, written(5, text)); }

    void expectPressed(bool withData = true)
    {
        EXPECT_CALL(line_, getLineData()).WillOnce(Return(withData ? &data_ : nullptr));
        if (withData) {
            EXPECT_CALL(data_, setHotWarmLineManual(true));
        }
        EXPECT_CALL(line_, keyPressed());
    }
};

TEST_F(KeysTest, LineKeyPressedFPK_PressesTheKeysLineUnderTheLock)
{
    InSequence order;
    expectLine("lineKeyPressedFPK(4)");
    expectTeamLockTaken();
    EXPECT_CALL(lines_, getLineForFPK(4)).WillOnce(Return(&line_));
    expectPressed();
    expectTeamLockGiven();
    expectLine("lineKeyPressedFPK(4) END");

    service_->lineKeyPressedFPK(4);
}

TEST_F(KeysTest, LineKeyPressedFPK_PressesALineWithoutConfigurationToo)
{
    InSequence order;
    expectLine("lineKeyPressedFPK(4)");
    expectTeamLockTaken();
    EXPECT_CALL(lines_, getLineForFPK(4)).WillOnce(Return(&line_));
    expectPressed(false);
    expectTeamLockGiven();
    expectLine("lineKeyPressedFPK(4) END");

    service_->lineKeyPressedFPK(4);
}

TEST_F(KeysTest, LineKeyPressedFPK_FallsBackToTheIdentifierOfTheKey)
{
    InSequence order;
    expectLine("lineKeyPressedFPK(4)");
    expectTeamLockTaken();
    EXPECT_CALL(lines_, getLineForFPK(4)).WillOnce(Return(nullptr));
    EXPECT_CALL(lines_, getURIforFPK(4)).WillOnce(Return("4711"));
    EXPECT_CALL(lines_, getLine("4711")).WillOnce(Return(&line_));
    expectPressed();
    expectTeamLockGiven();
    expectLine("lineKeyPressedFPK(4) END");

    service_->lineKeyPressedFPK(4);
}

TEST_F(KeysTest, LineKeyPressedFPK_OfAKeyWithoutLine_OnlyLogs)
{
    for (std::string const uri : {"4799", ""}) {
        InSequence order;
        expectLine("lineKeyPressedFPK(4)");
        expectTeamLockTaken();
        EXPECT_CALL(lines_, getLineForFPK(4)).WillOnce(Return(nullptr));
        EXPECT_CALL(lines_, getURIforFPK(4)).WillOnce(Return(uri));
        if (!uri.empty()) {
            EXPECT_CALL(lines_, getLine(uri)).WillOnce(Return(nullptr));
        }
        expectTeamLockGiven();
        expectLine("lineKeyPressedFPK(4) END");

        service_->lineKeyPressedFPK(4);
    }
}

TEST_F(KeysTest, LineKeyPressed_PressesTheLineUnderTheLock)
{
    InSequence order;
    expectLine("lineKeyPressed[4711]");
    expectTeamLockTaken();
    EXPECT_CALL(lines_, getLine("4711")).WillOnce(Return(&line_));
    expectPressed();
    expectTeamLockGiven();
    expectLine("lineKeyPressed[4711] END");

    service_->lineKeyPressed("4711");
}

TEST_F(KeysTest, LineKeyPressed_OfAnUnknownLine_OnlyLogs)
{
    InSequence order;
    expectLine("lineKeyPressed[4799]");
    expectTeamLockTaken();
    EXPECT_CALL(lines_, getLine("4799")).WillOnce(Return(nullptr));
    expectTeamLockGiven();
    expectLine("lineKeyPressed[4799] END");

    service_->lineKeyPressed("4799");
}

TEST_F(KeysTest, LineKeyPressed_OfNoLine_LooksNothingUp)
{
    InSequence order;
    expectLine("lineKeyPressed[]");
    expectTeamLockTaken();
    expectTeamLockGiven();
    expectLine("lineKeyPressed[] END");

    service_->lineKeyPressed("");
}

class StationKeysTest : public KeysTest
{
protected:
    void expectEntry(int context)
    {
        expectLine("dssKeyPressedFPK (keyNumber = 4, context = " + std::to_string(context) +
                   ", digits = 12, ringingLineURI = 4713)");
    }

    void expectStation(int state)
    {
        EXPECT_CALL(lines_, getDSSLineForFPK(4)).WillOnce(Return(&station_));
        EXPECT_CALL(station_, getLineData()).WillOnce(Return(&data_));
        EXPECT_CALL(station_, getLineState()).WillOnce(Return(static_cast<ELineState>(state)));
    }

    // Expects the press of the key's line.
    void expectPassedOn(int context)
    {
        expectTeamLockTaken();
        EXPECT_CALL(lines_, getURIforFPK(4)).WillOnce(Return("4711"));
        EXPECT_CALL(lines_, getLine("4711")).WillOnce(Return(&line_));
        EXPECT_CALL(line_, dssKeyPressed(static_cast<EDSSContext>(context), "12", "4713"));
        expectTeamLockGiven();
    }

    void press(int context) { service_->dssKeyPressedFPK(4, static_cast<EDSSContext>(context), "12", "4713"); }

    StrictMock<MockLine> station_;
};

TEST_F(StationKeysTest, AStationThatIsFree_IsPressedInEveryContext)
{
    for (int const context : {0, 1, 2, 3, 4}) {
        for (int const state : {0, 5, 7}) {
            InSequence order;
            expectEntry(context);
            expectStation(state);
            expectPassedOn(context);

            press(context);
        }
    }
}

TEST_F(StationKeysTest, AKeyWithoutStation_IsPressed)
{
    InSequence order;
    expectEntry(2);
    EXPECT_CALL(lines_, getDSSLineForFPK(4)).WillOnce(Return(nullptr));
    expectPassedOn(2);

    press(2);
}

TEST_F(StationKeysTest, AStationWithoutConfiguration_IsPressed)
{
    InSequence order;
    expectEntry(2);
    EXPECT_CALL(lines_, getDSSLineForFPK(4)).WillOnce(Return(&station_));
    EXPECT_CALL(station_, getLineData()).WillOnce(Return(nullptr));
    expectPassedOn(2);

    press(2);
}

TEST_F(StationKeysTest, ABusyStation_CannotBeTransferredTo)
{
    InSequence order;
    expectEntry(2);
    expectStation(6);
    EXPECT_CALL(lines_, getLocalHeldLine()).WillOnce(Return("4711"));
    EXPECT_CALL(lines_, getLine("4711")).WillOnce(Return(&line_));
    EXPECT_CALL(line_, getLineID()).WillOnce(Return(200));
    EXPECT_CALL(sfi_, SendFeatureFailureNotification(200, 2, 3));

    press(2);
}

TEST_F(StationKeysTest, ABusyStationWithoutAHeldLine_IsAFailureToReport)
{
    for (std::string const held : {"4711", ""}) {
        InSequence order;
        expectEntry(2);
        expectStation(6);
        EXPECT_CALL(lines_, getLocalHeldLine()).WillOnce(Return(held));
        if (!held.empty()) {
            EXPECT_CALL(lines_, getLine(held)).WillOnce(Return(nullptr));
        }
        EXPECT_CALL(logListener_, written(2, "dssKeyPressedFPK - cannot find local held line; cannot send feature "
                                             "failure notification for blind transfer"));

        press(2);
    }
}

TEST_F(StationKeysTest, ABusyStationToWatchOnly_IsNotPressed)
{
    for (int const context : {0, 1, 3, 4}) {
        InSequence order;
        expectEntry(context);
        expectStation(6);
        EXPECT_CALL(data_, getDSSMonitorOnly()).WillOnce(Return(true));

        press(context);
    }
}

TEST_F(StationKeysTest, ABusyStationThatMayBeCalled_IsPressed)
{
    for (int const context : {0, 1, 3, 4}) {
        InSequence order;
        expectEntry(context);
        expectStation(6);
        EXPECT_CALL(data_, getDSSMonitorOnly()).WillOnce(Return(false));
        expectPassedOn(context);

        press(context);
    }
}

TEST_F(StationKeysTest, AKeyThatNamesNoLine_GivesTheLockBack)
{
    for (std::string const uri : {"4799", ""}) {
        InSequence order;
        expectEntry(0);
        EXPECT_CALL(lines_, getDSSLineForFPK(4)).WillOnce(Return(nullptr));
        expectTeamLockTaken();
        EXPECT_CALL(lines_, getURIforFPK(4)).WillOnce(Return(uri));
        if (!uri.empty()) {
            EXPECT_CALL(lines_, getLine(uri)).WillOnce(Return(nullptr));
        }
        expectTeamLockGiven();

        press(0);
    }
}

TEST_F(KeysTest, DssKeyPressed_PressesTheLineWithoutALogLine)
{
    InSequence order;
    expectTeamLockTaken();
    EXPECT_CALL(lines_, getLine("4711")).WillOnce(Return(&line_));
    EXPECT_CALL(line_, dssKeyPressed(eDSSContextPickup, "12", "4713"));
    expectTeamLockGiven();
    expectTeamLockTaken();
    EXPECT_CALL(lines_, getLine("4799")).WillOnce(Return(nullptr));
    expectTeamLockGiven();
    expectTeamLockTaken();
    expectTeamLockGiven();

    service_->dssKeyPressed("4711", eDSSContextPickup, "12", "4713");
    service_->dssKeyPressed("4799", eDSSContextPickup, "12", "4713");
    service_->dssKeyPressed("", eDSSContextPickup, "12", "4713");

    EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(KeysTest, BlfKeyPressedFPK_LogsUnderTheLock)
{
    InSequence order;
    for (bool const transfer : {true, false}) {
        expectTeamLockTaken();
        expectLine(transfer ? "blfKeyPressedFPK keyNumber(4), transfer(1)"
                            : "blfKeyPressedFPK keyNumber(4), transfer(0)");
        EXPECT_CALL(features_, blfKeyPressedFPK(4, transfer));
        expectTeamLockGiven();

        service_->blfKeyPressedFPK(4, transfer);
    }
}

TEST_F(KeysTest, SetDNDStatusForBLF_LogsUnderTheLock)
{
    InSequence order;
    for (bool const on : {true, false}) {
        expectTeamLockTaken();
        expectLine(on ? "setDNDStatusForBLF BLFLEDcontrolURI(4712), dndOn(true)"
                      : "setDNDStatusForBLF BLFLEDcontrolURI(4712), dndOn(false)");
        EXPECT_CALL(features_, setDNDStatusForBLF("4712", on));
        expectTeamLockGiven();

        service_->setDNDStatusForBLF("4712", on);
    }
}

TEST_F(KeysTest, RequestOverviewData_IsForTheLineManagerUnderTheLock)
{
    InSequence order;
    expectTeamLockTaken();
    EXPECT_CALL(lines_, requestOverviewData("4711"));
    expectTeamLockGiven();
    expectTeamLockTaken();
    expectTeamLockGiven();

    service_->requestOverviewData("4711");
    service_->requestOverviewData("");

    EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(KeysTest, APressThatFailsByException_GivesTheLockBack)
{
    InSequence order;
    expectLine("lineKeyPressed[4711]");
    expectTeamLockTaken();
    EXPECT_CALL(lines_, getLine("4711")).WillOnce(testing::Throw(std::runtime_error("no line")));
    expectTeamLockGiven();

    EXPECT_THROW(service_->lineKeyPressed("4711"), std::runtime_error);
}

}  // namespace
