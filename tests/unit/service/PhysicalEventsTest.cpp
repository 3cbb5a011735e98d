// Subscription to keys and functions, key presses, and plugs.
#include "ServiceTest.h"

namespace {

MATCHER_P3(IsSubscription, kind, identifier, action, "")
{
    return arg.kind == kind && arg.identifier == identifier && arg.action == action;
}

class PhysicalEventsTest : public ServiceTest
{
protected:
    void SetUp() override { initialise(); }

    void phoneIsLocked(bool locked) { EXPECT_CALL(sfi_, IsPhoneLocked()).WillRepeatedly(Return(locked)); }

    void press(int function, int key = 3, int action = 1)
    {
        service_->keyPressedEvent(static_cast<PhysDefs::keyFunctionType>(function), key,
                                  static_cast<PhysDefs::actionType>(action));
    }
};

TEST_F(PhysicalEventsTest, Subscribe_ListsTheGroupsThenTheFunctions)
{
    physicalEventObserver* const physical = service_.get();
    functionalEventObserver* const functional = service_.get();
    InSequence order;
    EXPECT_CALL(physical_, subscribePhysicalEvents(physical, _)).WillOnce([](auto*, auto& groups) {
        EXPECT_THAT(groups, ElementsAre(IsSubscription(8, 6, 1), IsSubscription(1, 2, 2), IsSubscription(0, 1, 4),
                                        IsSubscription(8, 4, 1)));
        return false;
    });
    EXPECT_CALL(physical_, subscribeFunctionalEvents(functional, _)).WillOnce([](auto*, auto& functions) {
        EXPECT_THAT(functions,
                    ElementsAre(IsSubscription(24, 58, 5), IsSubscription(24, 63, 5), IsSubscription(24, 43, 5)));
        return false;
    });

    service_->subscribePhysicalInterfaceEvents();

    EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(PhysicalEventsTest, Subscribe_WithoutThePhysicalInterface_DoesNothing)
{
    EXPECT_CALL(semaphores_, created(_, _, _)).Times(AnyNumber());
    service_ = std::make_unique<CommunicationsService>();

    service_->subscribePhysicalInterfaceEvents();
}

TEST_F(PhysicalEventsTest, KeyFunctionsOfTheTeamFeatures_ComeWithKeyFunctionAndAction)
{
    phoneIsLocked(false);
    for (int const function : {43, 58, 63}) {
        EXPECT_CALL(features_, HandleButtonPressedEvent(3, static_cast<PhysDefs::keyFunctionType>(function),
                                                        static_cast<PhysDefs::actionType>(2)));

        press(function, 3, 2);
    }

    EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(PhysicalEventsTest, KeyFunctionsOfTheKeyset_ComeAlone)
{
    phoneIsLocked(false);
    for (int const function : {54, 55}) {
        EXPECT_CALL(keyset_, handleButtonPressedEvent(static_cast<PhysDefs::keyFunctionType>(function)));

        press(function);
    }

    EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(PhysicalEventsTest, TheHoldKey_IsForCallControlWhateverKeyAndAction)
{
    phoneIsLocked(false);
    EXPECT_CALL(sfi_, HandleKeyFunction(57)).Times(2);

    press(57, 1, 1);
    press(57, 99, 2);

    EXPECT_THAT(log_.texts(), IsEmpty());
}

TEST_F(PhysicalEventsTest, EveryOtherKeyFunction_IsIgnoredWithALine)
{
    phoneIsLocked(false);
    for (int const function : {-1, 0, 42, 44, 45, 46, 47, 48, 49, 50, 51, 52, 53, 56, 59, 60, 61, 62, 64, 1000}) {
        log_.clear();

        press(function);

        EXPECT_THAT(log_.texts(), ElementsAre("5 Unsupported function - ignored")) << function;
    }
}

TEST_F(PhysicalEventsTest, OnALockedPhone_NoKeyIsPassedOn)
{
    phoneIsLocked(true);
    for (int const function : {43, 54, 57, 58, 99}) {
        log_.clear();

        press(function);

        EXPECT_THAT(log_.texts(), ElementsAre("5 Key presses are ignored while the phone is locked."));
    }
}

TEST_F(PhysicalEventsTest, AButtonPress_LogsItsFunctionUnderTheNameOfTheKey)
{
    phoneIsLocked(false);
    EXPECT_CALL(keyset_, handleButtonPressedEvent(PhysDefs::keyFunctionIgnoreCall));

    service_->buttonPressedEvent(PhysDefs::keyFunctionIgnoreCall, 3, PhysDefs::actionPressed, "unused");

    EXPECT_THAT(log_.texts(), ElementsAre("5 buttonPressedEvent FPK=55)"));
}

TEST_F(PhysicalEventsTest, AButtonPress_PassesKeyAndAction)
{
    phoneIsLocked(false);
    EXPECT_CALL(features_, HandleButtonPressedEvent(3, PhysDefs::keyFunctionForwarding, PhysDefs::actionHeld));

    service_->buttonPressedEvent(PhysDefs::keyFunctionForwarding, 3, PhysDefs::actionHeld, "");
}

TEST_F(PhysicalEventsTest, AFunctionPress_LogsFunctionAndActionAndIsPassedOn)
{
    phoneIsLocked(false);
    EXPECT_CALL(features_, HandleButtonPressedEvent(4, PhysDefs::keyFunctionMessages, PhysDefs::actionReleased));

    service_->functionPressedEvent(PhysDefs::keyFunctionMessages, 4, PhysDefs::actionReleased, "unused");

    EXPECT_THAT(log_.texts(), ElementsAre("5 functionPressedEvent Function=63)(Action=2)"));
}

TEST_F(PhysicalEventsTest, PressesOnALockedPhone_AreLoggedTwice)
{
    phoneIsLocked(true);

    service_->buttonPressedEvent(PhysDefs::keyFunctionForwarding, 3, PhysDefs::actionPressed, "");
    service_->functionPressedEvent(PhysDefs::keyFunctionForwarding, 3, PhysDefs::actionPressed, "");

    EXPECT_THAT(log_.texts(),
                ElementsAre("5 buttonPressedEvent FPK=43)", "5 Key presses are ignored while the phone is locked.",
                            "5 functionPressedEvent Function=43)(Action=1)",
                            "5 Key presses are ignored while the phone is locked."));
}

TEST_F(PhysicalEventsTest, FpkAvailable_IsTold)
{
    EXPECT_CALL(sfi_, NotifyFPKAvailable());

    service_->fpkAvailableEvent();

    EXPECT_THAT(log_.texts(), ElementsAre("5 fpkAvailableEvent"));
}

TEST_F(PhysicalEventsTest, TheHeadsetPlug_IsTold)
{
    InSequence order;
    EXPECT_CALL(sfi_, SetHeadsetPlugged(true));
    EXPECT_CALL(sfi_, SetHeadsetPlugged(false));

    service_->jackEvent(static_cast<PhysDefs::plugIdentifier>(0), static_cast<PhysDefs::plugStatus>(1));
    service_->jackEvent(static_cast<PhysDefs::plugIdentifier>(0), static_cast<PhysDefs::plugStatus>(0));

    EXPECT_THAT(log_.texts(),
                ElementsAre("5 jackEvent plugID 0 , plugStatus 1", "5 jackEvent plugID 0 , plugStatus 0"));
}

TEST_F(PhysicalEventsTest, PlugEight_IsTold)
{
    EXPECT_CALL(sfi_, JackEvent()).Times(2);

    service_->jackEvent(static_cast<PhysDefs::plugIdentifier>(8), static_cast<PhysDefs::plugStatus>(0));
    service_->jackEvent(static_cast<PhysDefs::plugIdentifier>(8), static_cast<PhysDefs::plugStatus>(1));
}

TEST_F(PhysicalEventsTest, OtherPlugsAndStatuses_AreIgnoredAfterTheirLine)
{
    for (int const plug : {1, 7, 9}) {
        service_->jackEvent(static_cast<PhysDefs::plugIdentifier>(plug), PhysDefs::plugIn);
    }
    for (int const status : {2, -1}) {
        service_->jackEvent(PhysDefs::plugHeadset, static_cast<PhysDefs::plugStatus>(status));
        service_->jackEvent(PhysDefs::plugLine, static_cast<PhysDefs::plugStatus>(status));
    }

    EXPECT_THAT(log_.texts(), ElementsAre("5 jackEvent plugID 1 , plugStatus 1", "5 jackEvent plugID 7 , plugStatus 1",
                                          "5 jackEvent plugID 9 , plugStatus 1", "5 jackEvent plugID 0 , plugStatus 2",
                                          "5 jackEvent plugID 8 , plugStatus 2", "5 jackEvent plugID 0 , plugStatus -1",
                                          "5 jackEvent plugID 8 , plugStatus -1"));
}

}  // namespace
