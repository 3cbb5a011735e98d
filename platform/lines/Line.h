// One line of the telephone. The line manager owns it; pointers stay valid until the telephone ends.
// The service calls it under its team lock: a line must not call back into a service operation that takes that lock.
#pragma once

#include <map>
#include <string>

#include "platform/lines/ELineState.h"
#include "platform/sfi/SfiTypes.h"

class LineData;

// The situation in which a direct-station-select key was pressed.
enum EDSSContext : int
{
    eDSSContextNone = 0,
    eDSSContextConsultation = 1,
    eDSSContextBlindTransfer = 2,
    eDSSContextDeflect = 3,
    eDSSContextPickup = 4,
};

class Line
{
public:
    // One forwarding rule as the call server holds it for a line.
    struct singleCFSetting
    {
        bool status = false;
        std::string destination;
        int ringCount = 0;
    };
    // What the call server holds for a line: a rule that it has none of has no entry.
    struct serverFeaturesSettings
    {
        std::map<sfiForwardingType, singleCFSetting> forwarding;
        bool dnd = false;
    };

    // The press of the line's key: seizes, answers, holds or retrieves, by its state.
    virtual void keyPressed() = 0;
    // The press of a direct-station-select key: calls, transfers to or picks up the line's party.
    virtual void dssKeyPressed(EDSSContext context, std::string const& digits, std::string const& ringingLineURI) = 0;
    virtual ELineState getLineState() = 0;
    // The line number.
    virtual unsigned char getLineID() = 0;
    // Takes back a call that another telephone of a shared line holds.
    virtual sfiResult retrieve() = 0;

    // Null for a line without configuration.
    virtual LineData* getLineData() = 0;
    virtual std::string getLastNotifyRemoteURI() = 0;
    // Not 0: the appearance that is reserved for a consultation call already.
    virtual int getChildBCALineIdReservedForConsultationCall() = 0;
    virtual void getServerFeaturesSettings(serverFeaturesSettings& settings) = 0;
    virtual void setDNDConfiguration(bool on) = 0;
    virtual void setForwardingConfiguration(sfiForwardingType type, bool on, std::string const& destination,
                                            int ringCount) = 0;
    virtual void setMissedCallIndicated(bool indicated) = 0;

protected:
    ~Line() = default;
};
