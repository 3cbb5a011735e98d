// The lines of the telephone: found by id, number, virtual line, key or user; their states; their places for calls.
//
// The composition root makes it of the configuration before the call engine, to which it is the LineDirectory, then
// connects it with the calls and adds it to the engine as an observer. Its lines and numbers never change after that.
// Operations of the platform's LineManager may be called from any thread and take the phone lock where they need it;
// those of LineDirectory and CallObserver come with it.
//
// Numbers: a line has the number of the file, else its place in it. Each appearance of a multi-call-appearance line has
// a virtual line number of its own, the first that no line has from kFirstVirtualLine on, and the identifier of the
// line with the appearance after a hash sign: "4711#2".
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "platform/lines/LineManager.h"
#include "telephone/calls/CallObserver.h"
#include "telephone/calls/CallSnapshot.h"
#include "telephone/calls/LineDirectory.h"
#include "telephone/calls/PhoneCalls.h"
#include "telephone/configuration/Configuration.h"
#include "telephone/lines/Accounts.h"
#include "telephone/lines/AppearanceMap.h"
#include "telephone/lines/LineObserver.h"
#include "telephone/lines/PartyWatch.h"
#include "telephone/lines/TelephoneLine.h"

namespace telephone {

class DssLine;
class LineActions;
class PartyWatch;
class Settings;
class TimerService;
class WorkQueue;

class Lines final : public LineManager, public LineDirectory, public CallObserver
{
public:
    static constexpr int kFirstVirtualLine = 129;
    static constexpr int kLastVirtualLine = 255;
    static constexpr std::chrono::milliseconds kWarmLineDelay{4000};

    // Throws std::runtime_error where the lines do not fit together: two of one id or number, too many appearances.
    // The configuration and the settings outlive it. Only one may exist: it is LineManager::Instance().
    Lines(Configuration const& configuration, Settings& settings);
    ~Lines() override;
    Lines(Lines const&) = delete;
    Lines& operator=(Lines const&) = delete;

    // Before the first account is asked for: where the lines register.
    void setServer(ServerAddress server) { server_ = std::move(server); }
    // Before the first key is pressed: what carries the calls, the timers, and how long a warm line waits for digits
    // before it dials its own.
    void connect(PhoneCalls& calls, TimerService& timers, std::chrono::milliseconds warmLineDelay = kWarmLineDelay);
    // Watches the parties of direct-station keys and the other telephones of shared lines. Once, when subscriptions can
    // be sent.
    void watchParties(PartyWatch& watch);
    // Ends its timers and threads; nothing is delivered to observers afterwards.
    void stop();

    // --- LineManager
    void initialise() override;
    bool isMCALine(std::string const& baseURI) override;
    // By its exact identifier, or by the SIP address of its user (sip:4711@domain); then the parties of direct-station
    // keys.
    Line* getLine(std::string const& lineURI) override;
    Line* getDSSLineForFPK(int keyNumber) override;
    Line* getLineForFPK(int keyNumber) override;
    // "keyset", or empty.
    std::string getKeysetType() override;
    // "<prime:4711>" for each line, in the order of the file.
    void getDeviceList(std::vector<std::string>& devices) override;
    std::string getLocalHeldLine() override;
    Line* getLineInState(ELineState state, std::string const& baseURI) override;
    // True while a line of this telephone has no call here.
    bool isLocallyIdleLine() override;
    // An executable that is a LineObserver.
    bool observe(Executable* observer) override;
    void requestOverviewData(std::string const& lineURI) override;
    void setPhysicalInterface(PhysicalInterfaceServiceIfc* physicalInterface) override;
    void setDigitAnalysisService(DigitAnalysisServiceIfc* digitAnalysis) override;
    int getFPKforUri(std::string const& lineURI) override;
    // Of line keys and direct-station keys.
    std::string getURIforFPK(int keyNumber) override;
    bool lineConsideredAsPrivate(std::string const& lineURI) override;

    // --- LineDirectory
    std::vector<LineAccount> accounts() const override;
    std::optional<LineAddress> addressOf(int recordLine, int appearance) const override;
    std::optional<int> lineOfUser(std::string const& user) const override;
    std::optional<LineAddress> seizeForIncoming(int lineNumber, int callID) override;

    // --- CallObserver
    void callChanged(CallSnapshot const& now, CallSnapshot const* before) override;
    void registrationChanged(int lineNumber, bool registered) override;

