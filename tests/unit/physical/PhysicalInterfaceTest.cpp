#include "telephone/physical/PhysicalInterface.h"

#include <atomic>
#include <stdexcept>
#include <thread>

#include <gmock/gmock.h>

#include "platform/framework/Executable.h"
#include "platform/framework/SvcRTEContext.h"
#include "platform/physical/functionalEventObserver.h"
#include "platform/physical/physicalEventObserver.h"
#include "telephone/management/ConfigurationStore.h"
#include "telephone/management/Settings.h"

namespace telephone {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace std::chrono_literals;

// Subscribes as the service does.
class Subscriber final : public physicalEventObserver, public functionalEventObserver
{
public:
    void subscribeTo(PhysicalInterface& keys)
    {
        std::vector<PhysDefs::SubscriptionGrp> physical{PhysDefs::KeyGrpButtonEvents(6, 1), PhysDefs::KeyGrpOther(2, 2),
                                                        PhysDefs::ActionGrp(1, 4), PhysDefs::KeyGrpButtonEvents(4, 1)};
        std::vector<PhysDefs::SubscriptionGrp> functional{PhysDefs::FunctionalEventSubscription(58, 5),
                                                          PhysDefs::FunctionalEventSubscription(63, 5),
                                                          PhysDefs::FunctionalEventSubscription(43, 5)};
        EXPECT_TRUE(keys.subscribePhysicalEvents(this, physical));
        EXPECT_TRUE(keys.subscribeFunctionalEvents(this, functional));
    }

    void buttonPressedEvent(PhysDefs::keyFunctionType function, int key, PhysDefs::actionType action,
                            std::string text) override
    {
        note("button", function, key, action, text);
    }
    void functionPressedEvent(PhysDefs::keyFunctionType function, int key, PhysDefs::actionType action,
                              std::string text) override
    {
        note("function", function, key, action, text);
    }
    void hookswitchEvent(PhysDefs::actionType action) override { seen.push_back("hook " + std::to_string(action)); }
    void jackEvent(PhysDefs::plugIdentifier plug, PhysDefs::plugStatus status) override
    {
        seen.push_back("plug " + std::to_string(plug) + " " + std::to_string(status));
    }
    void fpkAvailableEvent() override { seen.push_back("available"); }
    void lampEvent(int lamp, PhysDefs::lampMode mode, PhysDefs::lampColour colour) override
    {
        seen.push_back("lamp " + std::to_string(lamp) + " " + std::to_string(mode) + " " + std::to_string(colour));
    }

    // Written on the thread of the keys; read after a flush.
    std::vector<std::string> seen;

private:
    void note(std::string kind, int function, int key, int action, std::string const& text)
    {
        seen.push_back(kind + " " + std::to_string(function) + " key " + std::to_string(key) + " action " +
                       std::to_string(action) + " " + text);
    }
};

class Handler final : public KeyHandler
{
public:
    void keyPressed(PhoneKey const& key) override { pressed.push_back(key.number()); }
    void hookChanged(bool up) override { hooks.push_back(up); }
    void plugChanged(PhysDefs::plugIdentifier, bool) override {}

    std::vector<int> pressed;
    std::vector<bool> hooks;
};

std::string reasonOf(Outcome<> const& outcome)
{
    return outcome ? std::string() : outcome.error().reason;
}

class PhysicalInterfaceTest : public testing::Test
{
protected:
    PhysicalInterfaceTest()
        : configuration_(Configuration::standard())
        , keys_(configuration_)
    {}
    ~PhysicalInterfaceTest() override { keys_.shutdown(); }

    std::vector<std::string> seen()
    {
        keys_.flush();
        return std::exchange(subscriber_.seen, {});
    }

