#include "telephone/physical/PhysicalInterface.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include <spdlog/fmt/fmt.h>

#include "platform/physical/functionalEventObserver.h"
#include "platform/physical/physicalEventObserver.h"
#include "telephone/base/Touched.h"
#include "telephone/framework/Refusals.h"
#include "telephone/physical/LogComponent.h"
#include "telephone/protocol/Vocabulary.h"
#include "telephone/trace/Trace.h"

namespace telephone {

namespace {

// Kinds and identifiers of subscriptions; see the table in the header.
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
    auto const rows = keyFunctionRows();
    return group.kind == kFunctionKind && std::any_of(rows.begin(), rows.end(), [&group](KeyFunctionRow const& row) {
               return row.functional && row.function == group.identifier;
           });
}

// Only subscriptions to buttons and functions distinguish actions.
bool covers(PhysDefs::SubscriptionGrp const& group, int kind, int identifier, PhysDefs::actionType action)
{
    bool const anyAction = kind == kActionKind || kind == kOtherKind || group.action == PhysDefs::actionAny;
    return group.kind == kind && group.identifier == identifier && (anyAction || group.action == action);
}

// Adds the known groups to the subscriptions of an observer; false when there is none.
template <typename Subscribers, typename Observer, typename IsKnown>
bool addSubscription(Subscribers& subscribers, Observer* observer, std::vector<PhysDefs::SubscriptionGrp> const& groups,
                     IsKnown isKnown)
{
    std::vector<PhysDefs::SubscriptionGrp> known;
    std::copy_if(groups.begin(), groups.end(), std::back_inserter(known), isKnown);
    if (observer == nullptr || known.empty()) {
        reportRefusal(kComponent,
                      {RefusalKind::kNotFound, "a subscription names no event that the keys of this telephone have"});
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

PhysicalInterface::PhysicalInterface(Configuration const& configuration)
    : layout_(configuration)
    , lamps_(layout_)
    , queue_("the keys", kQueuedEvents)
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
            return false;
        }
    }
    auto const tellAvailable = std::any_of(groups.begin(), groups.end(), [](PhysDefs::SubscriptionGrp const& group) {
        return covers(group, kActionKind, kHookGroup, PhysDefs::actionChanged);
    });
    if (tellAvailable) {
        reportIfRefused(kComponent, queue_.post([observer] { observer->fpkAvailableEvent(); }));
    }
    return true;
}

bool PhysicalInterface::subscribeFunctionalEvents(functionalEventObserver* observer,
                                                  std::vector<PhysDefs::SubscriptionGrp>& subscriptions)
{
    std::lock_guard const lock(mutex_);
    return addSubscription(functional_, observer, subscriptions, isFunctionGroup);
}

void PhysicalInterface::setLamp(int lamp, int mode, int colour, int /*option*/)
{
    if (mode < PhysDefs::lampOff || mode > PhysDefs::lampFluttering) {
        reportRefusal(kComponent, {RefusalKind::kBadInput, fmt::format("there is no lamp mode {} ({} to {})", mode,
                                                                       static_cast<int>(PhysDefs::lampOff),
                                                                       static_cast<int>(PhysDefs::lampFluttering))});
        return;
    }
    bool const isColour = colour >= PhysDefs::lampNoColour && colour <= PhysDefs::lampAmber;
    Lamp const state{static_cast<PhysDefs::lampMode>(mode),
                     isColour ? static_cast<PhysDefs::lampColour>(colour) : PhysDefs::lampNoColour};
    reportIfRefused(kComponent, lamps_.setNumbered(lamp, state.mode == PhysDefs::lampOff ? Lamp{} : state));
}

PhysDefs::plugStatus PhysicalInterface::getHeadsetJackStatus()
{
    return plugged_[kHeadsetPlug] ? PhysDefs::plugIn : PhysDefs::plugOut;
}

void PhysicalInterface::forwardingCleared()
{
    lamps_.setFunction(PhysDefs::keyFunctionForwarding, {});
}

Outcome<> PhysicalInterface::press(std::string const& key)
{
    return act(key, PhysDefs::actionPressed);
}

Outcome<> PhysicalInterface::release(std::string const& key)
{
    return act(key, PhysDefs::actionReleased);
}

Outcome<> PhysicalInterface::act(std::string const& name, PhysDefs::actionType action)
{
    auto const* const key = layout_.find(name);
    if (key == nullptr) {
        return refuse(RefusalKind::kNotFound,
                      fmt::format("there is no key \"{}\"; the layout has {}", name, layout_.range()));
    }
    TraceScope const scope(traceStep("key", [&](TraceStep& step) {
        step.add("key", key->number()).add("label", key->configuration.label).add("function", key->row->name);
        step.add("action", action == PhysDefs::actionPressed ? "pressed" : "released");
    }));
    // Noted and queued under one lock, so that presses and releases keep their order.
    std::lock_guard const lock(mutex_);
    if (action == PhysDefs::actionReleased && pressed_.count(key->number()) == 0) {
        return refuse(RefusalKind::kWrongState, fmt::format("key {} is not pressed", key->number()));
    }
    auto queued = queue_.post([this, key, action] {
        if (action == PhysDefs::actionPressed) {
            bounce(*key);
        }
        deliver(*key, action);
    });
    if (!queued) {
        return queued;
    }
    if (action == PhysDefs::actionPressed) {
        touch(Touched::kKey, key->row->name);
        pressed_.insert(key->number());
    } else {
        pressed_.erase(key->number());
    }
    return {};
}

