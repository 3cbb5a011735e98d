// The team features: what the forwarding, do-not-disturb and messages keys do, busy-lamp fields, the agent cockpit,
// push requests and feature invocations.
//
// Owned by the composition root; TeamServiceFeatures::Instance() while it lives. Key presses may come with any lock
// held: what they ask of the service is done on a thread of its own, with none.
#pragma once

#include <map>
#include <mutex>
#include <string>

#include "platform/team/TeamServiceFeatures.h"
#include "telephone/configuration/Configuration.h"
#include "telephone/lines/ServiceDoors.h"
#include "telephone/lines/WorkQueue.h"
#include "telephone/team/AgentCockpit.h"
#include "telephone/team/BusyLampFields.h"
#include "telephone/team/UrlPush.h"

namespace telephone {

class FeatureToggles;
class Keyset;
class Lines;
class PartyWatch;
class PhysicalInterface;
class Settings;

class TeamFeatures final : public TeamServiceFeatures
{
public:
    // What it is handed outlives it. Throws std::runtime_error for a push address of another machine.
    TeamFeatures(Configuration const& configuration, Lines& lines, Keyset& keyset, FeatureToggles& toggles,
                 PhysicalInterface& keys, Settings& settings, PartyWatch& watch);
    ~TeamFeatures();
    TeamFeatures(TeamFeatures const&) = delete;
    TeamFeatures& operator=(TeamFeatures const&) = delete;

    // Before the service ends: nothing is asked of it any more.
    void stop();

    void setPhysicalInterface(PhysicalInterfaceServiceIfc* physicalInterface) override;
    void setLocalMgmtInterface(LocalMgmtIfc* localMgmt) override;
    // `feature` is a key function: forwarding (to `data`, else where it went before), do-not-disturb, or a toggle key
    // whose number is the instance. Any other is refused in the log.
    void processInvokeDOAction(int feature, int instanceId, bool on, std::string const& data) override;
    // The same by an action; a notification alone is only logged.
    void processInvokeDVAction(ZEBLocalFeaturesDefs::LF_NOTIFICATION_ID notification, int feature, int instanceId,
                               ZEBLocalFeaturesDefs::eActionType action) override;
    void callbackDOFeatureCallID(std::string const& callId, int instanceId) override;

    void setCommsSrv(SvcRTEContext* context, Executable* service) override;
    void setCertMgmtInterface(CertificateMgmtSvcIfc* certificateMgmt) override;
    // Watches the parties of busy-lamp fields, direct-station keys and shared lines.
    void Activate() override;
    // The features start no timer by number.
    void timerExpired(int timerId) override;
    void HandleButtonPressedEvent(int key, PhysDefs::keyFunctionType function, PhysDefs::actionType action) override;
    void HandleForwardingAlternative(std::string const& destination) override;
    sfiResult BLFPickupRequest(sfiCallInfo* call, std::string& target) override;
    void blfKeyPressedFPK(int keyNumber, bool transfer) override;
    void setDNDStatusForBLF(std::string const& blfLedControlURI, bool dndOn) override;
    void sendURLPushRequest(std::string& url, std::string& data) override;
    EACockpitHandler* getEACockpitHandler() override { return &cockpit_; }

    // The call that a feature key's action made; empty: none was told.
    std::string featureCall(int instanceId) const;
    // Waits until what the keys have asked for is done. Not with a lock held.
    void flush() { queue_.flush(); }

private:
    // On the thread of the features.
    void switchForwarding(bool on, std::string const& destination);
    void switchDoNotDisturb(bool on);
    void dialVoiceMail();
    void invoke(int feature, int instanceId, bool on, std::string const& data);
    bool isOn(int feature, int instanceId) const;
    // The line whose user the keys speak for.
    std::string userLine();

    Lines& lines_;
    Keyset& keyset_;
    FeatureToggles& toggles_;
    PhysicalInterface& keys_;
    Settings& settings_;
    PartyWatch& watch_;
    BusyLampFields busyLamps_;
    AgentCockpit cockpit_;
    UrlPush push_;
    ServiceDoors service_;
    mutable std::mutex mutex_;
    std::map<int, std::string> featureCalls_;
    bool active_ = false;
    WorkQueue queue_;  // last: its thread uses all the others
};

}  // namespace telephone
