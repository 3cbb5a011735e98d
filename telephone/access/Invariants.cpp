#include "telephone/access/Invariants.h"

#include <algorithm>
#include <array>
#include <map>
#include <string_view>
#include <utility>

#include <malloc.h>
#include <spdlog/fmt/fmt.h>

#include "telephone/display/LampWords.h"
#include "telephone/framework/HeldSemaphores.h"
#include "telephone/protocol/MessageText.h"
#include "telephone/protocol/Vocabulary.h"

namespace telephone {

namespace {

using Broken = std::vector<std::string>;

// More than the allocator keeps between two calls, less than what a thousand lost calls would keep.
constexpr std::size_t kMostGrowth = std::size_t{2} * 1024 * 1024;
constexpr std::size_t kOverheadOfEvent = 200;

bool hasCall(TelephoneState const& state, bool (*isMeant)(CallStatus const&))
{
    return std::ranges::any_of(state.calls, isMeant);
}

bool isLine(LineStatus const& line, KeyState const& key)
{
    return line.id == key.target;
}

bool isInUse(TelephoneState const& state, KeyState const& key)
{
    auto const line = std::ranges::find_if(state.lines, [&](LineStatus const& each) { return isLine(each, key); });
    if (line == state.lines.end()) {
        return true;  // another telephone's, of which the state says nothing
    }
    auto const isBusy = [](LineStatus const& each) { return each.state != "idle" || each.selected; };
    return isBusy(*line) || std::ranges::any_of(line->appearances, isBusy);
}

struct LampCause
{
    std::string_view function;
    bool (*isGiven)(TelephoneState const& state, KeyState const& key);
    std::string_view cause;
};

// The functions whose cause is in the state; the lamps outside the keys have their names.
constexpr std::array kCauses{
    LampCause{"line", isInUse, "the line is idle"},
    LampCause{"dss", isInUse, "the line is idle"},
    LampCause{"forwarding",
              [](TelephoneState const& state, KeyState const&) {
                  return std::ranges::any_of(state.lines, [](LineStatus const& line) {
                      return std::ranges::any_of(line.forwarding, &ForwardingState::active);
                  });
              },
              "no line is forwarded"},
    LampCause{"dnd",
              [](TelephoneState const& state, KeyState const&) {
                  return std::ranges::any_of(state.lines, &LineStatus::doNotDisturb);
              },
              "do-not-disturb is off"},
    LampCause{"hold",
              [](TelephoneState const& state, KeyState const&) {
                  return hasCall(state, [](CallStatus const& call) { return call.heldHere && !call.over; });
              },
              "no call is held"},
    LampCause{"mute", [](TelephoneState const& state, KeyState const&) { return state.muted; }, "the microphone is on"},
    LampCause{"headset",
              [](TelephoneState const& state, KeyState const&) {
                  return std::ranges::find(state.plugged, "headset") != state.plugged.end();
              },
              "no headset is plugged in"},
    LampCause{"messages",
              [](TelephoneState const& state, KeyState const&) {
                  return std::ranges::any_of(
                      state.lines, [](LineStatus const& line) { return line.messages && line.messages->waiting; });
              },
              "no message waits"},
};

// The calls that events left in a state other than idle, with that state.
std::map<int, int> toldCalls(EventHistory::Events const& events)
{
    std::map<int, int> told;
    for (auto const& each : events) {
        auto const event = readEvent(each->text);
        if (event && event->description->method == std::string_view("CallStateChangeEvent")) {
            told[std::stoi(std::string(event->call().empty() ? "0" : event->call()))] =
                std::stoi(std::string(event->value("CallState")));
        }
    }
    std::erase_if(told, [](auto const& call) {
        constexpr std::array kOver{"idle", "busy", "failed"};
        return std::ranges::find(kOver, nameOfValue(enumerations::kCallState, call.second)) != kOver.end();
    });
    return told;
}

}  // namespace

std::vector<std::string> wronglyToldCalls(EventHistory::Events const& events, TelephoneState const& state)
{
    Broken broken;
    std::map<int, int> told = toldCalls(events);
    for (CallStatus const& call : state.calls) {
        bool const wasTold = told.erase(call.id) > 0;
        constexpr std::array kSilent{"busy", "failed"};
        bool const mayBeSilent = call.over || std::ranges::find(kSilent, call.state) != kSilent.end();
        if (!wasTold && !mayBeSilent) {
            broken.push_back(fmt::format("call {} is {}, and its events say that it is over", call.id, call.state));
        }
    }
    for (auto const& [id, last] : told) {
        broken.push_back(fmt::format("call {} is over without an event; the last one said {}", id,
                                     nameOfValue(enumerations::kCallState, last)));
    }
    return broken;
}

std::vector<std::string> lampsWithoutCause(TelephoneState const& state)
{
    Broken broken;
    for (KeyState const& key : state.keys) {
        auto const row = std::ranges::find(kCauses, key.function, &LampCause::function);
        if (key.lamp.mode != "off" && row != kCauses.end() && !row->isGiven(state, key)) {
            broken.push_back(fmt::format("the lamp {} is {}, and {}", lampName(key), key.lamp.mode, row->cause));
        }
    }
    return broken;
}

std::vector<std::string> settingsNotStored(std::vector<std::string> const& missing)
{
    Broken broken;
    for (std::string const& each : missing) {
        broken.push_back(fmt::format("the setting {} was accepted, and the store does not have it", each));
    }
    return broken;
}

void Invariants::checkMemory(EventHistory::Events const& events, std::vector<std::string>& broken)
{
    std::size_t kept = 0;
    for (auto const& each : events) {
        kept += each->text.capacity() + kOverheadOfEvent;
    }
    std::size_t const all = mallinfo2().uordblks;
    std::size_t const used = all - std::min(all, kept);
    if (!memoryAtRest_) {
        memoryAtRest_ = used;
    } else if (used > *memoryAtRest_ + kMostGrowth) {
        broken.push_back(
            fmt::format("{} kB more are in use than at the first rest without calls", (used - *memoryAtRest_) / 1024));
    }
}

std::vector<std::string> Invariants::broken(EventHistory const& history, TelephoneState const& state,
                                            std::vector<std::string> const& missing)
{
    auto const portion = history.after(0, history.latest());
    Broken broken = portion.missed == 0 ? wronglyToldCalls(portion.events, state) : Broken();
    for (std::string& each : lampsWithoutCause(state)) {
        broken.push_back(std::move(each));
    }
    for (std::string& each : settingsNotStored(missing)) {
        broken.push_back(std::move(each));
    }
    if (int const held = heldSemaphores(); held != 0) {
        broken.push_back(fmt::format("{} locks of the service are taken", held));
    }
    if (state.calls.empty()) {
        checkMemory(portion.events, broken);
    }
    return broken;
}

}  // namespace telephone
