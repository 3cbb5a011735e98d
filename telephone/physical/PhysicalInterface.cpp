#include "telephone/physical/PhysicalInterface.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include <spdlog/fmt/fmt.h>

#include "platform/physical/functionalEventObserver.h"
#include "platform/physical/physicalEventObserver.h"
#include "telephone/framework/Log.h"
#include "telephone/management/Settings.h"

namespace telephone {

namespace {

constexpr char const* kComponent = "keys";

// Kinds and identifiers of subscriptions; see the table at the head of the header.
constexpr int kActionKind = 0;
constexpr int kHookGroup = 1;
constexpr int kLampGroup = 2;
constexpr int kOtherKind = 1;
constexpr int kPlugGroup = 2;
constexpr int kButtonKind = 8;
constexpr int kFunctionKind = 24;

struct GroupRow
{
    int kind;
    int identifier;
};
constexpr std::array kPhysicalGroups{
    GroupRow{kButtonKind, kKeysetButtons}, GroupRow{kButtonKind, kCallButtons}, GroupRow{kOtherKind, kPlugGroup},
    GroupRow{kActionKind, kHookGroup},     GroupRow{kActionKind, kLampGroup},
};

struct PlugRow
{
    std::string_view name;
    PhysDefs::plugIdentifier plug;
};
constexpr std::array kPlugs{
    PlugRow{"headset", PhysDefs::plugHeadset},
    PlugRow{"handset", PhysDefs::plugHandset},
    PlugRow{"line", PhysDefs::plugLine},
};
constexpr std::size_t kHeadsetPlug = 0;

bool isPhysicalGroup(PhysDefs::SubscriptionGrp const& group)
{
    return std::any_of(kPhysicalGroups.begin(), kPhysicalGroups.end(), [&group](GroupRow const& row) {
        return row.kind == group.kind && row.identifier == group.identifier;
    });
}

bool isFunctionGroup(PhysDefs::SubscriptionGrp const& group)
{
    auto const& rows = keyFunctionRows();
    return group.kind == kFunctionKind && std::any_of(rows.begin(), rows.end(), [&group](KeyFunctionRow const& row) {
               return row.functional && row.function == group.identifier;
           });
}

// Only buttons and functions tell actions apart.
bool covers(PhysDefs::SubscriptionGrp const& group, int kind, int identifier, PhysDefs::actionType action)
{
    bool const anyAction = kind == kActionKind || kind == kOtherKind || group.action == PhysDefs::actionAny;
    return group.kind == kind && group.identifier == identifier && (anyAction || group.action == action);
}

// Adds what is known of `groups` to what an observer has; false when nothing is.
template <typename Subscribers, typename Observer, typename IsKnown>
bool addSubscription(Subscribers& subscribers, Observer* observer, std::vector<PhysDefs::SubscriptionGrp> const& groups,
                     IsKnown isKnown)
{
    std::vector<PhysDefs::SubscriptionGrp> known;
    std::copy_if(groups.begin(), groups.end(), std::back_inserter(known), isKnown);
    if (observer == nullptr || known.empty()) {
        return false;
    }
    auto subscriber = std::find_if(subscribers.begin(), subscribers.end(),
                                   [observer](auto const& each) { return each.observer == observer; });
    if (subscriber == subscribers.end()) {
        subscriber = subscribers.insert(subscribers.end(), {observer, {}});
    }
    subscriber->groups.insert(subscriber->groups.end(), known.begin(), known.end());
    return true;
}

}  // namespace

PhysicalInterface::PhysicalInterface(Configuration const& configuration, Settings& settings)
    : layout_(configuration)
    , lamps_(layout_)
    , settings_(settings)
    , queue_("keys", kQueuedEvents)
{
    lamps_.onChange([this](int lamp, Lamp const& now) { lampChanged(lamp, now); });
}

PhysicalInterface::~PhysicalInterface()
{
    lamps_.onChange(nullptr);
}

void PhysicalInterface::shutdown()
{
    queue_.stop();
}

bool PhysicalInterface::subscribePhysicalEvents(physicalEventObserver* observer,
                                                std::vector<PhysDefs::SubscriptionGrp>& groups)
{
    {
        std::lock_guard const lock(mutex_);
        if (!addSubscription(physical_, observer, groups, isPhysicalGroup)) {
            log(kLogFailure, kComponent, "a subscription to physical events names nothing that this telephone has");
            return false;
        }
    }
    auto const tellAvailable = std::any_of(groups.begin(), groups.end(), [](PhysDefs::SubscriptionGrp const& group) {
        return covers(group, kActionKind, kHookGroup, PhysDefs::actionChanged);
    });
    if (tellAvailable) {
        queue_.post([observer] { observer->fpkAvailableEvent(); });
    }
    return true;
}

bool PhysicalInterface::subscribeFunctionalEvents(functionalEventObserver* observer,
                                                  std::vector<PhysDefs::SubscriptionGrp>& subscriptions)
{
    std::lock_guard const lock(mutex_);
    if (!addSubscription(functional_, observer, subscriptions, isFunctionGroup)) {
        log(kLogFailure, kComponent, "a subscription to key functions names none that this telephone has");
        return false;
    }
    return true;
}

void PhysicalInterface::setLamp(int lamp, int mode, int colour, int /*option*/)
{
    if (mode < PhysDefs::lampOff || mode > PhysDefs::lampFluttering) {
        log(kLogFailure, kComponent, "lamp {} is not set: there is no mode {}", lamp, mode);
        return;
    }
    bool const isColour = colour >= PhysDefs::lampNoColour && colour <= PhysDefs::lampAmber;
    Lamp const state{static_cast<PhysDefs::lampMode>(mode),
                     isColour ? static_cast<PhysDefs::lampColour>(colour) : PhysDefs::lampNoColour};
    if (!lamps_.setNumbered(lamp, state.mode == PhysDefs::lampOff ? Lamp{} : state)) {
        log(kLogFailure, kComponent, "lamp {} is not set: there is no such lamp", lamp);
    }
}

PhysDefs::plugStatus PhysicalInterface::getHeadsetJackStatus()
{
    return plugged_[kHeadsetPlug] ? PhysDefs::plugIn : PhysDefs::plugOut;
}

void PhysicalInterface::forwardingCleared()
{
    lamps_.setFunction(PhysDefs::keyFunctionForwarding, {});
}

PhysicalInterface::Refusal PhysicalInterface::press(std::string const& key)
{
    return act(layout_.find(key), key, PhysDefs::actionPressed);
}

PhysicalInterface::Refusal PhysicalInterface::release(std::string const& key)
{
    return act(layout_.find(key), key, PhysDefs::actionReleased);
}

PhysicalInterface::Refusal PhysicalInterface::press(int key)
{
    return act(layout_.find(key), std::to_string(key), PhysDefs::actionPressed);
}

PhysicalInterface::Refusal PhysicalInterface::release(int key)
{
    return act(layout_.find(key), std::to_string(key), PhysDefs::actionReleased);
}

PhysicalInterface::Refusal PhysicalInterface::act(PhoneKey const* key, std::string const& name,
                                                  PhysDefs::actionType action)
{
    if (key == nullptr) {
        return fmt::format("there is no key \"{}\"; the layout has {}", name, layout_.range());
    }
    // Noted and queued as one, so that presses and releases keep their order.
    std::lock_guard const lock(mutex_);
    bool const isPressed = pressed_.count(key->number()) != 0;
    if (action == PhysDefs::actionReleased && !isPressed) {
        return fmt::format("key {} is not pressed", key->number());
    }
    if (auto refusal = post([this, key, action] { deliver(*key, action); })) {
        return refusal;
    }
    if (action == PhysDefs::actionPressed) {
        pressed_.insert(key->number());
    } else {
        pressed_.erase(key->number());
    }
    return std::nullopt;
}

PhysicalInterface::Refusal PhysicalInterface::post(WorkQueue::Work work)
{
    if (queue_.post(std::move(work))) {
        return std::nullopt;
    }
    return "too many key presses wait to be handled, or the telephone ends";
}

PhysicalInterface::Refusal PhysicalInterface::hook(bool up)
{
    if (hookUp_.exchange(up) == up) {
        return up ? "the handset is off the hook already" : "the handset is on the hook already";
    }
    return post([this, up] { deliverHook(up); });
}

PhysicalInterface::Refusal PhysicalInterface::plug(std::string const& plug, bool in)
{
    auto const row =
        std::find_if(kPlugs.begin(), kPlugs.end(), [&plug](PlugRow const& each) { return each.name == plug; });
    if (row == kPlugs.end()) {
        return fmt::format("there is no plug \"{}\"; there are headset, handset and line", plug);
    }
    plugged_[static_cast<std::size_t>(row - kPlugs.begin())] = in;
    return post([this, plug = row->plug, in] {
        for (auto* observer : observersOf(kOtherKind, kPlugGroup, PhysDefs::actionChanged)) {
            observer->jackEvent(plug, in ? PhysDefs::plugIn : PhysDefs::plugOut);
        }
        if (auto* const application = handler()) {
            application->plugChanged(plug, in);
        }
    });
}

PhysicalInterface::Refusal PhysicalInterface::setLocked(bool locked)
{
    auto const outcome = settings_.set(SettingNames::kPhoneLocked, locked ? "true" : "false");
    return outcome ? std::nullopt : Refusal(outcome.error().reason);
}

std::optional<std::string> PhysicalInterface::lampMode(std::string const& lamp) const
{
    auto const found = lamps_.lamp(lamp);
    return found ? std::optional(std::string(lampModeName(found->mode))) : std::nullopt;
}

std::vector<std::string> PhysicalInterface::keyRows() const
{
    std::vector<std::string> rows;
    for (auto const& key : layout_.keys()) {
        auto const& configuration = key.configuration;
        auto const label = configuration.label.empty() ? "" : "  \"" + configuration.label + "\"";
        auto const target = configuration.target.empty() ? "" : "  " + configuration.target;
        rows.push_back(fmt::format("{:>3}  {}{}{}{}", key.number(), key.row->name, target, label,
                                   configuration.monitorOnly ? "  shows only" : ""));
    }
    return rows;
}

std::vector<std::string> PhysicalInterface::lampRows() const
{
    std::vector<std::string> rows;
    for (auto const& row : lamps_.lamps()) {
        auto const number = row.key == 0 ? std::string() : std::to_string(row.key);
        auto const colour =
            row.lamp.mode == PhysDefs::lampOff ? "" : fmt::format("  {}", lampColourName(row.lamp.colour));
        rows.push_back(fmt::format("{:>3}  {:<28}  {}{}", number, row.name, lampModeName(row.lamp.mode), colour));
    }
    return rows;
}

void PhysicalInterface::setKeyHandler(KeyHandler* handler)
{
    {
        std::lock_guard const lock(mutex_);
        handler_ = handler;
    }
    if (handler == nullptr) {
        queue_.flush();
    }
}

KeyHandler* PhysicalInterface::handler() const
{
    std::lock_guard const lock(mutex_);
    return handler_;
}

void PhysicalInterface::deliver(PhoneKey const& key, PhysDefs::actionType action)
{
    deliverButton(key, action);
    deliverFunction(key, action);
    if (auto* const application = handler(); application != nullptr && action == PhysDefs::actionPressed) {
        application->keyPressed(key);
    }
}

void PhysicalInterface::deliverButton(PhoneKey const& key, PhysDefs::actionType action)
{
    if (key.row->buttonGroup == 0) {
        return;
    }
    for (auto* observer : observersOf(kButtonKind, key.row->buttonGroup, action)) {
        observer->buttonPressedEvent(key.function(), key.number(), action, key.configuration.label);
    }
}

void PhysicalInterface::deliverFunction(PhoneKey const& key, PhysDefs::actionType action)
{
    std::vector<functionalEventObserver*> observers;
    {
        std::lock_guard const lock(mutex_);
        for (auto const& subscriber : functional_) {
            bool const wants =
                std::any_of(subscriber.groups.begin(), subscriber.groups.end(), [&key, action](auto const& group) {
                    return covers(group, kFunctionKind, key.function(), action);
                });
            if (wants) {
                observers.push_back(subscriber.observer);
            }
        }
    }
    for (auto* observer : observers) {
        observer->functionPressedEvent(key.function(), key.number(), action, key.configuration.label);
    }
}

// The switch under the handset is released when the handset goes up.
void PhysicalInterface::deliverHook(bool up)
{
    for (auto* observer : observersOf(kActionKind, kHookGroup, PhysDefs::actionChanged)) {
        observer->hookswitchEvent(up ? PhysDefs::actionReleased : PhysDefs::actionPressed);
    }
    if (auto* const application = handler()) {
        application->hookChanged(up);
    }
}

void PhysicalInterface::lampChanged(int lamp, Lamp const& now)
{
    auto const observers = observersOf(kActionKind, kLampGroup, PhysDefs::actionChanged);
    for (auto* observer : observers) {
        queue_.post([observer, lamp, now] { observer->lampEvent(lamp, now.mode, now.colour); });
    }
}

std::vector<physicalEventObserver*> PhysicalInterface::observersOf(int kind, int identifier,
                                                                   PhysDefs::actionType action) const
{
    std::lock_guard const lock(mutex_);
    std::vector<physicalEventObserver*> observers;
    for (auto const& subscriber : physical_) {
        bool const wants = std::any_of(
            subscriber.groups.begin(), subscriber.groups.end(),
            [kind, identifier, action](auto const& group) { return covers(group, kind, identifier, action); });
        if (wants) {
            observers.push_back(subscriber.observer);
        }
    }
    return observers;
}

}  // namespace telephone
