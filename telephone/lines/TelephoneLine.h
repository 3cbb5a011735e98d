// One line of the telephone, or one appearance of a multi-call-appearance line. Lines owns it; it lives as long as the
// telephone.
//
// Identity and configuration never change. The state follows from the calls on the line, its seizure at this telephone,
// calls of other telephones on it and its registration. The phone lock guards the state: operations of the platform's
// Line take it, those under "lock held" are called with it. Each change is passed to the notifier.
#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/lines/Line.h"
#include "telephone/base/Refusal.h"
#include "telephone/calls/CallSnapshot.h"
#include "telephone/calls/PhoneCalls.h"
#include "telephone/lines/LineTable.h"
#include "telephone/lines/PartyWatch.h"
#include "telephone/lines/ServerFeatures.h"
#include "telephone/lines/TelephoneLineData.h"

namespace telephone {

class LineActions;
class LineNotifier;
class Settings;

// A call of another telephone on a shared line.
struct ElsewhereCall
{
    ELineState state = eLineStateIdle;  // idle, or a state whose name ends in Elsewhere
    std::string remoteURI;
    std::optional<PickupTarget> dialog;  // how to take it over; nothing when that is not possible
    std::optional<PickupTarget> join;    // how to join it; nothing when that is not possible
    bool isPrivate = false;
};

class TelephoneLine final : public Line
{
public:
    struct Parts
    {
        PhoneCalls& calls;
        Settings& settings;
        LineActions& actions;
        LineNotifier& notifier;
    };

    // base: the line of an appearance; null for a line.
    TelephoneLine(LineTable::Row const& row, TelephoneLine* base, Parts const& parts);
    TelephoneLine(TelephoneLine const&) = delete;
    TelephoneLine& operator=(TelephoneLine const&) = delete;

    void keyPressed() override;
    // A direct-station key can also name a line of this telephone.
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

    // Joins the call of another telephone on this bridged line.
    [[nodiscard]] Outcome<> bridge();

    std::string const& id() const { return place_.lineURI; }
    LineAddress const& place() const { return place_; }
    LineConfiguration const& configuration() const { return configuration_; }
    TelephoneLineData& data() { return data_; }
    bool isAppearance() const { return base_ != nullptr; }
    // The appearances of a multi-call-appearance line, the first one first; else empty.
    std::vector<TelephoneLine*> const& appearances() const { return appearances_; }
    // The line of an appearance; else this line.
    TelephoneLine& base() { return base_ == nullptr ? *this : *base_; }

    // --- lock held
    ELineState state() const;
    // In the order in which they came. A line has the calls of its appearances, too.
    std::vector<CallSnapshot> const& calls() const { return calls_; }
    // The first call that gives the line this state.
    std::optional<CallSnapshot> callInState(ELineState state) const;
    // A place for one more call: the line itself, or an appearance, a seized one first. Null when all are taken.
    TelephoneLine* freePlace();
    ELineState seizure() const { return seizure_; }  // idle, selected or reserved
    ElsewhereCall const& elsewhere() const { return elsewhere_; }
    bool inService() const { return inService_; }
    // The far end of the last call here or elsewhere.
    std::string const& remoteURI() const { return remoteURI_; }
    // The ringing call was ignored: shown, but not heard.
    bool silenced() const { return silenced_; }
    // The call alerts by the line's key and lamp alone.
    bool alertsOnKeysetOnly(int callID) const { return keysetOnly_.count(callID) != 0; }
    // A call rings that is neither ignored nor alerts on the keyset alone.
    bool isAudible() const;
    bool missedCallIndicated() const { return missedCall_; }

    void callChanged(CallSnapshot const& now, bool isNew);
    void setInService(bool inService);
    void setSeizure(ELineState seizure);
    // The calls of the other telephones of a shared line, on its appearances if the notice names them. A call here
    // hides them: the notices include our own calls.
    void setParty(WatchedParty const& party);
    [[nodiscard]] Outcome<> silence();
    // Until the call no longer alerts.
    void alertOnKeysetOnly(int callID);

private:
    ELineState ownState() const;
    void showElsewhere(WatchedParty const& party);
    void noteCall(CallSnapshot const& now, bool isNew);
    // Makes a change, then tells of this line and its base.
    void change(std::function<void()> const& makeChange);
    ServerFeatures serverFeatures() const { return {parts_.settings, configuration_.id}; }

    LineConfiguration const& configuration_;
    LineAddress const place_;
    Parts const parts_;
    TelephoneLineData data_;
    TelephoneLine* const base_;
    std::vector<TelephoneLine*> appearances_;

    std::vector<CallSnapshot> calls_;
    ELineState seizure_ = eLineStateIdle;
    ElsewhereCall elsewhere_;
    std::string remoteURI_;
    bool inService_;
    bool missedCall_ = false;
    bool silenced_ = false;
    std::set<int> keysetOnly_;  // ids of alerting calls
};

}  // namespace telephone
