#include "telephone/replay/PlayedTelephone.h"

#include <algorithm>
#include <array>
#include <set>

#include <spdlog/fmt/fmt.h>
#include <spdlog/fmt/ranges.h>

#include "telephone/access/Commands.h"
#include "telephone/protocol/JsonText.h"
#include "telephone/protocol/Vocabulary.h"
#include "telephone/replay/InputWords.h"
#include "telephone/replay/PlayedSession.h"

namespace telephone {

namespace {

using namespace std::chrono_literals;

constexpr char const* kConsoleSession = "console";
constexpr std::chrono::milliseconds kAfterwards = 1s;  // for what the application sends beyond the recording
constexpr std::chrono::milliseconds kAbsence = 2s;     // an application that is away longer has gone

constexpr std::array kQueries{"calls", "keys", "lamps", "lines", "state", "store get", "store list", "time"};

// Commands that ask, or do nothing to the telephone: an application may give them as often as it likes.
bool mayRepeat(RecordedInput const& command)
{
    return !isReplayed(command.text) ||
           std::find(kQueries.begin(), kQueries.end(), inputName(command)) != kQueries.end();
}

std::set<std::string> sessionsIn(Recording const& recording)
{
    std::set<std::string> names;
    for (RecordedEntry const& each : recording.entries) {
        if (auto const* const input = std::get_if<RecordedInput>(&each.what)) {
            names.insert(input->session);
        }
    }
    return names;
}

std::set<std::string> sessionsOfApplication(Recording const& recording, std::vector<std::string> const& chosen)
{
    if (!chosen.empty()) {
        return {chosen.begin(), chosen.end()};
    }
    std::set<std::string> names = sessionsIn(recording);
    if (names.size() > 1) {
        names.erase(kConsoleSession);
    }
    return names;
}

std::string plainCommand(std::string const& text)
{
    auto const words = splitWords(text);
    return words ? quoteWords(*words) : text;
}

}  // namespace

Outcome<> PlayedTelephone::checkSessions(Recording const& recording, std::vector<std::string> const& sessions)
{
    auto const known = sessionsIn(recording);
    for (std::string const& each : sessions) {
        if (known.count(each) == 0) {
            return refuse(RefusalKind::kNotFound,
                          fmt::format("{} has no session {}; it has {}", recording.name, each,
                                      known.empty() ? "none" : fmt::format("{}", fmt::join(known, ", "))));
        }
    }
    return {};
}

PlayedTelephone::PlayedTelephone(Recording const& recording, std::vector<std::string> const& sessions,
                                 TimerService& timers, std::function<void()> ended)
    : recording_(recording)
    , timers_(timers)
    , ended_(std::move(ended))
    , ids_(recording.domain, recording.domain)
    , passed_(recording.entries.size(), false)
    , since_(recording.begin)
{
    auto const own = sessionsOfApplication(recording, sessions);
    for (std::size_t i = 0; i < recording.entries.size(); ++i) {
        auto const* const input = std::get_if<RecordedInput>(&recording.entries[i].what);
        if (input != nullptr) {
            addInput(i, *input, own.count(input->session) > 0);
        }
    }
    for (std::size_t i = 0; i < first_; ++i) {
        if (std::holds_alternative<RecordedEvent>(recording.entries[i].what)) {
            send(i);
        }
    }
}

void PlayedTelephone::addInput(std::size_t entry, RecordedInput const& input, bool isOfApplication)
{
    bool const isRequest = input.kind == InputKind::kRequest;
    bool const isWaitedFor = isOfApplication && !isAboutSession(input) && (isRequest || !mayRepeat(input));
    passed_[entry] = !isWaitedFor;
    if (isWaitedFor) {
        expected_.push_back({entry, &input, isRequest ? requestParts(input.text) : MessageParts()});
    } else if (isOfApplication && isSubscription(input) && first_ == 0 && expected_.empty()) {
        first_ = entry;
        since_ = recording_.entries[entry].time;
    }
}

SessionFactory PlayedTelephone::sessions()
{
    return [this](std::string name, std::size_t, std::function<void()> wake) {
        return std::make_unique<PlayedSession>(std::move(name), *this, std::move(wake));
    };
}

PlayedTelephone::SessionId PlayedTelephone::opened(std::function<void()> wake)
{
    std::lock_guard const lock(mutex_);
    timers_.cancel(leaving_);
    wakes_.emplace(++lastSession_, std::move(wake));
    return lastSession_;
}

void PlayedTelephone::begin()
{
    std::lock_guard const lock(mutex_);
    beginOnce();
}

void PlayedTelephone::beginOnce()
{
    if (!std::exchange(hasBegun_, true)) {
        schedule(first_, since_);
        checkEnd();
    }
}

void PlayedTelephone::closed(SessionId id)
{
    std::lock_guard const lock(mutex_);
    wakes_.erase(id);
    if (wakes_.empty()) {
        leaving_ = timers_.start(kAbsence, ended_);
    }
}

std::optional<std::vector<RecordedReply>> PlayedTelephone::answer(std::string const& request)
{
    MessageParts const parts = requestParts(request);
    std::lock_guard const lock(mutex_);
    for (Expected& each : expected_) {
        bool const isIt =
            !each.isDone && each.input->kind == InputKind::kRequest && ids_.differences(each.parts, parts).empty();
        if (isIt) {
            ids_.bind(each.parts, parts);
            return done(each);
        }
    }
    noteExtra({.kind = InputKind::kRequest, .text = request});
    return std::nullopt;
}

std::optional<std::vector<RecordedReply>> PlayedTelephone::answer(Words const& command)
{
    RecordedInput const given{.kind = InputKind::kCommand, .text = quoteWords(command)};
    std::lock_guard const lock(mutex_);
    if (inputName(given) == "state") {
        return std::vector<RecordedReply>{{MessageKind::kResult, stateNow()}};
    }
    if (RecordedInput const* const latest = mayRepeat(given) ? latestOf(given.text) : nullptr) {
        return latest->replies;
    }
    for (Expected& each : expected_) {
        if (!each.isDone && each.input->kind == InputKind::kCommand && plainCommand(each.input->text) == given.text) {
            return done(each);
        }
    }
    noteExtra(given);
    return std::nullopt;
}

std::vector<RecordedReply> PlayedTelephone::done(Expected& expected)
{
    beginOnce();
    expected.isDone = true;
    passed_[expected.entry] = true;
    schedule(expected.entry + 1, recording_.entries[expected.entry].time);
    checkEnd();
    return expected.input->replies;
}

void PlayedTelephone::noteExtra(RecordedInput const& input)
{
    std::size_t const reached = frontier();
    int const line = reached == 0 ? 0 : recording_.entries[reached - 1].line;
    extra_.push_back({DifferenceKind::kExtra, line, inputName(input), inputInWords(input)});
}

void PlayedTelephone::schedule(std::size_t first, std::chrono::system_clock::time_point since)
{
    auto const isExpected = [this](std::size_t entry) {
        return std::any_of(expected_.begin(), expected_.end(),
                           [entry](Expected const& each) { return each.entry == entry; });
    };
    for (std::size_t i = first; i < recording_.entries.size() && !isExpected(i); ++i) {
        RecordedEntry const& entry = recording_.entries[i];
        if (std::holds_alternative<RecordedEvent>(entry.what)) {
            auto const delay = std::chrono::duration_cast<std::chrono::milliseconds>(entry.time - since);
            due_.push_back({i});
            timers_.start(std::max(delay, 0ms), [this, i] { eventIsDue(i); });
        }
    }
}

void PlayedTelephone::eventIsDue(std::size_t entry)
{
    std::lock_guard const lock(mutex_);
    for (Due& each : due_) {
        each.isTime = each.isTime || each.entry == entry;
    }
    sendDue();
    checkEnd();
}

void PlayedTelephone::sendDue()
{
    for (; !due_.empty() && due_.front().isTime; due_.pop_front()) {
        send(due_.front().entry);
    }
    for (auto const& [id, wake] : wakes_) {
        wake();
    }
}

void PlayedTelephone::send(std::size_t index)
{
    RecordedEntry const& entry = recording_.entries[index];
    auto const& event = std::get<RecordedEvent>(entry.what);
    std::uint64_t const last = sent_.empty() ? 0 : sent_.back().number;
    sent_.push_back({std::max(last + 1, event.number), entry.time, textOf(ids_.presented(eventParts(event.text)))});
    passed_[index] = true;
}

void PlayedTelephone::checkEnd()
{
    bool const isAll = due_.empty() && std::all_of(expected_.begin(), expected_.end(),
                                                   [](Expected const& each) { return each.isDone; });
    if (isAll) {
        timers_.start(kAfterwards, ended_);
    }
}

std::size_t PlayedTelephone::frontier() const
{
    return static_cast<std::size_t>(std::find(passed_.begin(), passed_.end(), false) - passed_.begin());
}

RecordedInput const* PlayedTelephone::latestOf(std::string const& command) const
{
    RecordedInput const* found = nullptr;
    std::size_t const end = frontier();
    for (std::size_t i = 0; i < recording_.entries.size() && (i < end || found == nullptr); ++i) {
        auto const* const input = std::get_if<RecordedInput>(&recording_.entries[i].what);
        bool const isIt =
            input != nullptr && input->kind == InputKind::kCommand && plainCommand(input->text) == command;
        found = isIt ? input : found;
    }
    return found;
}

std::string PlayedTelephone::stateNow() const
{
    RecordedInput const* const query = latestOf("state");
    bool const isAnswered = query != nullptr && !query->replies.empty();
    return presentState(isAnswered ? query->replies.front().text : recording_.state);
}

std::string PlayedTelephone::presentState(std::string const& json) const
{
    constexpr bool kThrows = false;
    Json state = Json::parse(json, nullptr, kThrows);
    if (!state.is_object()) {
        return json;
    }
    state["ready"] = true;
    if (state.contains("calls")) {
        for (Json& call : state["calls"]) {
            auto const present = ids_.presentCall(call.value("id", Json()).dump());
            call["id"] = present ? Json(wholeNumber(*present).value_or(0)) : call["id"];
        }
    }
    return lineOf(state);
}

std::string PlayedTelephone::state() const
{
    std::lock_guard const lock(mutex_);
    return stateNow();
}

std::vector<PlayedTelephone::Event> PlayedTelephone::after(std::uint64_t number, std::size_t most) const
{
    std::lock_guard const lock(mutex_);
    auto const first =
        std::partition_point(sent_.begin(), sent_.end(), [number](Event const& each) { return each.number <= number; });
    auto const count = std::min(static_cast<std::ptrdiff_t>(most), std::distance(first, sent_.end()));
    return {first, first + count};
}

std::uint64_t PlayedTelephone::latest() const
{
    std::lock_guard const lock(mutex_);
    return sent_.empty() ? 0 : sent_.back().number;
}

void PlayedTelephone::addTo(ReplayReport& report) const
{
    std::lock_guard const lock(mutex_);
    for (Expected const& each : expected_) {
        std::string const name = inputName(*each.input);
        if (each.isDone) {
            report.addEqual(name);
        } else {
            report.add(
                {DifferenceKind::kMissing, recording_.entries[each.entry].line, name, inputInWords(*each.input)});
        }
    }
    for (ReplayDifference const& each : extra_) {
        report.add(each);
    }
}

}  // namespace telephone
