// The party of a direct-station-select key, as the line object that the service finds by the key or by the party's
// number. It has no calls at this telephone: its line number is 0. Lines owns it; the phone lock guards its state.
#pragma once

#include <string>

#include "platform/lines/Line.h"
#include "telephone/configuration/Configuration.h"
#include "telephone/lines/PartyWatch.h"
#include "telephone/lines/TelephoneLineData.h"

namespace telephone {

class LineActions;
class LineNotifier;
class PhoneCalls;

class DssLine final : public Line
{
public:
    DssLine(KeyConfiguration const& key, PhoneCalls& calls, LineActions& actions, LineNotifier& notifier);
    DssLine(DssLine const&) = delete;
    DssLine& operator=(DssLine const&) = delete;

    // Calls the party.
    void keyPressed() override;
    void dssKeyPressed(EDSSContext context, std::string const& digits, std::string const& ringingLineURI) override;
    // Idle, ringing elsewhere, busy (6), on hold elsewhere, or unknown.
    ELineState getLineState() override;
    unsigned char getLineID() override { return 0; }
    sfiResult retrieve() override;
    LineData* getLineData() override { return &data_; }
    std::string getLastNotifyRemoteURI() override;
    int getChildBCALineIdReservedForConsultationCall() override { return 0; }
    // The party has no features at this telephone: reading them gives none, and setting one is refused.
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
    void reportNoFeature(char const* feature) const;

    KeyConfiguration const& key_;
    PhoneCalls& calls_;
    LineActions& actions_;
    LineNotifier& notifier_;
    LineConfiguration const configuration_;
    TelephoneLineData data_;
    WatchedParty party_;
};

}  // namespace telephone
