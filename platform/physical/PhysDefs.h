/// @file
/// Keys, plugs, lamps and how to subscribe to them. Numbers are those of the telephone's physical interface.
#pragma once

/// Numbers of the physical interface.
namespace PhysDefs {

/// The function of a key. Of the presses that reach it the service acts on Forwarding, DoNotDisturb and Messages (team
/// features), Preview and IgnoreCall (keyset) and Hold (call control); it logs and ignores any other. Line and station
/// keys belong to the key application, which reports them by key number.
enum keyFunctionType : int
{
    keyFunctionNone = 0,            ///< a key without function
    keyFunctionForwarding = 43,     ///< switches forwarding of every call
    keyFunctionLine = 44,           ///< seizes, answers, holds or retrieves on a line
    keyFunctionDirectStation = 45,  ///< calls or transfers to a party, and shows its state
    keyFunctionBusyLampField = 46,  ///< shows a party's state and picks up its calls
    keyFunctionFeatureToggle = 47,  ///< switches a feature of the call server
    keyFunctionMute = 48,           ///< mutes the microphone
    keyFunctionHeadset = 49,        ///< the hook switch of the headset
    keyFunctionSpeaker = 50,        ///< the loudspeaker's key
    keyFunctionRelease = 51,        ///< goes on hook
    keyFunctionPreview = 54,        ///< shows the next ringing line
    keyFunctionIgnoreCall = 55,     ///< silences a ringing line
    keyFunctionHold = 57,           ///< holds the active call, or retrieves one
    keyFunctionDoNotDisturb = 58,   ///< switches do-not-disturb
    keyFunctionMessages = 63,       ///< calls the mailbox
    keyFunctionTransfer = 70,       ///< the next direct-station or busy-lamp key transfers the call
};

/// What happened to a key or switch; in a subscription, what is to be reported.
enum actionType : int
{
    actionNone = 0,      ///< nothing
    actionPressed = 1,   ///< pressed
    actionReleased = 2,  ///< released
    actionHeld = 3,      ///< held down
    actionChanged = 4,   ///< changed its position
    actionAny = 5,       ///< in a subscription: every action
};

/// A jack of the telephone.
enum plugIdentifier : int
{
    plugHeadset = 0,  ///< the headset's
    plugHandset = 1,  ///< the handset's
    plugLine = 8,     ///< the network line's
};

/// Whether a plug is in its jack.
enum plugStatus : int
{
    plugOut = 0,  ///< pulled out
    plugIn = 1,   ///< plugged in
};

/// What happened to a device that can be added while the telephone runs.
enum hotplugAction : int
{
    hotplugAdded = 0,    ///< it was added
    hotplugRemoved = 1,  ///< it was removed
};

/// How such a device is connected.
enum hotplugBus : int
{
    hotplugUsb = 0,        ///< by USB
    hotplugBluetooth = 1,  ///< by Bluetooth
};

/// What such a device is.
enum hotplugClass : int
{
    hotplugOther = 0,  ///< anything else
    hotplugAudio = 1,  ///< a sound device
};

/// How a lamp shines.
enum lampMode : int
{
    lampOff = 0,         ///< dark
    lampSteady = 1,      ///< steadily
    lampFlashing = 2,    ///< on and off
    lampFluttering = 3,  ///< on and off, quickly
};

/// The colour of a lamp.
enum lampColour : int
{
    lampNoColour = 0,  ///< the lamp's usual one
    lampRed = 1,       ///< red
    lampGreen = 2,     ///< green
    lampAmber = 3,     ///< amber
};

constexpr int kLampHold = 10;         ///< the lamp "Hold" of setLampMode
constexpr int kLampSecondAlert = 69;  ///< the lamp "SecondAlert" of setLampMode

/// One subscription: a kind of event, which of it, and which action on it. Lists hold it by value, so a subclass only
/// fixes the kind when it is made.
class SubscriptionGrp
{
public:
    /// A subscription.
    /// @param kindOfEvent the kind; see the subclasses
    /// @param whichOne the group or function
    /// @param actionOnIt an actionType
    SubscriptionGrp(int kindOfEvent, int whichOne, int actionOnIt)
        : kind(kindOfEvent)
        , identifier(whichOne)
        , action(actionOnIt)
    {}
    /// Copies the three numbers.
    SubscriptionGrp(SubscriptionGrp const&) = default;
    /// Copies the three numbers.
    /// @return This one.
    SubscriptionGrp& operator=(SubscriptionGrp const&) = default;
    /// Lists destroy what they hold.
    virtual ~SubscriptionGrp() = default;

    int kind;        ///< the kind of event
    int identifier;  ///< the group or function
    int action;      ///< an actionType
};

/// Presses of the buttons of one key group: kind 8.
class KeyGrpButtonEvents : public SubscriptionGrp
{
public:
    /// Subscribes to a key group; `actionOnIt` is an actionType.
    KeyGrpButtonEvents(int keyGroup, int actionOnIt)
        : SubscriptionGrp(8, keyGroup, actionOnIt)
    {}
};

/// Events of jacks and other switches: kind 1.
class KeyGrpOther : public SubscriptionGrp
{
public:
    /// Subscribes to a group; `actionOnIt` is an actionType.
    KeyGrpOther(int keyGroup, int actionOnIt)
        : SubscriptionGrp(1, keyGroup, actionOnIt)
    {}
};

/// Events of the hook switch and the lamps: kind 0.
class ActionGrp : public SubscriptionGrp
{
public:
    /// Subscribes to a group; `actionOnIt` is an actionType.
    ActionGrp(int actionGroup, int actionOnIt)
        : SubscriptionGrp(0, actionGroup, actionOnIt)
    {}
};

/// Presses of the keys of one function: kind 24.
class FunctionalEventSubscription : public SubscriptionGrp
{
public:
    /// Subscribes to a function, a keyFunctionType; `actionOnIt` is an actionType.
    FunctionalEventSubscription(int keyFunction, int actionOnIt)
        : SubscriptionGrp(24, keyFunction, actionOnIt)
    {}
};

}  // namespace PhysDefs