    Configuration configuration_;
    PhysicalInterface keys_;
    Subscriber subscriber_;
    Handler handler_;
};

TEST_F(PhysicalInterfaceTest, Subscriber_IsFirstToldThatTheKeysAreReady)
{
    subscriber_.subscribeTo(keys_);
    EXPECT_THAT(seen(), ElementsAre("available"));
}

TEST_F(PhysicalInterfaceTest, FunctionKeys_ReachTheirSubscribers_WhenPressedAndWhenReleased)
{
    subscriber_.subscribeTo(keys_);
    seen();
    EXPECT_TRUE(keys_.press("6"));
    EXPECT_TRUE(keys_.release("6"));
    EXPECT_TRUE(keys_.press("messages"));
    EXPECT_TRUE(keys_.press("Forward"));

    EXPECT_THAT(seen(),
                ElementsAre("function 58 key 6 action 1 Do not disturb", "function 58 key 6 action 2 Do not disturb",
                            "function 63 key 10 action 1 Messages", "function 43 key 5 action 1 Forward"));
}

TEST_F(PhysicalInterfaceTest, Buttons_ReachTheirSubscribers_WhenPressedOnly)
{
    subscriber_.subscribeTo(keys_);
    seen();
    for (auto const* const key : {"hold", "preview", "ignore"}) {
        EXPECT_TRUE(keys_.press(key));
        EXPECT_TRUE(keys_.release(key));
    }

    EXPECT_THAT(seen(), ElementsAre("button 57 key 7 action 1 Hold", "button 54 key 13 action 1 Preview",
                                    "button 55 key 14 action 1 Ignore"));
}

TEST_F(PhysicalInterfaceTest, OtherKeys_BelongToTheKeyApplication)
{
    subscriber_.subscribeTo(keys_);
    keys_.setKeyHandler(&handler_);
    seen();
    for (auto const* const key : {"1", "3", "4", "8", "9", "11", "12"}) {
        EXPECT_TRUE(keys_.press(key));
    }

    EXPECT_THAT(seen(), IsEmpty());
    EXPECT_THAT(handler_.pressed, ElementsAre(1, 3, 4, 8, 9, 11, 12));
    keys_.setKeyHandler(nullptr);
}

TEST_F(PhysicalInterfaceTest, KeyOutsideTheLayout_IsRefusedWithTheRangeOfTheLayout)
{
    EXPECT_EQ(reasonOf(keys_.press("0")), "there is no key \"0\"; the layout has 1 to 15");
    EXPECT_EQ(reasonOf(keys_.press("16")), "there is no key \"16\"; the layout has 1 to 15");
    EXPECT_EQ(reasonOf(keys_.press("-1")), "there is no key \"-1\"; the layout has 1 to 15");
    EXPECT_EQ(reasonOf(keys_.release("99999999999999999999")),
              "there is no key \"99999999999999999999\"; the layout has 1 to 15");
    EXPECT_EQ(reasonOf(keys_.press("")), "there is no key \"\"; the layout has 1 to 15");
    EXPECT_EQ(reasonOf(keys_.press("Hold it")), "there is no key \"Hold it\"; the layout has 1 to 15");
}

TEST_F(PhysicalInterfaceTest, Release_OfAKeyThatIsNotPressed_IsRefused)
{
    EXPECT_EQ(reasonOf(keys_.release("1")), "key 1 is not pressed");
    EXPECT_TRUE(keys_.press("1"));
    EXPECT_TRUE(keys_.release("1"));
    EXPECT_EQ(reasonOf(keys_.release("1")), "key 1 is not pressed");
}

TEST_F(PhysicalInterfaceTest, HookAndPlugs_ReachTheirSubscribers)
{
    subscriber_.subscribeTo(keys_);
    keys_.setKeyHandler(&handler_);
    seen();
    EXPECT_EQ(keys_.getHeadsetJackStatus(), PhysDefs::plugOut);
    EXPECT_TRUE(keys_.hook(true));
    EXPECT_EQ(reasonOf(keys_.hook(true)), "the handset is already off the hook");
    EXPECT_TRUE(keys_.plug("headset", true));
    EXPECT_EQ(keys_.getHeadsetJackStatus(), PhysDefs::plugIn);
    EXPECT_TRUE(keys_.plug("line", false));
    EXPECT_TRUE(keys_.hook(false));
    EXPECT_EQ(reasonOf(keys_.plug("socket", true)),
              "there is no plug \"socket\"; the plugs are headset, handset and line");

    EXPECT_THAT(seen(), ElementsAre("hook 2", "plug 0 1", "plug 8 0", "hook 1"));
    EXPECT_THAT(handler_.hooks, ElementsAre(true, false));
    keys_.setKeyHandler(nullptr);
}

TEST_F(PhysicalInterfaceTest, SubscriptionWithoutAKnownEvent_IsRefused)
{
    std::vector<PhysDefs::SubscriptionGrp> unknown{PhysDefs::KeyGrpButtonEvents(99, 1),
                                                   PhysDefs::FunctionalEventSubscription(57, 5)};
    std::vector<PhysDefs::SubscriptionGrp> none;
    std::vector<PhysDefs::SubscriptionGrp> known{PhysDefs::KeyGrpButtonEvents(6, 1)};

    EXPECT_FALSE(keys_.subscribePhysicalEvents(&subscriber_, unknown));
    EXPECT_FALSE(keys_.subscribePhysicalEvents(&subscriber_, none));
    EXPECT_FALSE(keys_.subscribePhysicalEvents(nullptr, known));
    EXPECT_FALSE(keys_.subscribeFunctionalEvents(&subscriber_, unknown));
}

TEST_F(PhysicalInterfaceTest, Lamps_AreSetByNumber_AndReadByKeyLabelAndName)
{
    keys_.setLamp(10, PhysDefs::lampFlashing, PhysDefs::lampGreen, 0);
    keys_.setLamp(69, PhysDefs::lampFluttering, PhysDefs::lampAmber, 0);
    keys_.setLamp(11, PhysDefs::lampSteady, PhysDefs::lampRed, 0);
    keys_.setLamp(10, 9, PhysDefs::lampRed, 0);

    EXPECT_EQ(keys_.lampMode("Hold"), "flashing");
    EXPECT_EQ(keys_.lampMode("7"), "flashing");
    EXPECT_EQ(keys_.lampMode("hold"), "flashing");
    EXPECT_EQ(keys_.lampMode("SecondAlert"), "fluttering");
    EXPECT_EQ(keys_.lampMode("11"), "off");
    EXPECT_EQ(keys_.lampMode("69"), std::nullopt);
    EXPECT_EQ(keys_.lampMode("nothing"), std::nullopt);
}

TEST_F(PhysicalInterfaceTest, Lamps_AreThoseOfTheKeysAndTwoMore)
{
    keys_.setLamp(69, PhysDefs::lampFlashing, PhysDefs::lampAmber, 0);
    keys_.lampBoard().setKey(1, {PhysDefs::lampSteady, PhysDefs::lampGreen});
    auto const lamps = keys_.lampBoard().lamps();

    ASSERT_EQ(lamps.size(), 17U);
    EXPECT_EQ(lamps[0].key, 1);
    EXPECT_EQ(lamps[0].lamp, (Lamp{PhysDefs::lampSteady, PhysDefs::lampGreen}));
    EXPECT_EQ(lamps[14].key, 15);
    EXPECT_EQ(lamps[14].lamp, Lamp());
    EXPECT_EQ(lamps[15].key, 0);
    EXPECT_EQ(lamps[15].name, "Hold");
    EXPECT_EQ(lamps[16].name, "SecondAlert");
    EXPECT_EQ(lamps[16].lamp, (Lamp{PhysDefs::lampFlashing, PhysDefs::lampAmber}));
}

TEST_F(PhysicalInterfaceTest, LampEvents_ReachSubscribersToLamps)
{
    std::vector<PhysDefs::SubscriptionGrp> lamps{PhysDefs::ActionGrp(2, 4)};
    ASSERT_TRUE(keys_.subscribePhysicalEvents(&subscriber_, lamps));
    keys_.setLamp(10, PhysDefs::lampSteady, PhysDefs::lampGreen, 0);
    keys_.setLamp(10, PhysDefs::lampSteady, PhysDefs::lampGreen, 0);
    keys_.setLamp(10, PhysDefs::lampOff, PhysDefs::lampGreen, 0);

    EXPECT_THAT(seen(), ElementsAre("lamp 10 1 2", "lamp 10 0 0"));
}

TEST_F(PhysicalInterfaceTest, ForwardingCleared_SwitchesItsLampsOff)
{
    keys_.lampBoard().setKey(5, {PhysDefs::lampSteady, PhysDefs::lampAmber});
    keys_.forwardingCleared();
    EXPECT_EQ(keys_.lampMode("forwarding"), "off");
}

// Four people press at once, far more than a thousand times a second: nothing is lost and each one's order is kept.
TEST_F(PhysicalInterfaceTest, ThousandsOfPresses_AreAllHandled_InOrder)
{
    constexpr int kPresses = 1000;
    subscriber_.subscribeTo(keys_);
    keys_.setKeyHandler(&handler_);
    seen();
    std::vector<std::thread> people;
    std::atomic<int> refused{0};
    auto const begin = std::chrono::steady_clock::now();
    for (std::string const key : {"5", "6", "10", "1"}) {
        people.emplace_back([this, key, &refused] {
            for (int press = 0; press < kPresses; ++press) {
                refused += keys_.press(key) ? 0 : 1;
                refused += keys_.release(key) ? 0 : 1;
            }
        });
    }
    for (auto& person : people) {
        person.join();
    }
    auto const all = seen();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 4s);

