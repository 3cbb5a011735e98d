// Keys, plugs, lamps and how to subscribe to them. Numbers are those of the telephone's physical interface.
#pragma once

namespace PhysDefs {

// The function of a key. The first group belongs to the key application, which reports the presses to the service by
// key number; the others reach the service as presses.
enum keyFunctionType : int
{
    keyFunctionNone = 0,
    keyFunctionForwarding = 43,
    keyFunctionLine = 44,
    keyFunctionDirectStation = 45,
    keyFunctionBusyLampField = 46,
    keyFunctionFeatureToggle = 47,
    keyFunctionMute = 48,
    keyFunctionHeadset = 49,
    keyFunctionSpeaker = 50,
    keyFunctionRelease = 51,
    keyFunctionPreview = 54,
    keyFunctionIgnoreCall = 55,
    keyFunctionHold = 57,
    keyFunctionDoNotDisturb = 58,
    keyFunctionMessages = 63,
    keyFunctionTransfer = 70,  // the next direct-station or busy-lamp key transfers the call
};

enum actionType : int
{
    actionNone = 0,
    actionPressed = 1,
    actionReleased = 2,
    actionHeld = 3,
    actionChanged = 4,
    actionAny = 5,
};

enum plugIdentifier : int
{
    plugHeadset = 0,
    plugHandset = 1,
    plugLine = 8,
};

enum plugStatus : int
{
    plugOut = 0,
    plugIn = 1,
};

enum hotplugAction : int
{
    hotplugAdded = 0,
    hotplugRemoved = 1,
};

enum hotplugBus : int
{
    hotplugUsb = 0,
    hotplugBluetooth = 1,
};

enum hotplugClass : int
{
    hotplugOther = 0,
    hotplugAudio = 1,
};

enum lampMode : int
{
    lampOff = 0,
    lampSteady = 1,
    lampFlashing = 2,
    lampFluttering = 3,
};

enum lampColour : int
{
    lampNoColour = 0,
    lampRed = 1,
    lampGreen = 2,
    lampAmber = 3,
};

// Lamps that the service sets by number.
constexpr int kLampHold = 10;
constexpr int kLampSecondAlert = 69;

// One subscription: a kind of event, which of it, and which action on it. Lists hold it by value, so that a subclass
// only fixes the kind when it is made.
class SubscriptionGrp
{
public:
    SubscriptionGrp(int kindOfEvent, int whichOne, int actionOnIt)
        : kind(kindOfEvent)
        , identifier(whichOne)
        , action(actionOnIt)
    {}
    SubscriptionGrp(SubscriptionGrp const&) = default;
    SubscriptionGrp& operator=(SubscriptionGrp const&) = default;
    virtual ~SubscriptionGrp() = default;

    int kind;
    int identifier;
    int action;
};

class KeyGrpButtonEvents : public SubscriptionGrp
{
public:
    KeyGrpButtonEvents(int keyGroup, int actionOnIt)
        : SubscriptionGrp(8, keyGroup, actionOnIt)
    {}
};

class KeyGrpOther : public SubscriptionGrp
{
public:
    KeyGrpOther(int keyGroup, int actionOnIt)
        : SubscriptionGrp(1, keyGroup, actionOnIt)
    {}
};

class ActionGrp : public SubscriptionGrp
{
public:
    ActionGrp(int actionGroup, int actionOnIt)
        : SubscriptionGrp(0, actionGroup, actionOnIt)
    {}
};

class FunctionalEventSubscription : public SubscriptionGrp
{
public:
    FunctionalEventSubscription(int keyFunction, int actionOnIt)
        : SubscriptionGrp(24, keyFunction, actionOnIt)
    {}
};

}  // namespace PhysDefs
