#include "telephone/display/FarEnds.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace telephone {

namespace {

// The requests after which a call ends because this telephone wants it.
constexpr std::string_view kEndingRequests[] = {"CallClearRequest", "RefuseCall", "DeflectCall"};

constexpr std::string_view kStateChange = "CallStateChangeEvent";

}  // namespace

// What an event tells of a far end, and in which phase the call is from then on.
struct FarEnds::ActRow
{
    std::string_view method;
    std::string_view what;
    bool isOurs;
    std::string_view sentence;  // empty: nothing is told; {}: the party
    std::optional<Phase> phase;
};

FarEnds::ActRow const* FarEnds::findRow(std::string_view method, std::string_view what)
{
    // clang-format off
    static constexpr ActRow kRows[] = {
        {"IncomingCallEvent",  "incoming call",  false, "{} calls",          Phase::kBegun},
        {kStateChange,         "dialling",       true,  "call to {}",        Phase::kBegun},
        {kStateChange,         "remote ringing", false, "{} is ringing",     {}},
        {kStateChange,         "ringing",        true,  "ringing for {}",    {}},
        {kStateChange,         "connected",      true,  "",                  Phase::kTalk},
        {kStateChange,         "remotely held",  false, "{} holds the call", Phase::kHeldThere},
        {kStateChange,         "held by both",   false, "{} holds the call", Phase::kHeldHere},
        {kStateChange,         "conference",     true,  "",                  Phase::kConference},
        {kStateChange,         "transferring",   true,  "transfer {}",       {}},
        {kStateChange,         "busy",           false, "{} is busy",        Phase::kOver},
        {kStateChange,         "failed",         false, "the call fails",    Phase::kOver},
        {kStateChange,         "idle",           true,  "",                  Phase::kOver},
        {"CallHeldEvent",      "held",           true,  "hold {}",           Phase::kHeldHere},
        {"CallRetrievedEvent", "retrieved",      true,  "retrieve {}",       Phase::kTalk},
    };
    // clang-format on
    auto const* const found = std::find_if(std::begin(kRows), std::end(kRows), [&](ActRow const& each) {
        return each.method == method && each.what == what;
    });
    return found == std::end(kRows) ? nullptr : found;
}

void FarEnds::noteRequest(RequestWords const& request)
{
    auto const call = calls_.find(request.call);
    bool const isEnd =
        std::find(std::begin(kEndingRequests), std::end(kEndingRequests), request.name) != std::end(kEndingRequests);
    if (isEnd && call != calls_.end()) {
        call->second.isEndedHere = true;
    }
}

void FarEnds::noteRefusal(RequestWords const& request)
{
    auto const call = calls_.find(request.call);
    if (call != calls_.end()) {
        call->second.isEndedHere = false;
    }
}

std::optional<FarEnds::Act> FarEnds::follow(std::string_view method, EventWords const& words)
{
    auto const known = calls_.find(words.call);
    if (known != calls_.end() && !words.farEnd.empty()) {
        known->second.party = words.farEnd;
    }
    ActRow const* const row = findRow(method, words.words.what);
    if (row == nullptr || words.call.empty()) {
        return std::nullopt;
    }
    FollowedCall& call = calls_[words.call];
    call.party = words.farEnd.empty() ? call.party : words.farEnd;
    call.isIncoming = call.isIncoming || method == "IncomingCallEvent";
    call.phase = row->phase.value_or(call.phase);
    if (call.phase == Phase::kOver) {
        FollowedCall const over = std::exchange(call, {});
        calls_.erase(words.call);
        return row->sentence.empty() ? end(over, words.words) : Act{row->isOurs, withValue(row->sentence, over.party)};
    }
    if (call.phase == Phase::kTalk && !std::exchange(call.isAnswered, true)) {
        return call.isIncoming ? Act{true, "answer " + call.party} : Act{false, call.party + " answers"};
    }
    return row->sentence.empty() ? std::nullopt : std::optional(Act{row->isOurs, withValue(row->sentence, call.party)});
}

std::optional<FarEnds::Act> FarEnds::end(FollowedCall const& call, MessageWords const& words)
{
    if (call.isEndedHere) {
        return Act{true, "end the call with " + call.party};
    }
    if (words.details.empty()) {
        return Act{false, call.party + " hangs up"};
    }
    // The event itself gives any other reason.
    return words.details.front() == "cancelled" ? std::optional(Act{false, call.party + " gives up"}) : std::nullopt;
}

std::vector<FarEnds::GoingOn> FarEnds::goingOn() const
{
    struct GoingOnRow
    {
        Phase phase;
        bool isOnHold;
        std::string_view sentence;
    };
    static constexpr GoingOnRow kRows[] = {
        {Phase::kTalk, false, "talk with {}"},
        {Phase::kHeldHere, true, "{} on hold"},
        {Phase::kHeldThere, true, "held by {}"},
        {Phase::kConference, false, "conference with {}"},
    };
    std::vector<GoingOn> all;
    for (auto const& [id, call] : calls_) {
        for (GoingOnRow const& row : kRows) {
            if (row.phase == call.phase) {
                all.push_back({row.isOnHold, withValue(row.sentence, call.party)});
            }
        }
    }
    return all;
}

}  // namespace telephone
