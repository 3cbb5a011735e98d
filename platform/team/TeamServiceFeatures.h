/// @file
/// The team features: forwarding and do-not-disturb keys, busy-lamp fields, agent cockpit, push requests.
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

/// The team features. The telephone owns the one object. Thread: any.
///
/// The first five operations are a binary interface in this order.
class TeamServiceFeatures
{
public:
    /// The team features of this telephone.
    /// @return Never null while the service exists.
    static TeamServiceFeatures* Instance();

    /// Hands over the keys and lamps. Called by each `init`; may be null.
    virtual void setPhysicalInterface(PhysicalInterfaceServiceIfc* physicalInterface) = 0;
    /// Hands over the store. Called by each `init`; may be null.
    virtual void setLocalMgmtInterface(LocalMgmtIfc* localMgmt) = 0;
    /// Switches a feature on behalf of an application. An unknown feature is logged and ignored.
    /// @param feature a PhysDefs::keyFunctionType
    /// @param instanceId the key, for features that several keys have
    /// @param on the wanted state
    /// @param data the destination, for forwarding; empty: the one that is set
    virtual void processInvokeDOAction(int feature, int instanceId, bool on, std::string const& data) = 0;
    /// Reports on a feature of an application and may switch it. An unknown feature or action is logged and ignored.
    /// @param notification what is reported
    /// @param feature a PhysDefs::keyFunctionType
    /// @param instanceId the key, for features that several keys have
    /// @param action what to do
    virtual void processInvokeDVAction(ZEBLocalFeaturesDefs::LF_NOTIFICATION_ID notification, int feature,
                                       int instanceId, ZEBLocalFeaturesDefs::eActionType action) = 0;
    /// Tells the call that a feature key's action made.
    /// @param callId the text by which the application knows the call
    /// @param instanceId the key
    virtual void callbackDOFeatureCallID(std::string const& callId, int instanceId) = 0;

    /// Binds the features to the service. Called by each `init`, last.
    virtual void setCommsSrv(SvcRTEContext* context, Executable* service) = 0;
    /// Hands over the certificates. Called by each `init`; may be null.
    virtual void setCertMgmtInterface(CertificateMgmtSvcIfc* certificateMgmt) = 0;
    /// Starts the features. Called when the service's start-up timer expires: the keys can be used.
    virtual void Activate() = 0;
    /// Offers one timer expiry; ids that are not its own are ignored.
    virtual void timerExpired(int timerId) = 0;
    /// A key of the functions Forwarding, DoNotDisturb or Messages was used. On the key thread, with no lock held.
    /// @param key number of the key
    /// @param function its function
    /// @param action what happened to it; the reference telephone acts on presses only
    virtual void HandleButtonPressedEvent(int key, PhysDefs::keyFunctionType function, PhysDefs::actionType action) = 0;
    /// Sets the forwarding rule that has no place of its own in the configuration store; empty switches it off. Called
    /// under the service's publication lock: MUST NOT call back into an operation that publishes.
    virtual void HandleForwardingAlternative(std::string const& destination) = 0;
    /// Takes over the call that rings at the party of a busy-lamp field. Called with CSfi's Lock held.
    /// @param call line, appearance and number for the call
    /// @param target the number at which the call rings; a copy, which may be changed
    /// @return As DirectedPickupHandler::directedPickupRequest.
    virtual sfiResult BLFPickupRequest(sfiCallInfo* call, std::string& target) = 0;
    /// A busy-lamp key was pressed: calls the party, consults it, picks up its ringing call, or transfers to it. Called
    /// under the service's team lock. A key that is not a busy-lamp field is logged and ignored.
    /// @param keyNumber number of the key
    /// @param transfer whether the call is to be transferred
    virtual void blfKeyPressedFPK(int keyNumber, bool transfer) = 0;
    /// Shows or clears do-not-disturb of a party on its busy-lamp fields. Called under the service's team lock.
    /// @param blfLedControlURI number or address of the party; one that is not watched is logged and ignored
    /// @param dndOn whether it has do-not-disturb on
    virtual void setDNDStatusForBLF(std::string const& blfLedControlURI, bool dndOn) = 0;
    /// Sends data to the push address. A failure is logged.
    /// @param url the address to push to
    /// @param data the body
    virtual void sendURLPushRequest(std::string& url, std::string& data) = 0;
    /// The agent cockpit.
    /// @return Null when the telephone has none; owned by the team features.
    virtual EACockpitHandler* getEACockpitHandler() = 0;

protected:
    /// Never deleted through this interface.
    ~TeamServiceFeatures() = default;
};
