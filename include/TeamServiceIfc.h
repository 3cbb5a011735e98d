// Lines and keys as the telephone's key and line applications use them. The service object implements it; take it from
// the object by a checked cast and never delete through it. A line is named by its identifier; an appearance of a
// multi-call-appearance line by the identifier with an index.
//
// Operations may be called from any thread, but not from within a platform operation that the service calls under its
// team lock. The order of the declarations is binary interface and never changes.
#pragma once

#include <string>

#include "platform/lines/Line.h"
#include "platform/sfi/SfiTypes.h"
#include "platform/team/ZEBLocalFeaturesDefs.h"

class Executable;

class __attribute__((visibility("default"))) TeamServiceIfc
{
public:
    virtual void lineKeyPressedFPK(int keyNumber) = 0;
    virtual void lineKeyPressed(std::string const& lineURI) = 0;
    virtual void dssKeyPressedFPK(int keyNumber, EDSSContext context, std::string const& digits,
                                  std::string const& ringingLineURI) = 0;
    virtual void dssKeyPressed(std::string const& lineURI, EDSSContext context, std::string const& digits,
                               std::string const& ringingLineURI) = 0;
    virtual void blfKeyPressedFPK(int keyNumber, bool transfer) = 0;
    virtual void setDNDStatusForBLF(std::string const& blfLedControlURI, bool dndOn) = 0;
    // In seconds; 0 for an unknown line.
    virtual int getLineRingDelay(std::string const& lineURI) = 0;
    virtual std::string getShortDescription(std::string const& lineURI) = 0;
    virtual int getPrimary(std::string const& lineURI) = 0;
    virtual bool getVisibleOnOverview(std::string const& lineURI) = 0;
    // 1 for an unknown line.
    virtual int getOverviewPosition(std::string const& lineURI) = 0;
    // ELineState; 0 for an unknown line.
    virtual int getState(std::string const& lineURI) = 0;
    virtual std::string getRemoteURI(std::string const& lineURI) = 0;
    // Whether the telephone has several line keys.
    virtual bool isKeyset() = 0;
    virtual bool observe(Executable* observer) = 0;
    virtual bool reserveLine(std::string const& lineURI) = 0;
    // Always true.
    virtual bool unreserveLine(std::string const& lineURI) = 0;
    virtual bool reserveNextSCA(std::string const& lineURI) = 0;
    // Always the empty text.
    virtual std::string getWarmLine() = 0;
    virtual int getLineRing(std::string const& lineURI) = 0;
    virtual void requestOverviewData(std::string const& lineURI) = 0;
    virtual void ftToggleKeyPressed(int keyNumber) = 0;
    virtual bool getImmediateRing() = 0;
    virtual void setImmediateRing(bool on) = 0;
    virtual std::string getURIforFPK(int keyNumber) = 0;
    virtual int getFPKforUri(std::string const& lineURI) = 0;
    virtual void callIgnored(std::string const& lineURI) = 0;
    virtual void callIsolation(std::string const& lineURI, bool on) = 0;
    virtual int getLineHeadsetOverride() = 0;
    virtual bool bridgeCall(std::string const& lineURI) = 0;
    virtual void pushRequest(std::string& url, std::string& data) = 0;
    // 0 when the line is unknown or holds no call of another telephone.
    virtual sfiResult retrieveRemotelyHeldCall(std::string const& lineURI) = 0;
    virtual int getIncomingCallPriority(std::string const& lineURI) = 0;
    virtual void terminatePreview() = 0;
    virtual int getHotWarmLineStatus(std::string const& lineURI) = 0;
    // The digits of a hot or warm line; empty for any other.
    virtual std::string getHotWarmLineDialInfo(std::string const& lineURI) = 0;
    virtual bool isLocallyIdleLine() = 0;
    // "??" for an unknown item.
    virtual std::string getEACockpitData(std::string item) = 0;
    virtual bool setEACockpitData(std::string item, std::string value) = 0;
    virtual bool lineConsideredAsPrivate(std::string const& lineURI) = 0;
    // -1 for an unknown line.
    virtual int getLineAudibleAlert(std::string const& lineURI) = 0;
    virtual void setMissedCallIndication(std::string const& device, bool indicated) = 0;
    virtual void changeMultiUser(std::string const& lineURI) = 0;
    virtual void processInvokeDOAction(int feature, int instanceId, bool on, std::string const& data) = 0;
    virtual void processInvokeDVAction(ZEBLocalFeaturesDefs::LF_NOTIFICATION_ID notification, int feature,
                                       int instanceId, ZEBLocalFeaturesDefs::eActionType action) = 0;
    virtual void initiateBCAOutgoingCall(std::string const& lineURI, std::string const& destination) = 0;

protected:
    ~TeamServiceIfc() = default;
};
