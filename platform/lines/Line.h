/// @file
/// One line of the telephone, or one appearance of it.
#pragma once

#include <map>
#include <string>

#include "platform/lines/ELineState.h"
#include "platform/sfi/SfiTypes.h"

class LineData;

/// The situation in which a direct-station-select key was pressed.
enum EDSSContext : int
{
    eDSSContextNone = 0,           ///< no call: the key calls the party
    eDSSContextConsultation = 1,   ///< a call is active: the key makes a consultation call
    eDSSContextBlindTransfer = 2,  ///< the next key is the target of a transfer
    eDSSContextDeflect = 3,        ///< a call rings: the key sends it to the party
    eDSSContextPickup = 4,         ///< the party's telephone rings: the key takes the call
};

/// One line. The line manager owns it; pointers stay valid until the telephone ends.
///
/// Thread: any. The service holds its team lock for the key presses and while it reserves a line: a line MUST NOT call
/// back into a service operation that takes that lock. What a line refuses it logs.
class Line
{
public:
    /// One forwarding rule as the call server holds it for a line.
    struct singleCFSetting
    {
        bool status = false;      ///< whether the rule is on
        std::string destination;  ///< a number or an address
        int ringCount = 0;        ///< rings before it applies; for no-reply only
    };
    /// What the call server holds for a line.
    struct serverFeaturesSettings
    {
        std::map<sfiForwardingType, singleCFSetting> forwarding;  ///< a rule without an entry is off
        bool dnd = false;                                         ///< do-not-disturb
    };

    /// The press of the line's key: seizes, answers, holds or retrieves, by the state of the line.
    virtual void keyPressed() = 0;
    /// The press of a direct-station-select key. Nothing for a key that only shows its party.
    /// @param context what to do with the party
    /// @param digits the number to use in place of the party's own; empty: the party's own
    /// @param ringingLineURI the line whose call is deflected, for eDSSContextDeflect; else ignored
    virtual void dssKeyPressed(EDSSContext context, std::string const& digits, std::string const& ringingLineURI) = 0;
    /// The state now.
    /// @return The most urgent state of its calls and appearances.
    virtual ELineState getLineState() = 0;
    /// The line number, which sfiCallInfo carries.
    /// @return 1 to 255; 0 for the party of a key, which is not a line of this telephone.
    virtual unsigned char getLineID() = 0;
    /// Takes back a call that another telephone of a shared line holds. The service asks in the states
    /// eLineStateHoldElsewhere and eLineStateConferenceHoldElsewhere only.
    /// @return sfiSuccess once under way; sfiFailure when nothing is held elsewhere, or the holding telephone did not
    ///     say how to take the call.
    virtual sfiResult retrieve() = 0;

    /// The configuration of the line.
    /// @return Null for a line without configuration; owned by the line.
    virtual LineData* getLineData() = 0;
    /// The party of the last call on the line.
    /// @return Its address; empty when there was no call.
    virtual std::string getLastNotifyRemoteURI() = 0;
    /// Asks for the appearance that is reserved for a consultation call already.
    /// @return Its virtual line number; 0: none, and the service reserves one.
    virtual int getChildBCALineIdReservedForConsultationCall() = 0;
    /// Reads what the call server holds for the line; overwrites `settings`.
    virtual void getServerFeaturesSettings(serverFeaturesSettings& settings) = 0;
    /// Records do-not-disturb of a line of a keyset, whoever its user is. A failure is logged.
    virtual void setDNDConfiguration(bool on) = 0;
    /// Records a forwarding rule of a line of a keyset, whoever its user is. A failure is logged.
    /// @param type the rule
    /// @param on whether it is on
    /// @param destination a number or an address; empty when a rule that is off loses it
    /// @param ringCount rings before it applies; for no-reply only
    virtual void setForwardingConfiguration(sfiForwardingType type, bool on, std::string const& destination,
                                            int ringCount) = 0;
    /// Shows or clears the missed-call indication of a secondary line.
    virtual void setMissedCallIndicated(bool indicated) = 0;

protected:
    /// Never deleted through this interface.
    ~Line() = default;
};