    EXPECT_EQ(refused, 0);
    ASSERT_EQ(all.size(), 6000U);
    bool pressed = false;
    int presses = 0;
    for (auto const& event : all) {
        if (event.rfind("function 58", 0) == 0) {
            EXPECT_EQ(event, pressed ? "function 58 key 6 action 2 Do not disturb"
                                     : "function 58 key 6 action 1 Do not disturb");
            pressed = !pressed;
            ++presses;
        }
    }
    EXPECT_EQ(presses, 2000);
    EXPECT_EQ(handler_.pressed.size(), 4000U);
    keys_.setKeyHandler(nullptr);
}

TEST_F(PhysicalInterfaceTest, Presses_AfterTheEnd_AreRefused)
{
    keys_.shutdown();
    EXPECT_EQ(reasonOf(keys_.press("1")), "the keys have stopped because the telephone is ending");
}

TEST_F(PhysicalInterfaceTest, BouncingKeys_PressSeveralTimesWithAReleaseBetween)
{
    subscriber_.subscribeTo(keys_);
    keys_.setKeyHandler(&handler_);
    seen();
    keys_.setPresses(3);
    EXPECT_TRUE(keys_.press("6"));
    EXPECT_TRUE(keys_.release("6"));
    keys_.flush();
    keys_.setPresses(1);
    EXPECT_TRUE(keys_.press("6"));

    EXPECT_THAT(seen(),
                ElementsAre("function 58 key 6 action 1 Do not disturb", "function 58 key 6 action 2 Do not disturb",
                            "function 58 key 6 action 1 Do not disturb", "function 58 key 6 action 2 Do not disturb",
                            "function 58 key 6 action 1 Do not disturb", "function 58 key 6 action 2 Do not disturb",
                            "function 58 key 6 action 1 Do not disturb"));
    EXPECT_THAT(handler_.pressed, ElementsAre(6, 6, 6, 6));
    keys_.setKeyHandler(nullptr);
}

