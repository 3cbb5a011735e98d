#include "telephone/fleet/PairedCalls.h"

#include <algorithm>
#include <array>
#include <chrono>

#include <poll.h>
#include <spdlog/fmt/fmt.h>
#include <spdlog/fmt/ranges.h>

#include "telephone/fleet/Asking.h"
#include "telephone/fleet/FleetTable.h"
#include "telephone/time/Waiting.h"

namespace telephone {

namespace {

using namespace std::chrono_literals;

constexpr auto kLongest = 20s;  // until all talk
constexpr auto kPause = 50ms;   // between two looks at those that do not talk yet

// One call in the making.
struct PairedCall
{
    FleetPair pair;
    int id = 0;          // for the caller
    std::string line;    // of the caller
    std::string called;  // line of the called one
    bool isAnswered = false;
    bool talks = false;
    std::string failure = {};  // empty: none
};

Json const* callIn(FleetRow const& row, std::string_view state)
{
    if (!row.state.is_object()) {
        return nullptr;
    }
    auto const& calls = row.state["calls"];
    auto const found = std::ranges::find_if(calls, [state](Json const& each) { return each["state"] == state; });
    return found == calls.end() ? nullptr : &*found;
}

std::string lineOf(FleetRow const& row)
{
    return row.state.is_object() && !row.state["lines"].empty() ? row.state["lines"].front()["id"].get<std::string>()
                                                                : std::string();
}

// One that the caller does not use.
int freeId(FleetRow const& row)
{
    int id = 1;
    for (Json const& each : row.state["calls"]) {
        id = std::max(id, each["id"].get<int>() + 1);
    }
    return id;
}

class PairedCalls
{
public:
    PairedCalls(std::vector<FleetPair> const& pairs, int stop)
        : stop_(stop)
    {
        for (FleetPair const& each : pairs) {
            calls_.push_back({each, 0, {}, {}});
        }
    }

    Outcome<> make()
    {
        prepare();
        ask([](PairedCall const& call) { return call.pair.first; },
            [](PairedCall const& call) {
                return fmt::format("OutgoingCallMakeRequest Line={} CallID={} Destination={}", call.line, call.id,
                                   call.called);
            },
            [](PairedCall const& call) { return call.failure.empty(); });
        auto const end = SteadyClock::now() + kLongest;
        while (std::ranges::any_of(calls_, isPending) && SteadyClock::now() < end && pause()) {
            look();
        }
        return outcome();
    }

private:
    static bool isPending(PairedCall const& call) { return !call.talks && call.failure.empty(); }

    // Lines and ids, from the states.
    void prepare()
    {
        FleetTelephones telephones;
        for (PairedCall const& each : calls_) {
            telephones.insert(telephones.end(), {each.pair.first, each.pair.second});
        }
        auto const rows = rowsOf(telephones, stop_);
        for (std::size_t i = 0; i < calls_.size(); ++i) {
            FleetRow const& caller = rows[2 * i];
            calls_[i].line = lineOf(caller);
            calls_[i].called = lineOf(rows[2 * i + 1]);
            if (calls_[i].line.empty() || calls_[i].called.empty()) {
                calls_[i].failure = "both must run";
            } else {
                calls_[i].id = freeId(caller);
            }
        }
    }

    // Asks one side of those calls for which it is due.
    template <typename Side, typename Text, typename Due>
    void ask(Side side, Text text, Due isDue)
    {
        std::vector<PairedCall*> due;
        FleetTelephones telephones;
        std::vector<std::string> texts;
        for (PairedCall& each : calls_) {
            if (isDue(each)) {
                due.push_back(&each);
                telephones.push_back(side(each));
                texts.push_back(text(each));
            }
        }
        std::size_t next = 0;
        auto const replies = askEach(
            telephones, [&](FleetTelephone const&) { return texts[next++]; }, stop_);
        for (std::size_t i = 0; i < due.size(); ++i) {
            if (auto const reply = textOf(replies[i]); !reply) {
                due[i]->failure = reply.error().reason;
            }
        }
    }

    // Answers those that ring, and notes those that talk.
    void look()
    {
        FleetTelephones called;
        for (PairedCall const& each : calls_) {
            called.push_back(each.pair.second);
        }
        auto const rows = rowsOf(called, stop_);
        std::vector<std::string> answers(calls_.size());
        for (std::size_t i = 0; i < calls_.size(); ++i) {
            Json const* const ringing = calls_[i].isAnswered ? nullptr : callIn(rows[i], "ringing");
            if (ringing != nullptr) {
                answers[i] = fmt::format("AnswerCall Line={} CallID={}", (*ringing)["place"].get<std::string>(),
                                         (*ringing)["id"].get<int>());
            }
            calls_[i].talks = calls_[i].talks || (calls_[i].isAnswered && callIn(rows[i], "connected") != nullptr);
        }
        auto const placeOf = [this](PairedCall const& call) { return static_cast<std::size_t>(&call - calls_.data()); };
        ask([](PairedCall const& call) { return call.pair.second; },
            [&](PairedCall const& call) { return answers[placeOf(call)]; },
            [&](PairedCall& call) {
                bool const rings = isPending(call) && !answers[placeOf(call)].empty();
                call.isAnswered = call.isAnswered || rings;
                return rings;
            });
    }

    // False: the end is wanted.
    [[nodiscard]] bool pause() const
    {
        std::array<pollfd, 1> waited{{{stop_, POLLIN, 0}}};
        return pollUntil(waited, SteadyClock::now() + kPause, "calls that are answered") == 0;
    }

    [[nodiscard]] Outcome<> outcome() const
    {
        std::vector<std::string> failures;
        for (PairedCall const& each : calls_) {
            if (!each.talks) {
                failures.push_back(fmt::format("{} to {}: {}", each.pair.first->number(), each.pair.second->number(),
                                               each.failure.empty() ? "it does not talk yet" : each.failure));
            }
        }
        return failures.empty()
                   ? Outcome<>()
                   : refuse(RefusalKind::kUnavailable, fmt::format("{} of {} calls failed: {}", failures.size(),
                                                                   calls_.size(), fmt::join(failures, "; ")));
    }

    int const stop_;
    std::vector<PairedCall> calls_;
};

}  // namespace

Outcome<> callPairs(std::vector<FleetPair> const& pairs, int stop)
{
    return PairedCalls(pairs, stop).make();
}

}  // namespace telephone
