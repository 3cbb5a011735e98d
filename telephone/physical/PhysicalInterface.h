// The telephone's keys, hook switch, plugs and lamps. Registered with the framework as "PhysicalInterfaceServiceIfc".
//
// A person's actions arrive through press, release, hook and plug, from the console or a script, on any thread. They
// are queued, up to kQueuedEvents; one thread delivers each first to the subscribers and then to the key application,
// in order and with no lock held. The caller does not wait for the delivery.
//
// Subscriptions:
//
//     kind  identifier  events
//     8     4           preview and ignore keys, pressed (1), or pressed and released (5)
//     8     6           hold keys, pressed (1), or pressed and released (5)
//     1     2           plugs (jackEvent)
//     0     1           the hook switch, and that the keys are ready (hookswitchEvent, fpkAvailableEvent)
//     0     2           lamps (lampEvent)
//     24    43, 58, 63  forwarding, do-not-disturb and messages keys, pressed (1), or pressed and released (5)
//
// All other key functions belong to the key application.
#pragma once

#include <array>
#include <atomic>
#include <functional>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/framework/Executable.h"
#include "platform/physical/PhysicalInterfaceServiceIfc.h"
#include "telephone/base/Refusal.h"
#include "telephone/configuration/Configuration.h"
#include "telephone/framework/WorkQueue.h"
#include "telephone/physical/KeyLayout.h"
#include "telephone/physical/LampBoard.h"

namespace telephone {

// The key application. Called on the thread of the keys with no lock held.
class KeyHandler
{
public:
    virtual void keyPressed(PhoneKey const& key) = 0;
    virtual void hookChanged(bool up) = 0;
    virtual void plugChanged(PhysDefs::plugIdentifier plug, bool in) = 0;

protected:
    ~KeyHandler() = default;
};

class PhysicalInterface final : public Executable, public PhysicalInterfaceServiceIfc
{
public:
    static constexpr std::size_t kQueuedEvents = 20000;

    // Throws std::runtime_error for an invalid layout (see KeyLayout).
    explicit PhysicalInterface(Configuration const& configuration);
    ~PhysicalInterface() override;

    void init(Context& /*context*/) override {}
    // Ends the thread and drops the queued events. Everything is refused from then on.
    void shutdown() override;

    // --- PhysicalInterfaceServiceIfc
    bool subscribePhysicalEvents(physicalEventObserver* observer,
                                 std::vector<PhysDefs::SubscriptionGrp>& groups) override;
    bool subscribeFunctionalEvents(functionalEventObserver* observer,
                                   std::vector<PhysDefs::SubscriptionGrp>& subscriptions) override;
    // Lamps 10 and 69. Any other lamp and an unknown mode is refused.
    void setLamp(int lamp, int mode, int colour, int option) override;
    PhysDefs::plugStatus getHeadsetJackStatus() override;
    void forwardingCleared() override;

    // --- actions of a person
    // key: its number, label or function.
    [[nodiscard]] Outcome<> press(std::string const& key);
    [[nodiscard]] Outcome<> release(std::string const& key);
    // up: the handset is off the hook.
    [[nodiscard]] Outcome<> hook(bool up);
    // plug: "headset", "handset" or "line".
    [[nodiscard]] Outcome<> plug(std::string const& plug, bool in);

    // A fault of the keys: each press comes so many times, with a release between; 1: the keys work.
    void setPresses(int times) { presses_ = times; }

    [[nodiscard]] bool isHookUp() const { return hookUp_; }
    // "headset", "handset" or "line", for each that is plugged in.
    [[nodiscard]] std::vector<std::string> plugged() const;

    // --- the display
    KeyLayout const& layout() const { return layout_; }
    LampBoard& lampBoard() { return lamps_; }
    // Called after each change of a lamp, as TelephoneControls::watchLamps.
    void watchLamps(std::function<void()> changed);
    // The mode of a lamp as a word (see LampBoard::lamp); nothing when there is no such lamp.
    std::optional<std::string> lampMode(std::string const& lamp) const;

    // Before the first press. Null removes the handler and waits until it is no longer called.
    void setKeyHandler(KeyHandler* handler);
    // Waits until all earlier actions have been delivered.
    void flush() { queue_.flush(); }

private:
    template <typename Observer>
    struct Subscriber
    {
        Observer* observer;
        std::vector<PhysDefs::SubscriptionGrp> groups;
    };
    template <typename Observer>
    using Subscribers = std::vector<Subscriber<Observer>>;

    Outcome<> act(std::string const& name, PhysDefs::actionType action);
    void bounce(PhoneKey const& key);
    void deliver(PhoneKey const& key, PhysDefs::actionType action);
    void deliverButton(PhoneKey const& key, PhysDefs::actionType action);
    void deliverFunction(PhoneKey const& key, PhysDefs::actionType action);
    void deliverHook(bool up);
    void lampChanged(int lamp, Lamp const& now);
    // The present subscribers to an event.
    template <typename Observer>
    std::vector<Observer*> observersOf(Subscribers<Observer> const& subscribers, int kind, int identifier,
                                       PhysDefs::actionType action) const;
    KeyHandler* handler() const;

    KeyLayout const layout_;
    LampBoard lamps_;
    mutable std::mutex mutex_;
    std::set<int> pressed_;
    Subscribers<physicalEventObserver> physical_;
    Subscribers<functionalEventObserver> functional_;
    KeyHandler* handler_ = nullptr;
    std::array<std::atomic<bool>, 3> plugged_{};  // by plug, in the order of the table of plugs
    std::atomic<bool> hookUp_{false};
    std::atomic<int> presses_{1};
    std::mutex watching_;  // held while the watcher runs
    std::function<void()> lampWatcher_;
    WorkQueue queue_;  // last: its thread uses all the others
};

}  // namespace telephone
