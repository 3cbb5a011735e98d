// The lines of the telephone and the parties of its direct-station keys: found by identifier, number, key or state,
// seized and given back, and kept in step with their calls.
//
// The composition root makes it after the call engine, adds it to the engine as the first observer, and stops it before
// the calls end. The lines never change. Operations of the platform's LineManager may be called from any thread and
// take the phone lock where they need it; those of CallObserver are called with it.
#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/lines/LineManager.h"
#include "telephone/base/Refusal.h"
#include "telephone/calls/CallObserver.h"
#include "telephone/calls/PhoneCalls.h"
#include "telephone/configuration/Configuration.h"
#include "telephone/framework/OnlyObject.h"
#include "telephone/lines/DssLine.h"
#include "telephone/lines/LineActions.h"
#include "telephone/lines/LineNotifier.h"
#include "telephone/lines/LineTable.h"
#include "telephone/lines/PartyWatch.h"
#include "telephone/lines/TelephoneLine.h"

namespace telephone {

class LineListener;
class Settings;
class TimerService;

class Lines final : public LineManager, public CallObserver
{
public:
    // The arguments outlive it. Only one may exist, as LineManager::Instance(): throws std::runtime_error
    // otherwise.
    Lines(LineTable& table, Configuration const& configuration, Settings& settings, PhoneCalls& calls,
          TimerService& timers, std::chrono::milliseconds warmLineDelay = LineActions::kWarmLineDelay);
    ~Lines() override;

    // Watches the parties of direct-station keys and the other telephones of shared lines. Once.
    void watchParties(PartyWatch& watch);
    // Ends timers and threads; observers are told nothing afterwards.
    void stop();

    // --- LineManager
    void initialise() override;
    bool isMCALine(std::string const& baseURI) override;
    // A line or appearance as LineTable::find does, else the party of a direct-station key by its number.
    Line* getLine(std::string const& lineURI) override;
    Line* getDSSLineForFPK(int keyNumber) override;
    Line* getLineForFPK(int keyNumber) override;
    // "keyset", or empty.
    std::string getKeysetType() override;
    // "<prime:4711>" for each line, in the order of the configuration.
    void getDeviceList(std::vector<std::string>& devices) override;
    std::string getLocalHeldLine() override;
    Line* getLineInState(ELineState state, std::string const& baseURI) override;
    // Whether a line or appearance has no call of this telephone.
    bool isLocallyIdleLine() override;
    // The executable must be a LineObserver.
    bool observe(Executable* observer) override;
    void requestOverviewData(std::string const& lineURI) override;
    void setPhysicalInterface(PhysicalInterfaceServiceIfc* physicalInterface) override;
    void setDigitAnalysisService(DigitAnalysisServiceIfc* digitAnalysis) override;
    int getFPKforUri(std::string const& lineURI) override;
    // The target of a line key or direct-station key; empty for any other key.
    std::string getURIforFPK(int keyNumber) override;
    bool lineConsideredAsPrivate(std::string const& lineURI) override;

    // --- CallObserver
    void callChanged(CallSnapshot const& now, CallSnapshot const* before) override;
    void registrationChanged(int lineNumber, bool registered) override;

    // --- for the other parts of the telephone
    // For the composition root, which passes them to the parts that use them.
    LineActions& actions() { return actions_; }
    // Without appearances, in the order of the configuration.
    std::vector<TelephoneLine*> const& lines() const { return lines_; }
    // A line or appearance, as LineTable finds it; null when there is none.
    TelephoneLine* find(std::string const& lineURI) const;
    TelephoneLine* byNumber(int recordLine) const;
    TelephoneLine* primary() const;
    bool isKeyset() const { return table_.isKeyset(); }
    // While the phone is locked, only permitted numbers may be dialled.
    bool mayDial(std::string const& number) const;
    // A listener is removed before it ends.
    void addListener(LineListener& listener) { notifier_.addListener(listener); }
    void removeListener(LineListener& listener) { notifier_.removeListener(listener); }

    // --- lock held
    // Selects or reserves a free place of the line. Only one line is selected at a time.
    [[nodiscard]] Outcome<> seize(TelephoneLine& line, ELineState seizure);
    // Gives back the seized places of the line.
    void release(TelephoneLine& line);
    // The selected line or appearance; null when none is selected.
    TelephoneLine* selected() const;
    // The place for the next call: the selected line, else the primary line, else the first idle line.
    [[nodiscard]] Outcome<TelephoneLine*> lineForNewCall() const;
    // Tells the listeners of every line, because a rule on which they depend has changed.
    void refresh();

private:
    struct Key
    {
        KeyConfiguration const* configuration;
        DssLine* station;  // null unless it is a direct-station key of another party
    };

    void addKey(KeyConfiguration const& key);
    // The party of a direct-station key; null if the key names a line of this telephone.
    DssLine* addStation(KeyConfiguration const& key);
    // What the other telephones of a shared line do.
    void noteParty(TelephoneLine& line, WatchedParty const& party);
    TelephoneLine* lineOf(LineTable::Row const* row) const;

    LineTable& table_;
    Configuration const& configuration_;
    Settings& settings_;
    PhoneCalls& calls_;
    LineActions actions_;
    LineNotifier notifier_;
    std::vector<std::unique_ptr<TelephoneLine>> owned_;  // with appearances
    std::vector<TelephoneLine*> lines_;
    std::unordered_map<int, TelephoneLine*> byNumber_;
    std::vector<std::unique_ptr<DssLine>> stations_;
    // Of several with the same number or target, the first.
    std::unordered_map<int, Key> keys_;
    std::unordered_map<std::string, DssLine*> stationOfNumber_;
    std::unordered_map<std::string, int> keyOfTarget_;
    std::atomic<DigitAnalysisServiceIfc*> digitAnalysis_{nullptr};
    OnlyObject<Lines> const only_{*this, "lines"};
};

}  // namespace telephone
