// The team features: the forwarding, do-not-disturb and messages keys, busy-lamp fields, the agent cockpit, push
// requests and feature invocations.
//
// Owned by the composition root; TeamServiceFeatures::Instance() while it exists. Keys may be pressed with any lock
// held: their requests to the service run on a thread of their own, with no lock held.
#pragma once

#include <atomic>
#include <functional>
#include <string>

#include "platform/team/TeamServiceFeatures.h"
#include "telephone/base/Refusal.h"
#include "telephone/framework/OnlyObject.h"
#include "telephone/framework/WorkQueue.h"
#include "telephone/lines/LoadedService.h"
#include "telephone/team/AgentCockpit.h"
#include "telephone/team/BusyLampFields.h"
#include "telephone/team/UrlPush.h"

namespace telephone {

class FeatureToggles;
class Keyset;
class LineActions;
class Lines;
class PartyWatch;
class PhoneCalls;
class PhysicalInterface;
class PickupHandler;
class Settings;

class TeamFeatures final : public TeamServiceFeatures
{
public:
    struct Parts
    {
        Lines& lines;
        LineActions& actions;
        PhoneCalls& calls;
        Keyset& keyset;
        FeatureToggles& toggles;
        PickupHandler& pickup;
        PhysicalInterface& keys;
        Settings& settings;
        PartyWatch& watch;
    };

    // The parts outlive it. pushAddress: see UrlPush, whose exceptions it passes on.
    TeamFeatures(Parts const& parts, std::string const& pushAddress);
    ~TeamFeatures();

    // Before the service ends: it is not called any more.
    void stop();

    void setPhysicalInterface(PhysicalInterfaceServiceIfc* physicalInterface) override;
    void setLocalMgmtInterface(LocalMgmtIfc* localMgmt) override;
    // feature: a key function, forwarding (to `data`, or to the previous destination when empty), do-not-disturb, or
    // feature toggle, with the number of its key as the instance. Any other is refused.
    void processInvokeDOAction(int feature, int instanceId, bool on, std::string const& data) override;
    // The same by an action. A notification without an action is only logged.
    void processInvokeDVAction(ZEBLocalFeaturesDefs::LF_NOTIFICATION_ID notification, int feature, int instanceId,
                               ZEBLocalFeaturesDefs::eActionType action) override;
    void callbackDOFeatureCallID(std::string const& callId, int instanceId) override;

    void setCommsSrv(SvcRTEContext* context, Executable* service) override;
    void setCertMgmtInterface(CertificateMgmtSvcIfc* certificateMgmt) override;
    // Watches the parties of busy-lamp fields, direct-station keys and shared lines.
    void Activate() override;
    // The features start no numbered timers.
    void timerExpired(int /*timerId*/) override {}
    void HandleButtonPressedEvent(int key, PhysDefs::keyFunctionType function, PhysDefs::actionType action) override;
    void HandleForwardingAlternative(std::string const& destination) override;
    sfiResult BLFPickupRequest(sfiCallInfo* call, std::string& target) override;
    void blfKeyPressedFPK(int keyNumber, bool transfer) override;
    void setDNDStatusForBLF(std::string const& blfLedControlURI, bool dndOn) override;
    void sendURLPushRequest(std::string& url, std::string& data) override;
    EACockpitHandler* getEACockpitHandler() override { return &cockpit_; }

    // Waits until all requests of keys and actions are done. Not with a lock held.
    void flush() { queue_.flush(); }

private:
    // Does the work on the thread of the features and reports its refusal there.
    Outcome<> later(std::function<Outcome<>()> work);
    Outcome<> keyPressed(int key, PhysDefs::keyFunctionType function);
    Outcome<> act(int feature, int instanceId, ZEBLocalFeaturesDefs::eActionType action);
    Outcome<> invoke(int feature, int instanceId, bool on, std::string const& data);
    bool isOn(int feature, int instanceId) const;

    // --- on the thread of the features
    Outcome<> switchForwarding(bool on, std::string const& destination);
    Outcome<> switchDoNotDisturb(bool on);
    Outcome<> dialVoiceMail();

    Parts const parts_;
    BusyLampFields busyLamps_;
    AgentCockpit cockpit_;
    UrlPush push_;
    LoadedService service_;
    std::atomic<bool> active_{false};
    OnlyObject<TeamFeatures> const only_{*this, "team features"};
    WorkQueue queue_;  // last: its thread uses all the others
};

}  // namespace telephone
