/// @file
/// TeamServiceFeatures, answering "not there".
#pragma once

#include "platform/kit/Missing.h"
#include "platform/team/EACockpitHandler.h"
#include "platform/team/TeamServiceFeatures.h"

namespace kit {

/// The team features of a telephone that has none.
class DefaultTeamServiceFeatures : public TeamServiceFeatures
{
public:
    /// Deleted by whoever made it.
    virtual ~DefaultTeamServiceFeatures() = default;

    void setPhysicalInterface(PhysicalInterfaceServiceIfc* /*physicalInterface*/) override
    {
        kMissing.report("setPhysicalInterface", "keep the keys and lamps, which may be null");
    }
    void setLocalMgmtInterface(LocalMgmtIfc* /*localMgmt*/) override
    {
        kMissing.report("setLocalMgmtInterface", "keep the store, which may be null");
    }
    void processInvokeDOAction(int /*feature*/, int /*instanceId*/, bool /*on*/, std::string const& /*data*/) override
    {
        kMissing.report("processInvokeDOAction", "switch the feature for the application");
    }
    void processInvokeDVAction(ZEBLocalFeaturesDefs::LF_NOTIFICATION_ID /*notification*/, int /*feature*/,
                               int /*instanceId*/, ZEBLocalFeaturesDefs::eActionType /*action*/) override
    {
        kMissing.report("processInvokeDVAction", "note the report, and switch the feature");
    }
    void callbackDOFeatureCallID(std::string const& /*callId*/, int /*instanceId*/) override
    {
        kMissing.report("callbackDOFeatureCallID", "note the application's text for the call");
    }
    void setCommsSrv(SvcRTEContext* /*context*/, Executable* /*service*/) override
    {
        kMissing.report("setCommsSrv", "keep the context and the service");
    }
    void setCertMgmtInterface(CertificateMgmtSvcIfc* /*certificateMgmt*/) override
    {
        kMissing.report("setCertMgmtInterface", "keep the certificates, which may be null");
    }
    void Activate() override { kMissing.report("Activate", "start the features; the keys can be used"); }
    void timerExpired(int /*timerId*/) override
    {
        kMissing.report("timerExpired", "act on the ids of your own timers, ignore the others");
    }
    void HandleButtonPressedEvent(int /*key*/, PhysDefs::keyFunctionType /*function*/,
                                  PhysDefs::actionType /*action*/) override
    {
        kMissing.report("HandleButtonPressedEvent", "act on the keys Forwarding, DoNotDisturb and Messages");
    }
    void HandleForwardingAlternative(std::string const& /*destination*/) override
    {
        kMissing.report("HandleForwardingAlternative", "set the rule of the forwarding key");
    }
    sfiResult BLFPickupRequest(sfiCallInfo* /*call*/, std::string& /*target*/) override
    {
        kMissing.report("BLFPickupRequest", "take over the call that rings at the party");
        return sfiFailure;
    }
    void blfKeyPressedFPK(int /*keyNumber*/, bool /*transfer*/) override
    {
        kMissing.report("blfKeyPressedFPK", "call the party, pick up its call, or transfer to it");
    }
    void setDNDStatusForBLF(std::string const& /*blfLedControlURI*/, bool /*dndOn*/) override
    {
        kMissing.report("setDNDStatusForBLF", "show do-not-disturb of the party");
    }
    void sendURLPushRequest(std::string& /*url*/, std::string& /*data*/) override
    {
        kMissing.report("sendURLPushRequest", "send the data to the address");
    }
    EACockpitHandler* getEACockpitHandler() override
    {
        kMissing.report("getEACockpitHandler", "return the agent cockpit, if there is one");
        return nullptr;
    }

private:
    static constexpr Missing kMissing{"TeamServiceFeatures", "platform/team/TeamServiceFeatures.h"};
};

}  // namespace kit
