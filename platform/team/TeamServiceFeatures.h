// The team features: forwarding and do-not-disturb keys, busy-lamp fields, agent cockpit, push requests. The telephone
// owns the singleton. The first five operations are a binary interface in this order.
#pragma once

#include <string>

#include "platform/physical/PhysDefs.h"
#include "platform/sfi/SfiTypes.h"
#include "platform/team/ZEBLocalFeaturesDefs.h"

class CertificateMgmtSvcIfc;
class EACockpitHandler;
class Executable;
class LocalMgmtIfc;
class PhysicalInterfaceServiceIfc;
class SvcRTEContext;

class TeamServiceFeatures
{
public:
    static TeamServiceFeatures* Instance();

    virtual void setPhysicalInterface(PhysicalInterfaceServiceIfc* physicalInterface) = 0;
    virtual void setLocalMgmtInterface(LocalMgmtIfc* localMgmt) = 0;
    virtual void processInvokeDOAction(int feature, int instanceId, bool on, std::string const& data) = 0;
    virtual void processInvokeDVAction(ZEBLocalFeaturesDefs::LF_NOTIFICATION_ID notification, int feature,
                                       int instanceId, ZEBLocalFeaturesDefs::eActionType action) = 0;
    // The call that a feature key's action made, by the identifier text that the application uses for it.
    virtual void callbackDOFeatureCallID(std::string const& callId, int instanceId) = 0;

    virtual void setCommsSrv(SvcRTEContext* context, Executable* service) = 0;
    virtual void setCertMgmtInterface(CertificateMgmtSvcIfc* certificateMgmt) = 0;
    // Starts the features; called once, when the telephone's keys can be used.
    virtual void Activate() = 0;
    virtual void timerExpired(int timerId) = 0;
    virtual void HandleButtonPressedEvent(int key, PhysDefs::keyFunctionType function, PhysDefs::actionType action) = 0;
    // The forwarding rule that has no place in the configuration store; empty switches it off.
    virtual void HandleForwardingAlternative(std::string const& destination) = 0;
    virtual sfiResult BLFPickupRequest(sfiCallInfo* call, std::string& target) = 0;
    virtual void blfKeyPressedFPK(int keyNumber, bool transfer) = 0;
    virtual void setDNDStatusForBLF(std::string const& blfLedControlURI, bool dndOn) = 0;
    virtual void sendURLPushRequest(std::string& url, std::string& data) = 0;
    // Null when the telephone has no agent cockpit.
    virtual EACockpitHandler* getEACockpitHandler() = 0;

protected:
    ~TeamServiceFeatures() = default;
};
