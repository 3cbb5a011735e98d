#include "telephone/faults/FaultKinds.h"

#include <algorithm>
#include <array>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include <spdlog/fmt/fmt.h>

#include "telephone/base/Names.h"
#include "telephone/exchange/Exchange.h"
#include "telephone/management/Settings.h"
#include "telephone/physical/PhysicalInterface.h"
#include "telephone/sip/DatagramFaults.h"
#include "telephone/sip/EventLoop.h"
#include "telephone/time/VirtualTime.h"
#include "telephone/time/Waiting.h"

namespace telephone {

namespace {

using sip::Datagram;
using sip::DatagramFate;
using sip::DatagramFault;
using Targets = FaultTargets const;
using Given = Arguments const;
using Effect = Outcome<FaultEffect>;

constexpr int kMostDatagrams = 100'000;
constexpr int kMostPercent = 100;
constexpr int kMostPresses = 100;
constexpr int kMostRate = 1'000'000'000;

// A fault that is switched on and off.
Effect switched(std::function<void(bool on)> turn)
{
    return FaultEffect{[turn](FaultReport const&) { turn(true); },
                       [turn] {
                           turn(false);
                           return std::string();
                       }};
}

// A fault with a number; `set(usual)` ends it.
Effect numbered(std::string const& word, int least, int most, int usual, std::function<void(int)> set)
{
    return numberOf(word, static_cast<std::uint64_t>(least), static_cast<std::uint64_t>(most))
        .map([&](std::uint64_t value) {
            return FaultEffect{[set, value](FaultReport const&) { set(static_cast<int>(value)); },
                               [set, usual] {
                                   set(usual);
                                   return std::string();
                               }};
        });
}

// --- the exchange

Outcome<exchange::Exchange*> exchangeOf(Targets& targets)
{
    if (targets.exchange == nullptr) {
        return refuse(RefusalKind::kNotSupported, "this telephone runs without the built-in exchange");
    }
    return targets.exchange;
}

Effect registrarAway(Targets& targets, Given&)
{
    return exchangeOf(targets).and_then([](exchange::Exchange* exchange) {
        return switched([exchange](bool away) {
            using Kind = exchange::RegistrarConduct::Kind;
            exchange->setRegistrar({away ? Kind::kAway : Kind::kAccept});
        });
    });
}

// --- datagrams

// What one fault did to datagrams. Used under the loop's lock.
struct DatagramCount
{
    sip::DatagramFaults::Id id = 0;
    int befallen = 0;
};

// `past` says what happened to each: "lost". A fault without end counts them; one of so many tells of each.
Effect onDatagrams(Targets& targets, DatagramFault fault, std::string_view past)
{
    auto const count = std::make_shared<DatagramCount>();
    sip::EventLoop& loop = targets.loop;
    auto const begin = [&loop, fault, count, past](FaultReport const& report) {
        std::lock_guard const lock(loop);
        DatagramFault acting = fault;
        bool const tells = fault.count > 0;
        acting.befell = [count, past, tells, did = report.did](Datagram const& datagram) {
            ++count->befallen;
            if (tells) {
                did(fmt::format("the datagram {} {}", datagram.describe(), past));
            }
        };
        acting.ended = report.ended;
        count->id = sip::datagramFaults().begin(std::move(acting));
    };
    auto const end = [&loop, count] {
        std::lock_guard const lock(loop);
        sip::datagramFaults().end(count->id);
        return fmt::format("it befell {} datagram{}", count->befallen, count->befallen == 1 ? "" : "s");
    };
    return FaultEffect{begin, end};
}

bool isSip(Datagram const& datagram)
{
    return !datagram.isMedia();
}

bool isRtp(Datagram const& datagram)
{
    return datagram.isRtp();
}

bool isAny(Datagram const&)
{
    return true;
}

// The choice "sip|rtp|all", which is sip if left out.
auto chosen(std::optional<std::string> const& which)
{
    return which == "all" ? isAny : which == "rtp" ? isRtp : isSip;
}

Effect counted(Targets& targets, Given& given, std::size_t which, DatagramFault fault, std::string_view past)
{
    return numberOf(*given[0], 1, kMostDatagrams).and_then([&](std::uint64_t count) {
        fault.count = static_cast<int>(count);
        fault.concerns = chosen(given[which]);
        return onDatagrams(targets, std::move(fault), past);
    });
}

Effect datagramsLost(Targets& targets, Given& given)
{
    return counted(targets, given, 1, {.fate = DatagramFate::kLost}, "is lost");
}

Effect datagramsDoubled(Targets& targets, Given& given)
{
    return counted(targets, given, 1, {.fate = DatagramFate::kDoubled}, "comes twice");
}

Effect datagramsOvertaken(Targets& targets, Given& given)
{
    return counted(targets, given, 1, {.fate = DatagramFate::kOvertaken}, "comes after the next one");
}

Effect datagramsLate(Targets& targets, Given& given)
{
    return durationOf(*given[1]).and_then([&](std::chrono::milliseconds delay) {
        return counted(targets, given, 2, {.fate = DatagramFate::kLate, .delay = delay}, "is late");
    });
}

Effect farEndSilent(Targets& targets, Given&)
{
    return exchangeOf(targets).and_then([&](exchange::Exchange* exchange) {
        auto const isFromThere = [from = exchange->hostPort()](Datagram const& datagram) {
            return datagram.from == from;
        };
        return onDatagrams(targets, {.fate = DatagramFate::kLost, .concerns = isFromThere}, "is lost");
    });
}

Effect rtpLoss(Targets& targets, Given& given)
{
    return numberOf(*given[0], 1, kMostPercent).and_then([&](std::uint64_t percent) {
        return onDatagrams(targets,
                           {.fate = DatagramFate::kLost, .concerns = isRtp, .percent = static_cast<unsigned>(percent)},
                           "is lost");
    });
}

Effect rtpDelay(Targets& targets, Given& given)
{
    return durationOf(*given[0]).and_then([&](std::chrono::milliseconds delay) {
        return onDatagrams(targets, {.fate = DatagramFate::kLate, .concerns = isRtp, .delay = delay}, "is late");
    });
}

// --- the rest

Effect storeFull(Targets& targets, Given&)
{
    return switched([&settings = targets.settings](bool full) { settings.setStoreFull(full); });
}

Effect storeSlow(Targets& targets, Given& given)
{
    return durationOf(*given[0]).and_then([&](std::chrono::milliseconds by) {
        // Who holds the lock of the loop in virtual time must not wait: the others may need it at that moment.
        auto const pause = std::make_shared<std::function<void()> const>([&loop = targets.loop, by] {
            bool const mustNotWait = isVirtual() && loop.isLockedByCaller();
            if (!mustNotWait) {
                sleepFor(by);
            }
        });
        return switched([&settings = targets.settings, pause](bool slow) {
            settings.setPauseBeforeWrites(slow ? pause : nullptr);
        });
    });
}

Effect lampsStuck(Targets& targets, Given&)
{
    return switched([&lamps = targets.physical.lampBoard()](bool stuck) { lamps.setStuck(stuck); });
}

Effect keysBounce(Targets& targets, Given& given)
{
    return numbered(*given[0], 2, kMostPresses, 1,
                    [&physical = targets.physical](int times) { physical.setPresses(times); });
}

Effect applicationsSlow(Targets& targets, Given& given)
{
    return numbered(*given[0], 1, kMostRate, 0, [&rate = targets.readingRate](int bytes) { rate = bytes; });
}

// clang-format off
constexpr std::array kTable{
    FaultKind{"registrar away",      "",                                "the exchange's registrar does not answer; the exchange still routes calls, and registrations last until they expire", false, registrarAway},
    FaultKind{"far-end silent",      "",                                "no SIP message of the exchange arrives: its numbers and its registrar are silent",       true,  farEndSilent},
    FaultKind{"datagrams lost",      "COUNT [sip|rtp|all]",             "the next datagrams are lost; of SIP, if nothing else is said",                           true,  datagramsLost},
    FaultKind{"datagrams doubled",   "COUNT [sip|rtp|all]",             "the next datagrams come twice",                                                          true,  datagramsDoubled},
    FaultKind{"datagrams late",      "COUNT by SECONDS [sip|rtp|all]",  "the next datagrams come so much later; those behind them do not wait",                   true,  datagramsLate},
    FaultKind{"datagrams overtaken", "COUNT [sip|rtp|all]",             "the next datagrams come out of order: each after the following one to the same receiver, or after a second if none follows", true, datagramsOvertaken},
    FaultKind{"rtp loss",            "PERCENT",                         "so many of a hundred audio packets, drawn by the seed, are lost",                        true,  rtpLoss},
    FaultKind{"rtp delay",           "SECONDS",                         "every audio packet comes so much later",                                                 true,  rtpDelay},
    FaultKind{"store full",          "",                                "the configuration store refuses every write, as on a full disk",                         false, storeFull},
    FaultKind{"store slow",          "SECONDS",                         "every change of settings takes so much longer; in virtual time not one that is made with the phone lock held", false, storeSlow},
    FaultKind{"lamps stuck",         "",                                "every lamp stays as it is; at the end each takes its latest mode",                       false, lampsStuck},
    FaultKind{"keys bounce",         "COUNT",                           "each press of a key comes so many times, with a release between",                        false, keysBounce},
    FaultKind{"applications slow",   "BYTES",                           "each application at the socket reads only so many bytes a second",                       false, applicationsSlow},
};
// clang-format on

constexpr bool namesAreUnique()
{
    for (std::size_t i = 0; i < kTable.size(); ++i) {
        for (std::size_t j = i + 1; j < kTable.size(); ++j) {
            if (kTable[i].name == kTable[j].name) {
                return false;
            }
        }
    }
    return true;
}
static_assert(namesAreUnique());

}  // namespace

std::span<FaultKind const> faultKinds()
{
    return kTable;
}

FaultKind const* findFaultKind(std::string_view name)
{
    auto const found =
        std::ranges::find_if(kTable, [name](FaultKind const& each) { return equalIgnoringCase(each.name, name); });
    return found == kTable.end() ? nullptr : &*found;
}

std::string usageOf(FaultKind const& kind)
{
    return std::string(kind.name).append(kind.arguments.empty() ? "" : " ").append(kind.arguments);
}

}  // namespace telephone
