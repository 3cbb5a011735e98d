// The telephone's keys, hook switch, plugs and lamps. Registered with the framework as "PhysicalInterfaceServiceIfc".
//
// What a person does comes in by press, release, hook and plug, from the console or a script, on any thread. It is
// queued, and one thread takes it to who has subscribed and then to the key application, in order and with no lock
// held. Nothing waits for that: presses that come faster than they are handled queue up to kQueuedEvents.
//
// What observers can subscribe to:
//
//     kind  identifier  events
//     8     4           presses of the preview and ignore keys (1), or also releases (5)
//     8     6           presses of hold keys (1), or also releases (5)
//     1     2           plugs (jackEvent)
//     0     1           the hook switch, and that the keys can be used (hookswitchEvent, fpkAvailableEvent)
//     0     2           lamps (lampEvent)
//     24    43, 58, 63  presses (1) of the forwarding, do-not-disturb and messages keys, or also releases (5)
//
// Key functions that are not among them belong to the key application.
#pragma once

#include <array>
#include <atomic>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/framework/Executable.h"
#include "platform/physical/PhysicalInterfaceServiceIfc.h"
#include "telephone/configuration/Configuration.h"
#include "telephone/lines/WorkQueue.h"
#include "telephone/physical/KeyLayout.h"
#include "telephone/physical/LampBoard.h"

namespace telephone {

class Settings;

// Takes what nobody subscribes to: the key application. Called on the thread of the keys with no lock held.
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

    // Nothing: done. Otherwise why not, for a person.
    using Refusal = std::optional<std::string>;

    // Throws std::runtime_error for a layout that is none (see KeyLayout). The settings outlive it.
    PhysicalInterface(Configuration const& configuration, Settings& settings);
    ~PhysicalInterface() override;

    void init(Context& /*context*/) override {}
    // Ends the thread; what is queued is dropped, and everything is refused from then on.
    void shutdown() override;

    // --- PhysicalInterfaceServiceIfc
    bool subscribePhysicalEvents(physicalEventObserver* observer,
                                 std::vector<PhysDefs::SubscriptionGrp>& groups) override;
    bool subscribeFunctionalEvents(functionalEventObserver* observer,
                                   std::vector<PhysDefs::SubscriptionGrp>& subscriptions) override;
    // Lamps 10 and 69; another one, and a mode that is none, is refused in the log.
    void setLamp(int lamp, int mode, int colour, int option) override;
    PhysDefs::plugStatus getHeadsetJackStatus() override;
    void forwardingCleared() override;

    // --- what a person does. A key by its number, label or function.
    Refusal press(std::string const& key);
    Refusal release(std::string const& key);
    Refusal press(int key);
    Refusal release(int key);
    // The handset off its cradle (up) or on it.
    Refusal hook(bool up);
    // "headset", "handset" or "line".
    Refusal plug(std::string const& plug, bool in);
    // The setting "phone-locked".
    Refusal setLocked(bool locked);

    // --- what a person sees
    KeyLayout const& layout() const { return layout_; }
    LampBoard& lampBoard() { return lamps_; }
    bool isHookUp() const { return hookUp_; }
    // Mode of a lamp as a word (see LampBoard::lamp); nothing: there is no such lamp.
    std::optional<std::string> lampMode(std::string const& lamp) const;
    // One text a row.
    std::vector<std::string> keyRows() const;
    std::vector<std::string> lampRows() const;

    // Before the first press; null takes it away and waits until it is no longer called.
    void setKeyHandler(KeyHandler* handler);
    // Waits until all that was done before is handled.
    void flush() { queue_.flush(); }

private:
    struct PhysicalSubscriber
    {
        physicalEventObserver* observer;
        std::vector<PhysDefs::SubscriptionGrp> groups;
    };
    struct FunctionalSubscriber
    {
        functionalEventObserver* observer;
        std::vector<PhysDefs::SubscriptionGrp> groups;
    };

    Refusal act(PhoneKey const* key, std::string const& name, PhysDefs::actionType action);
    Refusal post(WorkQueue::Work work);
    void deliver(PhoneKey const& key, PhysDefs::actionType action);
    void deliverButton(PhoneKey const& key, PhysDefs::actionType action);
    void deliverFunction(PhoneKey const& key, PhysDefs::actionType action);
    void deliverHook(bool up);
    void lampChanged(int lamp, Lamp const& now);
    // Who has subscribed to that, as it is at this moment.
    std::vector<physicalEventObserver*> observersOf(int kind, int identifier, PhysDefs::actionType action) const;
    KeyHandler* handler() const;

    KeyLayout const layout_;
    LampBoard lamps_;
    Settings& settings_;
    mutable std::mutex mutex_;
    std::set<int> pressed_;
    std::vector<PhysicalSubscriber> physical_;
    std::vector<FunctionalSubscriber> functional_;
    KeyHandler* handler_ = nullptr;
    std::array<std::atomic<bool>, 3> plugged_{};  // by the row of the plug
    std::atomic<bool> hookUp_{false};
    WorkQueue queue_;  // last: its thread uses all the others
};

}  // namespace telephone
