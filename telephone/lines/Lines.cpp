// The making of the lines and the questions that LineManager answers.
#include "telephone/lines/Lines.h"

#include <algorithm>
#include <mutex>
#include <stdexcept>
#include <utility>

#include "platform/framework/Executable.h"
#include "platform/lines/ClientUtils.h"
#include "platform/services/DigitAnalysisServiceIfc.h"
#include "telephone/framework/Log.h"
#include "telephone/lines/DssLine.h"
#include "telephone/lines/LineActions.h"
#include "telephone/lines/LineStates.h"
#include "telephone/lines/WorkQueue.h"
#include "telephone/management/Settings.h"
#include "telephone/sip/Uri.h"

namespace telephone {

namespace {

std::atomic<Lines*> theLines{nullptr};

std::string hostOf(std::string const& hostPort)
{
    auto const uri = sip::Uri::parse("sip:" + hostPort);
    return uri ? uri->host : hostPort;
}

// "4711" of "sip:4711@domain"; empty for what is no address there.
std::string userAt(std::string const& address, std::string const& domain)
{
    if (address.compare(0, 4, "sip:") != 0) {
        return {};
    }
    auto const uri = sip::Uri::parse(address);
    bool const ours = uri && (domain.empty() || sip::equalsIgnoringCase(uri->host, hostOf(domain)));
    return ours ? uri->user : std::string();
}

bool namesLine(KeyConfiguration const& key)
{
    return key.function == "line" || key.function == "dss";
}

}  // namespace

Lines::Lines(Configuration const& configuration, Settings& settings)
    : configuration_(configuration)
    , settings_(settings)
    , lineConfigurations_(configuration.lines)
    , actions_(std::make_unique<LineActions>(*this))
{
    int place = 0;
    for (auto& line : lineConfigurations_) {
        ++place;
        line.number = line.number == 0 ? place : line.number;
        line.overviewPosition = line.overviewPosition == 0 ? place : line.overviewPosition;
        takenNumbers_.insert(line.number);
    }
    for (auto const& line : lineConfigurations_) {
        addLine(line);
    }
    indexKeys();
    addStations();
    Lines* nobody = nullptr;
    if (!theLines.compare_exchange_strong(nobody, this)) {
        throw std::runtime_error("there are lines already");
    }
}

Lines::~Lines()
{
    stop();
    theLines = nullptr;
}

void Lines::connect(PhoneCalls& calls, TimerService& timers, std::chrono::milliseconds warmLineDelay)
{
    warmLineDelay_ = warmLineDelay;
    calls_ = &calls;
    timers_ = &timers;
}

void Lines::stop()
{
    // Whoever made the calls may end them between this and the destructor.
    if (stopped_) {
        return;
    }
    stopped_ = true;
    {
        auto const lock = lockCalls();
        actions_->stop();
    }
    if (observerQueue_) {
        observerQueue_->stop();
    }
}

void Lines::addLine(LineConfiguration const& configuration)
{
    if (configuration.number < 1 || configuration.number > kLastVirtualLine) {
        throw std::runtime_error("line " + configuration.id + ": its number is not 1 to " +
                                 std::to_string(kLastVirtualLine));
    }
    auto& line = own(std::make_unique<TelephoneLine>(
        *this, configuration, LineAddress{configuration.number, configuration.number, 0, configuration.id}));
    lines_.push_back(&line);
    if (configuration.appearances > 1 && configuration_.keyset) {
        addAppearances(line, configuration.appearances);
    }
}

void Lines::addAppearances(TelephoneLine& line, int count)
{
    std::vector<int> virtualLines;
    for (int index = 1; index <= count; ++index) {
        int const number = freeVirtualLine(line);
        auto& appearance = own(std::make_unique<TelephoneLine>(
            *this, line.configuration(),
            LineAddress{line.place().lineNumber, number, index, line.id() + "#" + std::to_string(index)}));
        appearance.base_ = &line;
        line.appearances_.push_back(&appearance);
        virtualLines.push_back(number);
    }
    appearanceMap_.addLine(line.place().lineNumber, std::move(virtualLines));
}

int Lines::freeVirtualLine(TelephoneLine const& line)
{
    for (int number = kFirstVirtualLine; number <= kLastVirtualLine; ++number) {
        if (takenNumbers_.insert(number).second) {
            return number;
        }
    }
    throw std::runtime_error("line " + line.id() + ": too many appearances; all lines together have at most " +
                             std::to_string(kLastVirtualLine - kFirstVirtualLine + 1));
}

TelephoneLine& Lines::own(std::unique_ptr<TelephoneLine> line)
{
    auto& it = *line;
    owned_.push_back(std::move(line));
    if (!byId_.emplace(it.id(), &it).second) {
        throw std::runtime_error("line " + it.id() + " is there twice");
    }
    if (!byNumber_.emplace(it.place().recordLine, &it).second) {
        throw std::runtime_error("line " + it.id() + ": its number " + std::to_string(it.place().recordLine) +
                                 " is that of another line");
    }
    return it;
}

// The first key counts, where there are several of one number or one target.
void Lines::indexKeys()
{
    for (auto const& key : configuration_.keys) {
        keysByNumber_.emplace(key.number, &key);
        if (namesLine(key)) {
            keysByTarget_.emplace(key.target, &key);
        }
    }
}

void Lines::addStations()
{
    for (auto const& each : configuration_.keys) {
        if (each.function != "dss") {
            continue;
        }
        if (auto* const line = find(each.target)) {
            line->data().setMonitorOnly(each.monitorOnly);
            continue;
        }
        ownedStations_.push_back(std::make_unique<DssLine>(*this, each));
        auto* const station = ownedStations_.back().get();
        stations_.push_back(station);
        stationsByNumber_.emplace(station->number(), station);
        stationsByKey_.emplace(each.number, station);
    }
}

void Lines::initialise()
{
    log(kLogInfo, "lines", "{} of {} lines", isKeyset() ? "a keyset" : "a single-line telephone", lines_.size());
}

bool Lines::isMCALine(std::string const& baseURI)
{
    auto const* const line = find(baseURI);
    return line != nullptr && !line->appearances().empty();
}

Line* Lines::getLine(std::string const& lineURI)
{
    if (auto* const line = find(lineURI)) {
        return line;
    }
    auto const station = stationsByNumber_.find(lineURI);
    return station == stationsByNumber_.end() ? nullptr : station->second;
}

KeyConfiguration const* Lines::key(int keyNumber) const
{
    auto const found = keysByNumber_.find(keyNumber);
    return found == keysByNumber_.end() ? nullptr : found->second;
}

Line* Lines::getDSSLineForFPK(int keyNumber)
{
    auto const station = stationsByKey_.find(keyNumber);
    if (station != stationsByKey_.end()) {
        return station->second;
    }
    auto const* const found = key(keyNumber);
    return found != nullptr && found->function == "dss" ? find(found->target) : nullptr;
}

Line* Lines::getLineForFPK(int keyNumber)
{
    auto const* const found = key(keyNumber);
    return found != nullptr && found->function == "line" ? find(found->target) : nullptr;
}

std::string Lines::getURIforFPK(int keyNumber)
{
    auto const* const found = key(keyNumber);
    return found != nullptr && namesLine(*found) ? found->target : std::string();
}

int Lines::getFPKforUri(std::string const& lineURI)
{
    auto* const line = find(lineURI);
    auto const& target = line == nullptr ? lineURI : line->base().id();
    auto const found = keysByTarget_.find(target);
    return found == keysByTarget_.end() ? -1 : found->second->number;
}

std::string Lines::getKeysetType()
{
    return isKeyset() ? "keyset" : "";
}

void Lines::getDeviceList(std::vector<std::string>& devices)
{
    for (auto const* line : lines_) {
        devices.push_back("<prime:" + line->id() + ">");
    }
}

std::string Lines::getLocalHeldLine()
{
    std::lock_guard const lock(calls());
    for (auto const& call : calls().calls()) {
        auto const state = lineStateOf(call);
        if (state == eLineStateHold || state == eLineStateHoldConsult) {
            return call.line.lineURI;
        }
    }
    return {};
}

Line* Lines::getLineInState(ELineState state, std::string const& baseURI)
{
    auto* const line = find(baseURI);
    if (line == nullptr) {
        return nullptr;
    }
    std::lock_guard const lock(calls());
    for (auto* appearance : line->appearances()) {
        if (appearance->state() == state) {
            return appearance;
        }
    }
    return line->appearances().empty() && line->state() == state ? line : nullptr;
}

bool Lines::isLocallyIdleLine()
{
    std::lock_guard const lock(calls());
    return std::any_of(lines_.begin(), lines_.end(), [](TelephoneLine const* line) {
        auto const& places = line->appearances();
        return line->calls().empty() || std::any_of(places.begin(), places.end(),
                                                    [](TelephoneLine const* each) { return each->calls().empty(); });
    });
}

bool Lines::observe(Executable* observer)
{
    auto* const lineObserver = dynamic_cast<LineObserver*>(observer);
    if (lineObserver == nullptr) {
        log(kLogFailure, "lines", "nobody observes the lines: the executable is no observer of lines");
        return false;
    }
    std::lock_guard const lock(calls());
    if (!observerQueue_) {
        observerQueue_ = std::make_unique<WorkQueue>("line observers");
    }
    if (std::find(observers_.begin(), observers_.end(), lineObserver) == observers_.end()) {
        observers_.push_back(lineObserver);
    }
    return true;
}

void Lines::requestOverviewData(std::string const& lineURI)
{
    auto* const line = find(lineURI);
    if (line == nullptr) {
        log(kLogFailure, "lines", "no overview of line \"{}\": there is no such line", lineURI);
        return;
    }
    std::lock_guard const lock(calls());
    log(kLogInfo, "lines", "line {} is {}", line->id(), lineStateName(line->state()));
    sendState(line->id(), line->state(), line->remoteURI_);
    for (auto const* appearance : line->appearances()) {
        sendState(appearance->id(), appearance->state(), appearance->remoteURI_);
    }
}

// Keys and lamps reach the lines the other way round: the key application listens to them.
void Lines::setPhysicalInterface(PhysicalInterfaceServiceIfc* physicalInterface)
{
    if (physicalInterface == nullptr) {
        log(kLogWarning, "lines", "the telephone has no keys and lamps");
    }
}

void Lines::setDigitAnalysisService(DigitAnalysisServiceIfc* digitAnalysis)
{
    digitAnalysis_ = digitAnalysis;
}

bool Lines::lineConsideredAsPrivate(std::string const& lineURI)
{
    auto const* const line = find(lineURI);
    return line != nullptr && line->configuration().isPrivate;
}

TelephoneLine* Lines::find(std::string const& lineURI) const
{
    auto const exact = byId_.find(lineURI);
    if (exact != byId_.end()) {
        return exact->second;
    }
    std::string address;
    int index = 0;
    ClientUtils::splitMCADeviceIndex(lineURI, address, index);
    auto const user = userAt(address, server_.domain);
    auto const line = user.empty() ? std::nullopt : lineOfUser(user);
    auto* const found = line ? byNumber(*line) : nullptr;
    if (found == nullptr || index == 0) {
        return found;
    }
    auto const& places = found->appearances();
    return static_cast<std::size_t>(index) <= places.size() ? places[static_cast<std::size_t>(index) - 1] : nullptr;
}

TelephoneLine* Lines::byNumber(int recordLine) const
{
    if (recordLine == 0 && !isKeyset()) {
        return lines_.empty() ? nullptr : lines_.front();
    }
    auto const found = byNumber_.find(recordLine);
    return found == byNumber_.end() ? nullptr : found->second;
}

TelephoneLine* Lines::primary() const
{
    auto const marked = std::find_if(lines_.begin(), lines_.end(),
                                     [](TelephoneLine const* line) { return line->configuration().primary; });
    if (marked != lines_.end()) {
        return *marked;
    }
    return lines_.empty() ? nullptr : lines_.front();
}

bool Lines::mayDial(std::string const& number) const
{
    if (!settings_.flag(SettingNames::kPhoneLocked)) {
        return true;
    }
    auto* const analysis = digitAnalysis_.load();
    return analysis != nullptr &&
           (analysis->isPermittedNumber(number) || analysis->isPermittedNumberInContext(number, 0));
}

}  // namespace telephone

LineManager* LineManager::Instance()
{
    return telephone::theLines.load();
}
