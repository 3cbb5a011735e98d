/// @file
/// Lines and keys as the telephone's key and line applications use them.
#pragma once

#include <string>

#include "platform/lines/Line.h"
#include "platform/sfi/SfiTypes.h"
#include "platform/team/ZEBLocalFeaturesDefs.h"

class Executable;

/// Lines and keys. The service object implements it: take it from the object by a checked cast and never delete through
/// it. Call its operations only after `init`.
///
/// Thread: any, several at once. The operations marked "team lock" are serialised by the service's team lock, which is
/// not recursive and is taken before CSfi's Lock: do not call them while holding CSfi's Lock, nor from within a
/// platform operation that the service calls under its team lock.
///
/// Arguments that recur: `lineURI` is the identifier of a line or, of a multi-call-appearance line, of an appearance
/// ("4711#2"); `keyNumber` the number of a programmable key. A line that is unknown, or has no configuration, is
/// answered with the value named, and nothing is logged.
///
/// The order of the declarations is binary interface and never changes.
class __attribute__((visibility("default"))) TeamServiceIfc
{
public:
    /// A line key was pressed: marks the press for a hot or warm line and passes it to the line. Team lock. A key
    /// without a line is ignored.
    virtual void lineKeyPressedFPK(int keyNumber) = 0;
    /// The same by the line's identifier. Team lock. An empty or unknown identifier is ignored.
    virtual void lineKeyPressed(std::string const& lineURI) = 0;
    /// A direct-station-select key was pressed. While its party is busy, a blind transfer fails with an event
    /// (featureFailed) and a key that only shows its party does nothing; this is decided without the team lock. Else
    /// the press goes to the line, under the team lock.
    /// @param keyNumber the key
    /// @param context the situation
    /// @param digits the number to use in place of the party's own; empty: the party's own
    /// @param ringingLineURI the line whose call is to be deflected
    virtual void dssKeyPressedFPK(int keyNumber, EDSSContext context, std::string const& digits,
                                  std::string const& ringingLineURI) = 0;
    /// The same by the identifier of the party or line, without the check for a busy party. Team lock.
    /// @param lineURI the party or line; empty or unknown: ignored
    /// @param context the situation
    /// @param digits the number to use in place of the party's own; empty: the party's own
    /// @param ringingLineURI the line whose call is to be deflected
    virtual void dssKeyPressed(std::string const& lineURI, EDSSContext context, std::string const& digits,
                               std::string const& ringingLineURI) = 0;
    /// A busy-lamp key was pressed; `transfer`: the call is to be transferred to its party. Team lock.
    virtual void blfKeyPressedFPK(int keyNumber, bool transfer) = 0;
    /// Shows or clears do-not-disturb of a party on its busy-lamp fields. Team lock.
    virtual void setDNDStatusForBLF(std::string const& blfLedControlURI, bool dndOn) = 0;
    /// How long the line alerts before it is heard.
    /// @return Seconds; 0 for an unknown line.
    virtual int getLineRingDelay(std::string const& lineURI) = 0;
    /// The short text of the line's key.
    /// @return Empty for an unknown line.
    virtual std::string getShortDescription(std::string const& lineURI) = 0;
    /// Whether a line is the telephone's own.
    /// @return On a keyset LineData::getPrimary, 0 for an unknown line. On a single-line telephone 1 for its own
    ///     number, else 0.
    virtual int getPrimary(std::string const& lineURI) = 0;
    /// Whether the overview shows the line.
    /// @return false for an unknown line.
    virtual bool getVisibleOnOverview(std::string const& lineURI) = 0;
    /// The line's place on the overview.
    /// @return From 1; 1 for an unknown line.
    virtual int getOverviewPosition(std::string const& lineURI) = 0;
    /// The state of the line.
    /// @return ELineState; 0 for an unknown line.
    virtual int getState(std::string const& lineURI) = 0;
    /// The party of the last call on the line.
    /// @return Empty for an unknown line.
    virtual std::string getRemoteURI(std::string const& lineURI) = 0;
    /// Whether the telephone has several line keys.
    /// @return false for a single-line telephone.
    virtual bool isKeyset() = 0;
    /// Adds an observer of the lines.
    /// @return false when the executable cannot observe lines.
    virtual bool observe(Executable* observer) = 0;
    /// Seizes a line for a new call. The keyset may have a name for any free line, in the reference telephone
    /// "anyLine". Team lock.
    /// @return true when the line is selected or reserved now; false when it is unknown or in another state, which is
    ///     logged.
    virtual bool reserveLine(std::string const& lineURI) = 0;
    /// Gives a seized or reserved line back.
    /// @return Always true.
    virtual bool unreserveLine(std::string const& lineURI) = 0;
    /// Reserves the next free appearance of a line.
    /// @return false when none is free or the line is unknown.
    virtual bool reserveNextSCA(std::string const& lineURI) = 0;
    /// Exists for the binary interface only.
    /// @return Always the empty text.
    virtual std::string getWarmLine() = 0;
    /// Whether and how the line rings.
    /// @return 0: silent; 0 for an unknown line.
    virtual int getLineRing(std::string const& lineURI) = 0;
    /// Tells the observers the state of a line again. Team lock. An empty identifier is ignored.
    virtual void requestOverviewData(std::string const& lineURI) = 0;
    /// Switches the call-server feature of a key to its other state.
    virtual void ftToggleKeyPressed(int keyNumber) = 0;
    /// Whether lines ring without their delay.
    /// @return true when they do.
    virtual bool getImmediateRing() = 0;
    /// Sets whether lines ring without their delay. A refusal is logged.
    virtual void setImmediateRing(bool on) = 0;
    /// Finds the line of a key.
    /// @return Its identifier; empty for a key without line and for a line without configuration.
    virtual std::string getURIforFPK(int keyNumber) = 0;
    /// Finds the key of a line.
    /// @return The key number; less than 0 when it has none.
    virtual int getFPKforUri(std::string const& lineURI) = 0;
    /// Silences the call that rings on a line.
    virtual void callIgnored(std::string const& lineURI) = 0;
    /// Lets only one line be heard, or every line again.
    virtual void callIsolation(std::string const& lineURI, bool on) = 0;
    /// Asks which line always answers on the headset.
    /// @return A line number; 0 for none.
    virtual int getLineHeadsetOverride() = 0;
    /// Joins the call of a bridged line.
    /// @return false when that is not possible, also for an unknown line.
    virtual bool bridgeCall(std::string const& lineURI) = 0;
    /// Sends data to the push address; either text may be changed.
    /// @param url the address to push to
    /// @param data the body
    virtual void pushRequest(std::string& url, std::string& data) = 0;
    /// Takes back a call that another telephone of a shared line holds.
    /// @return sfiFailure when the line is unknown or no other telephone holds a call on it; else the answer of
    ///     Line::retrieve.
    virtual sfiResult retrieveRemotelyHeldCall(std::string const& lineURI) = 0;
    /// The place of a ringing line in the order in which calls are shown.
    /// @return From 1; 0 when the line does not ring or is unknown.
    virtual int getIncomingCallPriority(std::string const& lineURI) = 0;
    /// Ends the preview of a ringing line.
    virtual void terminatePreview() = 0;
    /// Whether digits can be dialled on a line, and how.
    /// @return For a selected line its LineData::getHotWarmType, for one in any other state 5. For an unknown line: on
    ///     an active keyset 0, else 5 when the telephone is a hot or warm line and 0 when not.
    virtual int getHotWarmLineStatus(std::string const& lineURI) = 0;
    /// The digits that a hot or warm line dials.
    /// @return Empty for any other line.
    virtual std::string getHotWarmLineDialInfo(std::string const& lineURI) = 0;
    /// Asks whether a call could be made.
    /// @return true when a line or an appearance has no call of this telephone.
    virtual bool isLocallyIdleLine() = 0;
    /// Reads an item of the agent cockpit.
    /// @return Its value; "??" when it is empty, unknown, or the telephone has no agent cockpit.
    virtual std::string getEACockpitData(std::string item) = 0;
    /// Sets an item of the agent cockpit.
    /// @return false when it is refused or the telephone has no agent cockpit.
    virtual bool setEACockpitData(std::string item, std::string value) = 0;
    /// Asks whether a line is private: others may not join its calls.
    /// @return false for an unknown line.
    virtual bool lineConsideredAsPrivate(std::string const& lineURI) = 0;
    /// The kind of alert for a second call.
    /// @return 0 to 255; -1 for an unknown line.
    virtual int getLineAudibleAlert(std::string const& lineURI) = 0;
    /// Shows or clears the missed-call indication. Only for secondary lines of a keyset that are shared or have several
    /// appearances; ignored for any other device.
    virtual void setMissedCallIndication(std::string const& device, bool indicated) = 0;
    /// Changes the present user of a keyset to that of a line. While the call server holds the settings, the forwarding
    /// rules and do-not-disturb of that line are then published: takes the service's publication lock. A refusal is
    /// logged and changes nothing.
    virtual void changeMultiUser(std::string const& lineURI) = 0;
    /// Switches a feature on behalf of an application. An unknown feature is logged.
    /// @param feature a PhysDefs::keyFunctionType
    /// @param instanceId the key, for features that several keys have
    /// @param on the wanted state
    /// @param data the destination, for forwarding
    virtual void processInvokeDOAction(int feature, int instanceId, bool on, std::string const& data) = 0;
    /// Reports on a feature of an application and may switch it. An unknown feature is logged.
    /// @param notification what is reported
    /// @param feature a PhysDefs::keyFunctionType
    /// @param instanceId the key, for features that several keys have
    /// @param action what to do
    virtual void processInvokeDVAction(ZEBLocalFeaturesDefs::LF_NOTIFICATION_ID notification, int feature,
                                       int instanceId, ZEBLocalFeaturesDefs::eActionType action) = 0;
    /// Reserves an appearance of a line and calls from it. A refusal is logged.
    virtual void initiateBCAOutgoingCall(std::string const& lineURI, std::string const& destination) = 0;

protected:
    /// Never deleted through this interface.
    ~TeamServiceIfc() = default;
};
