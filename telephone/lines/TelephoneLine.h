// One line of the telephone, or one appearance of a multi-call-appearance line. Lines owns it; it lives as long as the
// telephone.
//
// What it is called and configured with never changes. Its state follows the calls on it, whether it is seized here,
// what other telephones do on it and whether it is registered; all that is guarded by the phone lock, which the
// operations of the platform's Line take themselves. Those marked "lock held" belong to the telephone's own parts.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/lines/Line.h"
#include "telephone/calls/CallEngine.h"
#include "telephone/calls/CallSnapshot.h"
#include "telephone/configuration/Configuration.h"
#include "telephone/lines/TelephoneLineData.h"

namespace telephone {

class Lines;

// What another telephone of a shared line does on it.
struct ElsewhereCall
{
    ELineState state = eLineStateIdle;  // one of the ...Elsewhere states, or idle
    std::string remoteURI;
    std::optional<PickupTarget> dialog;  // how to take it over; nothing: it can't be
};

class TelephoneLine final : public Line
{
public:
    TelephoneLine(Lines& lines, LineConfiguration const& configuration, LineAddress place);
    TelephoneLine(TelephoneLine const&) = delete;
    TelephoneLine& operator=(TelephoneLine const&) = delete;

    void keyPressed() override;
    void dssKeyPressed(EDSSContext context, std::string const& digits, std::string const& ringingLineURI) override;
    ELineState getLineState() override;
    unsigned char getLineID() override { return static_cast<unsigned char>(place_.recordLine); }
    sfiResult retrieve() override;
    LineData* getLineData() override { return &data_; }
    std::string getLastNotifyRemoteURI() override;
    int getChildBCALineIdReservedForConsultationCall() override;
    void getServerFeaturesSettings(serverFeaturesSettings& settings) override;
    void setDNDConfiguration(bool on) override;
    void setForwardingConfiguration(sfiForwardingType type, bool on, std::string const& destination,
                                    int ringCount) override;
    void setMissedCallIndicated(bool indicated) override;

    // Joins the call that another telephone has on this bridged line; false, with the reason in the log.
    bool bridge();

    std::string const& id() const { return place_.lineURI; }
    LineAddress const& place() const { return place_; }
    LineConfiguration const& configuration() const { return configuration_; }
    TelephoneLineData& data() { return data_; }
    bool isAppearance() const { return place_.appearance > 0; }
    // Of a multi-call-appearance line, first to last; else empty.
    std::vector<TelephoneLine*> const& appearances() const { return appearances_; }
    // The line itself of an appearance; else this.
    TelephoneLine& base() { return base_ == nullptr ? *this : *base_; }

    // --- lock held
    ELineState state() const;
    std::vector<CallSnapshot> const& calls() const { return calls_; }
    // The first call that gives the line that state.
    std::optional<CallSnapshot> callInState(ELineState state) const;
    ELineState seizure() const { return seizure_; }  // idle, selected or reserved
    ElsewhereCall const& elsewhere() const { return elsewhere_; }
    // The call that rings here was ignored: shown, not heard. Until it no longer rings.
    bool silenced() const { return silenced_; }
    bool missedCallIndicated() const { return missedCall_; }
    bool inService() const { return inService_; }

private:
    friend class Lines;

    void noteCall(CallSnapshot const& call);

    Lines& lines_;
    LineConfiguration const& configuration_;
    LineAddress const place_;
    TelephoneLineData data_;
    TelephoneLine* base_ = nullptr;
    std::vector<TelephoneLine*> appearances_;

    std::vector<CallSnapshot> calls_;  // in the order in which they came
    ELineState seizure_ = eLineStateIdle;
    ElsewhereCall elsewhere_;
    std::string remoteURI_;
    bool inService_ = false;
    bool missedCall_ = false;
    bool silenced_ = false;
};

}  // namespace telephone
