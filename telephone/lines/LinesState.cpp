// The lines as the call engine sees them, and how their states change.
#include <algorithm>
#include <mutex>
#include <utility>

#include "telephone/framework/Log.h"
#include "telephone/lines/DssLine.h"
#include "telephone/lines/LineStates.h"
#include "telephone/lines/Lines.h"
#include "telephone/lines/WorkQueue.h"

namespace telephone {

std::vector<LineAccount> Lines::accounts() const
{
    std::vector<LineAccount> accounts;
    for (auto const* line : lines_) {
        auto const& configuration = line->configuration();
        accounts.push_back({configuration.number, configuration.id, accountOf(configuration, configuration_, server_),
                            configuration.registers && !server_.registrar.empty()});
    }
    std::sort(accounts.begin(), accounts.end(),
              [](LineAccount const& left, LineAccount const& right) { return left.lineNumber < right.lineNumber; });
    return accounts;
}

std::optional<LineAddress> Lines::addressOf(int recordLine, int /*appearance*/) const
{
    auto const* const line = byNumber(recordLine);
    return line == nullptr ? std::nullopt : std::optional(line->place());
}

std::optional<int> Lines::lineOfUser(std::string const& user) const
{
    for (auto const* line : lines_) {
        if (userOfLine(line->configuration()) == user) {
            return line->place().lineNumber;
        }
    }
    auto const byIdentifier =
        std::find_if(lines_.begin(), lines_.end(), [&user](TelephoneLine const* line) { return line->id() == user; });
    return byIdentifier == lines_.end() ? std::nullopt : std::optional((*byIdentifier)->place().lineNumber);
}

std::optional<LineAddress> Lines::seizeForIncoming(int lineNumber, int callID)
{
    auto const* const line = byNumber(lineNumber);
    if (line == nullptr || line->appearances().empty()) {
        return line == nullptr ? std::nullopt : std::optional(line->place());
    }
    int const virtualLine = appearanceMap_.seizeForIncoming(line->place().lineNumber, callID);
    return virtualLine == 0 ? std::nullopt : std::optional(byNumber(virtualLine)->place());
}

void Lines::callChanged(CallSnapshot const& now, CallSnapshot const* before)
{
    if (now.ended()) {
        appearanceMap_.callEnded(now.callID);
    } else if (before == nullptr) {
        appearanceMap_.callBegan(now.callID, now.line.recordLine);
    }
    auto* const line = byNumber(now.line.recordLine);
    if (line == nullptr) {
        return;
    }
    change(*line, [&now, before](TelephoneLine& each) {
        if (before == nullptr && !now.incoming) {
            each.seizure_ = eLineStateIdle;
        }
        each.noteCall(now);
        each.silenced_ = each.silenced_ && each.callInState(eLineStateRinging);
    });
}

void Lines::registrationChanged(int lineNumber, bool registered)
{
    auto* const line = byNumber(lineNumber);
    if (line == nullptr) {
        return;
    }
    for (auto* appearance : line->appearances()) {
        change(*appearance, [registered](TelephoneLine& each) { each.inService_ = registered; });
    }
    change(*line, [registered](TelephoneLine& each) { each.inService_ = registered; });
}

std::unique_lock<PhoneCalls> Lines::lockCalls() const
{
    return calls_ == nullptr ? std::unique_lock<PhoneCalls>() : std::unique_lock(*calls_);
}

void Lines::addListener(LineListener& listener)
{
    auto const lock = lockCalls();
    listeners_.push_back(&listener);
}

void Lines::removeListener(LineListener& listener)
{
    auto const lock = lockCalls();
    std::erase(listeners_, &listener);
}

bool Lines::seize(TelephoneLine& line, ELineState seizure)
{
    auto* const place = freePlace(line);
    if (place == nullptr || !place->inService_ || line.base().elsewhere().state != eLineStateIdle) {
        log(kLogFailure, "lines", "line {} is not seized: it is {}", line.id(), lineStateName(line.state()));
        return false;
    }
    auto* const other = selected();
    if (seizure == eLineStateSelected && other != nullptr && other != place) {
        release(*other);
    }
    if (place->isAppearance()) {
        appearanceMap_.reserve(place->place().recordLine);
    }
    change(*place, [seizure, place](TelephoneLine& each) {
        if (&each == place) {
            each.seizure_ = seizure;
        }
    });
    return true;
}

void Lines::release(TelephoneLine& line)
{
    for (auto* appearance : line.appearances()) {
        release(*appearance);
    }
    if (line.seizure_ == eLineStateIdle) {
        return;
    }
    appearanceMap_.unreserve(line.place().recordLine);
    change(line, [&line](TelephoneLine& each) {
        if (&each == &line) {
            each.seizure_ = eLineStateIdle;
        }
    });
}

TelephoneLine* Lines::selected() const
{
    auto const found = std::find_if(owned_.begin(), owned_.end(), [](std::unique_ptr<TelephoneLine> const& line) {
        return line->seizure_ == eLineStateSelected;
    });
    return found == owned_.end() ? nullptr : found->get();
}

TelephoneLine* Lines::lineForNewCall()
{
    if (auto* const line = selected()) {
        return line;
    }
    auto candidates = lines_;
    if (auto* const first = primary()) {
        candidates.insert(candidates.begin(), first);
    }
    for (auto* line : candidates) {
        auto* const place = freePlace(*line);
        if (place != nullptr && place->state() == eLineStateIdle) {
            return place;
        }
    }
    return nullptr;
}

// A seized place comes before one that is merely idle, so that a reservation is used by the call it was made for.
TelephoneLine* Lines::freePlace(TelephoneLine& line) const
{
    if (line.appearances().empty()) {
        return line.calls().empty() ? &line : nullptr;
    }
    TelephoneLine* free = nullptr;
    for (auto* appearance : line.appearances()) {
        if (!appearance->calls().empty()) {
            continue;
        }
        if (appearance->seizure() != eLineStateIdle) {
            return appearance;
        }
        free = free == nullptr ? appearance : free;
    }
    return free;
}

void Lines::setElsewhere(TelephoneLine& line, ElsewhereCall elsewhere)
{
    if (!elsewhere.remoteURI.empty()) {
        line.remoteURI_ = elsewhere.remoteURI;
    }
    change(line, [&line, &elsewhere](TelephoneLine& each) {
        if (&each == &line) {
            each.elsewhere_ = std::move(elsewhere);
        }
    });
}

void Lines::setMissedCall(TelephoneLine& line, bool indicated)
{
    line.missedCall_ = indicated;
    tell(line, line.state());
}

bool Lines::silence(TelephoneLine& line)
{
    if (line.state() != eLineStateRinging) {
        return false;
    }
    change(line, [](TelephoneLine& each) { each.silenced_ = true; });
    return true;
}

void Lines::stationChanged(DssLine& station)
{
    for (auto* listener : listeners_) {
        listener->stationChanged(station);
    }
    sendState(station.number(), station.state(), station.party().remoteURI);
}

void Lines::refresh()
{
    for (auto* line : lines_) {
        tell(*line, line->state());
    }
}

void Lines::change(TelephoneLine& line, std::function<void(TelephoneLine&)> const& change)
{
    auto& base = line.base();
    auto const lineBefore = line.state();
    auto const baseBefore = base.state();
    change(line);
    if (&base != &line) {
        change(base);
        tell(base, baseBefore);
    }
    tell(line, lineBefore);
}

void Lines::tell(TelephoneLine& line, ELineState before)
{
    auto const listeners = listeners_;
    for (auto* listener : listeners) {
        listener->lineChanged(line, before);
    }
    if (line.state() != before) {
        log(kLogTrace, "lines", "line {} is {}", line.id(), lineStateName(line.state()));
        sendState(line.id(), line.state(), line.remoteURI_);
    }
}

void Lines::sendState(std::string const& lineURI, ELineState state, std::string const& remoteURI)
{
    for (auto* observer : observers_) {
        observerQueue_->post(
            [observer, lineURI, state, remoteURI] { observer->lineStateChanged(lineURI, state, remoteURI); });
    }
}

void Lines::watchParties(PartyWatch& watch)
{
    for (auto* station : stations_) {
        watch.watch(station->number(), [station](WatchedParty const& party) { station->setParty(party); });
    }
    for (auto* line : lines_) {
        if (line->configuration().sharedLineType != LineData::kNotShared) {
            watch.watch(userOfLine(line->configuration()),
                        [this, line](WatchedParty const& party) { noteShared(*line, party); });
        }
    }
}

// The notices of a shared line tell of our own calls too; while there is one here, they tell nothing new.
void Lines::noteShared(TelephoneLine& line, WatchedParty const& party)
{
    ElsewhereCall elsewhere;
    if (line.calls().empty()) {
        switch (party.status) {
        case PartyStatus::kUnknown:
        case PartyStatus::kIdle:
            break;
        case PartyStatus::kRinging:
            elsewhere.state = eLineStateRingingElsewhere;
            break;
        case PartyStatus::kBusy:
            elsewhere.state = eLineStateActiveElsewhere;
            break;
        case PartyStatus::kHolding:
            elsewhere.state = eLineStateHoldElsewhere;
            break;
        }
        elsewhere.remoteURI = party.remoteURI;
        elsewhere.dialog = party.dialog;
    }
    setElsewhere(line, std::move(elsewhere));
}

}  // namespace telephone
