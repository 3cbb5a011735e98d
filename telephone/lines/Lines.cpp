#include "telephone/lines/Lines.h"

#include <algorithm>
#include <mutex>

#include <spdlog/fmt/fmt.h>

#include "platform/framework/Executable.h"
#include "platform/services/DigitAnalysisServiceIfc.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/Refusals.h"
#include "telephone/lines/LineObserver.h"
#include "telephone/lines/LineStates.h"
#include "telephone/lines/LogComponent.h"
#include "telephone/management/Settings.h"
#include "telephone/traced/TracedPlatform.h"

namespace telephone {

namespace {

bool namesLine(KeyConfiguration const& key)
{
    return key.function == "line" || key.function == "dss";
}

}  // namespace

Lines::Lines(LineTable& table, Configuration const& configuration, Settings& settings, PhoneCalls& calls,
             TimerService& timers, std::chrono::milliseconds warmLineDelay)
    : table_(table)
    , configuration_(configuration)
    , settings_(settings)
    , calls_(calls)
    , actions_(*this, calls, timers, warmLineDelay)
    , notifier_(calls)
{
    TelephoneLine::Parts const parts{calls_, settings_, actions_, notifier_};
    for (auto const& row : table_.rows()) {
        auto* const base = row.address.appearance == 0 ? nullptr : lines_.back();
        auto* const line = owned_.emplace_back(std::make_unique<TelephoneLine>(row, base, parts)).get();
        byNumber_.emplace(row.address.recordLine, line);
        if (base == nullptr) {
            lines_.push_back(line);
        }
    }
    for (auto const& key : configuration_.keys) {
        addKey(key);
    }
}

Lines::~Lines()
{
    stop();
}

void Lines::stop()
{
    actions_.stop();
    notifier_.stop();
}

void Lines::addKey(KeyConfiguration const& key)
{
    keys_.emplace(key.number, Key{&key, key.function == "dss" ? addStation(key) : nullptr});
    if (namesLine(key)) {
        keyOfTarget_.emplace(key.target, key.number);
    }
}

DssLine* Lines::addStation(KeyConfiguration const& key)
{
    if (auto* const line = find(key.target)) {
        line->data().setMonitorOnly(key.monitorOnly);
        return nullptr;
    }
    auto* const station = stations_.emplace_back(std::make_unique<DssLine>(key, calls_, actions_, notifier_)).get();
    stationOfNumber_.emplace(station->number(), station);
    return station;
}

void Lines::initialise()
{
    log(kLogInfo, kComponent, "{} with {} lines", isKeyset() ? "a keyset" : "a single-line telephone", lines_.size());
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
    auto const station = stationOfNumber_.find(lineURI);
    return station == stationOfNumber_.end() ? nullptr : station->second;
}

Line* Lines::getDSSLineForFPK(int keyNumber)
{
    auto const found = keys_.find(keyNumber);
    if (found == keys_.end() || found->second.configuration->function != "dss") {
        return nullptr;
    }
    auto const& [key, station] = found->second;
    return station == nullptr ? static_cast<Line*>(find(key->target)) : station;
}

Line* Lines::getLineForFPK(int keyNumber)
{
    auto const found = keys_.find(keyNumber);
    bool const isLineKey = found != keys_.end() && found->second.configuration->function == "line";
    return isLineKey ? find(found->second.configuration->target) : nullptr;
}

std::string Lines::getURIforFPK(int keyNumber)
{
    auto const found = keys_.find(keyNumber);
    bool const isOfALine = found != keys_.end() && namesLine(*found->second.configuration);
    return isOfALine ? found->second.configuration->target : std::string();
}

int Lines::getFPKforUri(std::string const& lineURI)
{
    auto* const line = find(lineURI);
    auto const& target = line == nullptr ? lineURI : line->base().id();
    auto const found = keyOfTarget_.find(target);
    return found == keyOfTarget_.end() ? -1 : found->second;
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
    auto const held = firstCall(calls_.calls(), isHeld);
    return held ? held->line.lineURI : std::string();
}

Line* Lines::getLineInState(ELineState state, std::string const& baseURI)
{
    auto* const line = find(baseURI);
    if (line == nullptr) {
        return nullptr;
    }
    std::lock_guard const lock(calls_);
    for (auto* appearance : line->appearances()) {
        if (appearance->state() == state) {
            return appearance;
        }
    }
    return line->appearances().empty() && line->state() == state ? line : nullptr;
}

bool Lines::isLocallyIdleLine()
{
    std::lock_guard const lock(calls_);
    return std::any_of(owned_.begin(), owned_.end(), [](auto const& line) { return line->calls().empty(); });
}

bool Lines::observe(Executable* observer)
{
    auto* const lineObserver = dynamic_cast<LineObserver*>(observer);
    if (lineObserver == nullptr) {
        reportRefusal(kComponent, {RefusalKind::kBadInput, "the executable is not a line observer"});
        return false;
    }
    notifier_.addObserver(*lineObserver);
    return true;
}

void Lines::requestOverviewData(std::string const& lineURI)
{
    auto* const line = find(lineURI);
    if (line == nullptr) {
        reportRefusal(kComponent, {RefusalKind::kNotFound, fmt::format("there is no line \"{}\"", lineURI)});
        return;
    }
    std::lock_guard const lock(calls_);
    log(kLogInfo, kComponent, "line {} is {}", line->id(), lineStateName(line->state()));
    notifier_.repeat(*line);
    for (auto const* appearance : line->appearances()) {
        notifier_.repeat(*appearance);
    }
}

// Keys and lamps find the lines themselves: the key application listens to them.
void Lines::setPhysicalInterface(PhysicalInterfaceServiceIfc* physicalInterface)
{
    if (physicalInterface == nullptr) {
        log(kLogWarning, kComponent, "the telephone has no keys and lamps");
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

void Lines::callChanged(CallSnapshot const& now, CallSnapshot const* before)
{
    if (now.ended()) {
        table_.appearances().callEnded(now.callID);
    } else if (before == nullptr) {
        table_.appearances().callBegan(now.callID, now.line.recordLine);
    }
    if (auto* const line = byNumber(now.line.recordLine)) {
        line->callChanged(now, before == nullptr);
    }
}

void Lines::registrationChanged(int lineNumber, bool registered)
{
    if (auto* const line = byNumber(lineNumber)) {
        line->setInService(registered);
    }
}

TelephoneLine* Lines::lineOf(LineTable::Row const* row) const
{
    return row == nullptr ? nullptr : byNumber_.at(row->address.recordLine);
}

TelephoneLine* Lines::find(std::string const& lineURI) const
{
    return lineOf(table_.find(lineURI));
}

TelephoneLine* Lines::byNumber(int recordLine) const
{
    return lineOf(table_.byNumber(recordLine));
}

TelephoneLine* Lines::primary() const
{
    return lineOf(table_.primary());
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

Outcome<> Lines::seize(TelephoneLine& line, ELineState seizure)
{
    auto* const place = line.freePlace();
    if (place == nullptr || !place->inService() || line.base().elsewhere().state != eLineStateIdle) {
        return refuse(RefusalKind::kWrongState,
                      fmt::format("line {} cannot be seized while it is {}", line.id(), lineStateName(line.state())));
    }
    auto* const other = selected();
    if (seizure == eLineStateSelected && other != nullptr && other != place) {
        release(*other);
    }
    table_.appearances().reserve(place->place().recordLine);
    place->setSeizure(seizure);
    return {};
}

void Lines::release(TelephoneLine& line)
{
    for (auto* appearance : line.appearances()) {
        release(*appearance);
    }
    if (line.seizure() != eLineStateIdle) {
        table_.appearances().unreserve(line.place().recordLine);
        line.setSeizure(eLineStateIdle);
    }
}

TelephoneLine* Lines::selected() const
{
    auto const found = std::find_if(owned_.begin(), owned_.end(),
                                    [](auto const& line) { return line->seizure() == eLineStateSelected; });
    return found == owned_.end() ? nullptr : found->get();
}

Outcome<TelephoneLine*> Lines::lineForNewCall() const
{
    if (auto* const line = selected()) {
        return line;
    }
    auto candidates = lines_;
    if (auto* const first = primary()) {
        candidates.insert(candidates.begin(), first);
    }
    for (auto* line : candidates) {
        auto* const place = line->freePlace();
        if (place != nullptr && place->state() == eLineStateIdle) {
            return place;
        }
    }
    return refuse(RefusalKind::kLimit, "no line is free");
}

void Lines::refresh()
{
    for (auto* line : lines_) {
        notifier_.lineChanged(*line, line->state());
    }
}

void Lines::noteParty(TelephoneLine& line, WatchedParty const& party)
{
    line.setParty(party);
    for (auto const* appearance : line.appearances()) {
        bool const elsewhere = appearance->elsewhere().state != eLineStateIdle;
        table_.appearances().setElsewhere(appearance->place().recordLine, elsewhere);
    }
}

void Lines::watchParties(PartyWatch& watch)
{
    for (auto const& each : stations_) {
        watch.watch(each->number(), [station = each.get()](WatchedParty const& party) { station->setParty(party); });
    }
    for (auto* line : lines_) {
        if (line->configuration().sharedLineType != LineData::kNotShared) {
            watch.watch(userOfLine(line->configuration()),
                        [this, line](WatchedParty const& party) { noteParty(*line, party); });
        }
    }
}

}  // namespace telephone

LineManager* LineManager::Instance()
{
    return telephone::traced<LineManager>(telephone::OnlyObject<telephone::Lines>::get());
}
