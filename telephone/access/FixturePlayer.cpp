#include "telephone/access/FixturePlayer.h"

#include <algorithm>

#include <spdlog/fmt/fmt.h>

#include "telephone/access/Commands.h"
#include "telephone/access/LineNames.h"
#include "telephone/access/RequestReasons.h"
#include "telephone/access/RequestShorthand.h"
#include "telephone/access/Session.h"
#include "telephone/access/TelephoneControls.h"
#include "telephone/fixtures/FixtureFile.h"
#include "telephone/fixtures/FixtureStates.h"

namespace telephone {

namespace {

using namespace std::chrono_literals;

// Time moves so far between two looks at the state; 30 seconds at most for each step.
constexpr auto kMove = 50ms;
constexpr int kMostMoves = 600;
constexpr std::string_view kSuccess = "sfiSuccess";

Outcome<> checkFixtureLine(std::string const& line, TelephoneState const& state)
{
    bool const isThere = std::ranges::find(state.lines, line, &LineStatus::id) != state.lines.end();
    return isThere ? Outcome<>()
                   : refuse(RefusalKind::kNotFound, fmt::format("there is no line {}; {}", line, linesThatAre(state)));
}

// {2} stands for the id of the second call.
std::string withIds(std::string line, FixtureCallIds const& ids)
{
    for (std::size_t index = 0; index < ids.size(); ++index) {
        std::string const place = fmt::format("{{{}}}", index + 1);
        for (auto found = line.find(place); found != std::string::npos; found = line.find(place)) {
            line.replace(found, place.size(), std::to_string(ids[index]));
        }
    }
    return line;
}

}  // namespace

FixturePlayer::FixturePlayer(Session& session, Fixture const& fixture)
    : session_(session)
    , fixture_(fixture)
{
    for (FixtureCall const& call : fixture.calls) {
        int const position = static_cast<int>(ids_.size()) + 1;
        ids_.push_back(isIncoming(call) ? 0 : position);
    }
}

Outcome<> FixturePlayer::play()
{
    TelephoneControls& telephone = session_.services().telephone;
    // A telephone that cannot become ready shows why in its first step.
    auto outcome = await([](TelephoneState const& state) { return state.ready; }).and_then([&](bool) {
        return checkStart(telephone.state());
    });
    if (!outcome) {
        return outcome;
    }
    for (FixtureStep const& step : planFixture(fixture_, telephone.state())) {
        if (auto played = playStep(step); !played) {
            return played;
        }
    }
    return compare();
}

Outcome<> FixturePlayer::checkStart(TelephoneState const& state) const
{
    for (FixtureLine const& line : fixture_.lines) {
        if (auto const checked = checkFixtureLine(line.id, state); !checked) {
            return checked;
        }
    }
    for (FixtureCall const& call : fixture_.calls) {
        if (auto const checked = checkFixtureLine(call.line, state); !checked) {
            return checked;
        }
        if (!placeNamed(state, call.party).empty()) {
            return refuse(
                RefusalKind::kNotSupported,
                fmt::format("the party {} is a line of this telephone; a fixture takes numbers of the exchange",
                            call.party));
        }
    }
    bool const hasCalls = std::ranges::any_of(state.calls, [](CallStatus const& call) { return !call.over; });
    return fixture_.calls.empty() || !hasCalls
               ? Outcome<>()
               : refuse(RefusalKind::kWrongState,
                        "a fixture with calls needs a telephone without calls; end them first");
}

Outcome<> FixturePlayer::playStep(FixtureStep const& step)
{
    std::string const line = withIds(step.line, ids_);
    if (auto played = run(line); !played || step.call == 0) {
        return played.map_error([&line](Refusal const& refusal) {
            return Refusal{refusal.kind, fmt::format("{}: {}", line, refusal.reason)};
        });
    }
    std::string now = "not there";
    auto const isReached = [&](TelephoneState const& state) {
        noteId(step.call, state);
        CallStatus const* const call = findCall(state, ids_[step.call - 1]);
        now = call == nullptr ? "not there" : call->state;
        return now == step.state;
    };
    return await(isReached).and_then([&](bool reached) {
        return reached ? Outcome<>()
                       : refuse(RefusalKind::kWrongState,
                                fmt::format("{}: then call {} is {}, not {}", line, step.call, now, step.state));
    });
}

void FixturePlayer::noteId(std::size_t number, TelephoneState const& state)
{
    int& id = ids_[number - 1];
    id = id == 0 ? findFixtureCall(fixture_.calls[number - 1], ids_, state) : id;
}

Outcome<> FixturePlayer::run(std::string const& line)
{
    return splitWords(line).and_then([this](Words const& words) {
        if (Command const* const command = findCommand(words)) {
            return runCommand(session_, *command, words).map([](std::string const&) {});
        }
        return requestText(words).and_then([this](std::string const& request) { return runRequest(request); });
    });
}

Outcome<> FixturePlayer::runRequest(std::string const& request)
{
    RequestRunner::Reply const reply = session_.run(request);
    if (reply.answer && *reply.answer == kSuccess) {
        return {};
    }
    TelephoneState const state = session_.services().telephone.state();
    auto const reasons = reasonsOf(request, reply, [&state]() -> TelephoneState const& { return state; });
    return refuse(RefusalKind::kWrongState,
                  reasons.empty() ? "the answer is " + reply.answer.value_or("missing") : reasons.front());
}

Outcome<bool> FixturePlayer::await(Condition const& condition)
{
    auto moved = session_.advance({});
    for (int moves = 0; moved && moves < kMostMoves; ++moves) {
        if (condition(session_.services().telephone.state())) {
            return true;
        }
        moved = session_.advance(kMove);
    }
    return moved.map([] { return false; });
}

Outcome<> FixturePlayer::compare()
{
    std::vector<std::string> differences;
    auto const isAsWanted = [&](TelephoneState const& state) {
        differences = fixtureDifferences(fixture_, ids_, state);
        return differences.empty();
    };
    return await(isAsWanted).and_then([&differences](bool reached) {
        return reached ? Outcome<>()
                       : refuse(RefusalKind::kWrongState, fmt::format("{}", fmt::join(differences, "; ")));
    });
}

Outcome<> setUpFixture(Session& session, std::string const& file)
{
    return session.advance({}).and_then([&file] { return readFixture(file); }).and_then([&](Fixture const& fixture) {
        return FixturePlayer(session, fixture).play();
    });
}

}  // namespace telephone