Outcome<> PhysicalInterface::hook(bool up)
{
    if (hookUp_.exchange(up) == up) {
        return refuse(RefusalKind::kWrongState,
                      up ? "the handset is already off the hook" : "the handset is already on the hook");
    }
    TraceScope const scope(traceStep("key", [up](TraceStep& step) { step.add("hook", up ? "up" : "down"); }));
    return queue_.post([this, up] { deliverHook(up); });
}

Outcome<> PhysicalInterface::plug(std::string const& plug, bool in)
{
    auto const row =
        std::find_if(kPlugs.begin(), kPlugs.end(), [&plug](PlugRow const& each) { return each.name == plug; });
    if (row == kPlugs.end()) {
        return refuse(RefusalKind::kNotFound,
                      fmt::format("there is no plug \"{}\"; the plugs are headset, handset and line", plug));
    }
    TraceScope const scope(
        traceStep("key", [&](TraceStep& step) { step.add("plug", plug).add("action", in ? "in" : "out"); }));
    plugged_[static_cast<std::size_t>(row - kPlugs.begin())] = in;
    return queue_.post([this, plug = row->plug, in] {
        for (auto* observer : observersOf(physical_, kOtherKind, kPlugGroup, PhysDefs::actionChanged)) {
            observer->jackEvent(plug, in ? PhysDefs::plugIn : PhysDefs::plugOut);
        }
        if (auto* const application = handler()) {
            application->plugChanged(plug, in);
        }
    });
}

std::vector<std::string> PhysicalInterface::plugged() const
{
    std::vector<std::string> names;
    for (std::size_t i = 0; i < kPlugs.size(); ++i) {
        if (plugged_[i]) {
            names.emplace_back(kPlugs[i].name);
        }
    }
    return names;
}

std::optional<std::string> PhysicalInterface::lampMode(std::string const& lamp) const
{
    auto const found = lamps_.lamp(lamp);
    return found ? std::optional(nameOfValue(enumerations::kLampMode, found->mode)) : std::nullopt;
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

// The presses before the last one.
void PhysicalInterface::bounce(PhoneKey const& key)
{
    for (int times = presses_; times > 1; --times) {
        deliver(key, PhysDefs::actionPressed);
        deliver(key, PhysDefs::actionReleased);
    }
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
    for (auto* observer : observersOf(physical_, kButtonKind, key.row->buttonGroup, action)) {
        observer->buttonPressedEvent(key.function(), key.number(), action, key.configuration.label);
    }
}

void PhysicalInterface::deliverFunction(PhoneKey const& key, PhysDefs::actionType action)
{
    for (auto* observer : observersOf(functional_, kFunctionKind, key.function(), action)) {
        observer->functionPressedEvent(key.function(), key.number(), action, key.configuration.label);
    }
}

// Lifting the handset releases the switch under it.
void PhysicalInterface::deliverHook(bool up)
{
    for (auto* observer : observersOf(physical_, kActionKind, kHookGroup, PhysDefs::actionChanged)) {
        observer->hookswitchEvent(up ? PhysDefs::actionReleased : PhysDefs::actionPressed);
    }
    if (auto* const application = handler()) {
        application->hookChanged(up);
    }
}

void PhysicalInterface::watchLamps(std::function<void()> changed)
{
    std::lock_guard const lock(watching_);
    lampWatcher_ = std::move(changed);
}

void PhysicalInterface::lampChanged(int lamp, Lamp const& now)
{
    {
        std::lock_guard const lock(watching_);
        if (lampWatcher_) {
            lampWatcher_();
        }
    }
    auto const observers = observersOf(physical_, kActionKind, kLampGroup, PhysDefs::actionChanged);
    for (auto* observer : observers) {
        reportIfRefused(kComponent,
                        queue_.post([observer, lamp, now] { observer->lampEvent(lamp, now.mode, now.colour); }));
    }
}

template <typename Observer>
std::vector<Observer*> PhysicalInterface::observersOf(Subscribers<Observer> const& subscribers, int kind,
                                                      int identifier, PhysDefs::actionType action) const
{
    std::lock_guard const lock(mutex_);
    std::vector<Observer*> observers;
    for (auto const& subscriber : subscribers) {
        bool const subscribed = std::any_of(
            subscriber.groups.begin(), subscriber.groups.end(),
            [kind, identifier, action](auto const& group) { return covers(group, kind, identifier, action); });
        if (subscribed) {
            observers.push_back(subscriber.observer);
        }
    }
    return observers;
}

}  // namespace telephone