    // --- for the telephone's own parts
    AppearanceMap& appearanceMap() { return appearanceMap_; }
    // Without appearances and parties of keys, in the order of the file.
    std::vector<TelephoneLine*> const& lines() const { return lines_; }
    // A line or an appearance by its identifier or address; null for all else.
    TelephoneLine* find(std::string const& lineURI) const;
    // By line number or virtual line number; on a single-line telephone 0 is its line.
    TelephoneLine* byNumber(int recordLine) const;
    // The primary line, else the first; null without lines.
    TelephoneLine* primary() const;
    std::vector<DssLine*> const& stations() const { return stations_; }
    bool isKeyset() const { return configuration_.keyset; }
    // Whether a number may be dialled now: any, but while the phone is locked only permitted ones.
    bool mayDial(std::string const& number) const;

    PhoneCalls& calls() const { return *calls_; }
    TimerService& timers() const { return *timers_; }
    std::chrono::milliseconds warmLineDelay() const { return warmLineDelay_; }
    Settings& settings() const { return settings_; }
    LineActions& actions() const { return *actions_; }
    // Called with the lock held, or without. A listener may come before the lines are connected, and is taken away
    // before it ends.
    void addListener(LineListener& listener);
    void removeListener(LineListener& listener);

    // --- lock held
    // Selected or reserved here, or idle again. Only one line is selected at a time. False when it can't be: it has
    // calls or is out of service.
    bool seize(TelephoneLine& line, ELineState seizure);
    void release(TelephoneLine& line);
    TelephoneLine* selected() const;
    // Where the next call is made: the selected line, else the primary one, else any idle one. Null: all are taken.
    TelephoneLine* lineForNewCall();
    // A free place on a line: itself, or the first free appearance. Null: it is taken.
    TelephoneLine* freePlace(TelephoneLine& line) const;
    void setElsewhere(TelephoneLine& line, ElsewhereCall elsewhere);
    void setMissedCall(TelephoneLine& line, bool indicated);
    // False: nothing rings on the line.
    bool silence(TelephoneLine& line);
    void stationChanged(DssLine& station);
    // Tells the listeners of every line as it is: a rule that they go by has changed.
    void refresh();

private:
    // The phone lock, where there are calls yet.
    std::unique_lock<PhoneCalls> lockCalls() const;
    void noteShared(TelephoneLine& line, WatchedParty const& party);
    void addLine(LineConfiguration const& configuration);
    void addAppearances(TelephoneLine& line, int count);
    void indexKeys();
    void addStations();
    int freeVirtualLine(TelephoneLine const& line);
    TelephoneLine& own(std::unique_ptr<TelephoneLine> line);
    // Changes a line and its base by `change`, then tells who listens.
    void change(TelephoneLine& line, std::function<void(TelephoneLine&)> const& change);
    void tell(TelephoneLine& line, ELineState before);
    void sendState(std::string const& lineURI, ELineState state, std::string const& remoteURI);
    KeyConfiguration const* key(int keyNumber) const;

    Configuration const& configuration_;
    Settings& settings_;
    std::vector<LineConfiguration> lineConfigurations_;  // with the defaults filled in
    ServerAddress server_;
    AppearanceMap appearanceMap_;
    std::vector<std::unique_ptr<TelephoneLine>> owned_;
    std::vector<TelephoneLine*> lines_;
    std::map<std::string, TelephoneLine*> byId_;
    std::map<int, TelephoneLine*> byNumber_;
    std::vector<std::unique_ptr<DssLine>> ownedStations_;
    std::vector<DssLine*> stations_;
    std::map<std::string, DssLine*> stationsByNumber_;
    std::map<int, DssLine*> stationsByKey_;
    std::map<int, KeyConfiguration const*> keysByNumber_;
    std::map<std::string, KeyConfiguration const*> keysByTarget_;  // of lines and stations
    std::set<int> takenNumbers_;

    PhoneCalls* calls_ = nullptr;
    bool stopped_ = false;
    TimerService* timers_ = nullptr;
    std::chrono::milliseconds warmLineDelay_{kWarmLineDelay};
    std::unique_ptr<LineActions> actions_;
    std::atomic<DigitAnalysisServiceIfc*> digitAnalysis_{nullptr};
    std::vector<LineListener*> listeners_;
    std::vector<LineObserver*> observers_;
    std::unique_ptr<WorkQueue> observerQueue_;
};

}  // namespace telephone