TEST_F(PhysicalInterfaceTest, StuckLamps_StayAndThenTakeTheirLatestMode)
{
    std::vector<PhysDefs::SubscriptionGrp> lamps{PhysDefs::ActionGrp(2, 4)};
    EXPECT_TRUE(keys_.subscribePhysicalEvents(&subscriber_, lamps));
    keys_.lampBoard().setKey(1, {PhysDefs::lampSteady, PhysDefs::lampGreen});
    seen();
    keys_.lampBoard().setStuck(true);
    keys_.lampBoard().setKey(1, {});
    keys_.lampBoard().setKey(2, {PhysDefs::lampSteady, PhysDefs::lampRed});
    keys_.lampBoard().setKey(2, {PhysDefs::lampFlashing, PhysDefs::lampRed});

    EXPECT_EQ(keys_.lampMode("1"), "steady");
    EXPECT_EQ(keys_.lampMode("2"), "off");
    EXPECT_THAT(seen(), IsEmpty());
    keys_.lampBoard().setStuck(false);
    EXPECT_EQ(keys_.lampMode("1"), "off");
    EXPECT_EQ(keys_.lampMode("2"), "flashing");
    EXPECT_THAT(seen(), ElementsAre("lamp 1 0 0", "lamp 2 2 1"));
}

}  // namespace
}  // namespace telephone
