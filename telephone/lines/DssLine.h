// The party of a direct-station-select key, as the line object that the service finds by the key and by the party's
// number. It carries no calls here: its line number is 0. Lines owns it; its state is guarded by the phone lock.
#pragma once

#include <string>

#include "platform/lines/Line.h"
#include "telephone/configuration/Configuration.h"
#include "telephone/lines/PartyWatch.h"
#include "telephone/lines/TelephoneLineData.h"

namespace telephone {

class Lines;

class DssLine final : public Line
{
public:
    DssLine(Lines& lines, KeyConfiguration const& key);
    DssLine(DssLine const&) = delete;
    DssLine& operator=(DssLine const&) = delete;

    // The key that belongs to the party: calls it.
    void keyPressed() override;
    void dssKeyPressed(EDSSContext context, std::string const& digits, std::string const& ringingLineURI) override;
    // Idle, ringing elsewhere, busy (6), on hold elsewhere, or unknown.
    ELineState getLineState() override;
    unsigned char getLineID() override { return 0; }
    sfiResult retrieve() override;
    LineData* getLineData() override { return &data_; }
    std::string getLastNotifyRemoteURI() override;
    int getChildBCALineIdReservedForConsultationCall() override { return 0; }
    // A party of another telephone has no features here: nothing is filled in, and what is set is refused in the log.
    void getServerFeaturesSettings(serverFeaturesSettings& settings) override;
    void setDNDConfiguration(bool on) override;
    void setForwardingConfiguration(sfiForwardingType type, bool on, std::string const& destination,
                                    int ringCount) override;
    void setMissedCallIndicated(bool indicated) override;

    std::string const& number() const { return key_.target; }
    KeyConfiguration const& key() const { return key_; }

    // --- lock held
    ELineState state() const;
    WatchedParty const& party() const { return party_; }
    void setParty(WatchedParty party);

private:
    Lines& lines_;
    KeyConfiguration const& key_;
    LineConfiguration const configuration_;
    TelephoneLineData data_;
    WatchedParty party_;
};

}  // namespace telephone
