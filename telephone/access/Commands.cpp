#include "telephone/access/Commands.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <utility>

#include <spdlog/fmt/fmt.h>

#include "telephone/access/FixturePlayer.h"
#include "telephone/access/LineNames.h"
#include "telephone/access/RequestShorthand.h"
#include "telephone/access/Session.h"
#include "telephone/access/StateFiles.h"
#include "telephone/access/TelephoneControls.h"
#include "telephone/access/TelephoneTrace.h"
#include "telephone/base/Names.h"
#include "telephone/display/PanelDrawing.h"
#include "telephone/display/StateTables.h"
#include "telephone/framework/EventHistory.h"
#include "telephone/framework/Log.h"
#include "telephone/time/TimeText.h"
#include "telephone/time/VirtualTime.h"
#include "telephone/trace/Trace.h"

namespace telephone {

namespace {

using Answer = Outcome<std::string>;
using Given = Arguments const;

Answer done(Outcome<> const& outcome)
{
    return outcome.map([] { return std::string(); });
}

Answer rows(std::vector<std::string> const& lines, char const* otherwise = "")
{
    return lines.empty() ? std::string(otherwise) : fmt::format("{}", fmt::join(lines, "\n"));
}

// Without a name, what the whole is about.
Answer describeOr(Session& session, Given& given, std::string (*whole)(ProtocolDescription const&))
{
    ProtocolDescription const& description = session.services().description;
    return given[0] ? description.describe(*given[0]) : whole(description);
}

std::string help(ProtocolDescription const& description)
{
    return "Requests are written in full (<Method>GetDevices</Method>) or short, with Tab for completion:\n"
           "  OutgoingCallMakeRequest Line=4711 CallID=1 Destination=100\n"
           "help HoldCall explains the request, help CallHeldEvent the event. Commands:\n" +
           description.commandList();
}

// A table of the state: parties in the telephone's own domain are numbers.
Answer table(Session& session, TableRows (*rowsOf)(TelephoneState const&, DisplayOptions const&),
             char const* otherwise = "")
{
    TelephoneState const state = session.services().telephone.state();
    return rows(rowsOf(state, {.ownDomain = state.domain}), otherwise);
}

Answer showTags(Session& session, bool on)
{
    if (!session.options().raw) {
        return refuse(RefusalKind::kNotSupported, "messages are written with their tags here already");
    }
    session.options().raw = on;
    return std::string();
}

// Larger than every number, so that a gap and the state come.
constexpr std::uint64_t kOfAnotherStart = UINT64_MAX;

// The ids of lines and appearances. Refused if the telephone does not have one of them.
Outcome<std::vector<std::string>> placesNamed(std::vector<std::string> const& names, TelephoneState const& state)
{
    std::vector<std::string> places;
    places.reserve(names.size());
    for (std::string const& name : names) {
        auto const place = placeNamed(state, name);
        if (place.empty()) {
            return refuse(RefusalKind::kNotFound, fmt::format("there is no line {}; {}", name, linesThatAre(state)));
        }
        places.emplace_back(place);
    }
    return places;
}

// Events after a number of this start, or the present one.
Answer followEvents(Session& session, Given& given)
{
    EventHistory const& history = session.services().history;
    auto places = placesNamed(commaSeparated(given[3].value_or("")), session.services().telephone.state());
    if (!places) {
        return tl::unexpected(places.error());
    }
    EventSelection selection{history.latest(), {}, *std::move(places)};
    if (given[0]) {
        auto const number = numberOf(*given[0], 0, INT64_MAX);
        if (!number) {
            return tl::unexpected(number.error());
        }
        bool const isOfAnotherStart = given[1] && *given[1] != history.start();
        selection.after = isOfAnotherStart ? kOfAnotherStart : *number;
    }
    return eventMethods(commaSeparated(given[2].value_or(""))).map([&](std::vector<std::string> const& names) {
        selection.names = names;
        std::uint64_t const after = selection.after == kOfAnotherStart ? 0 : selection.after;
        session.follow(std::move(selection));
        return fmt::format(R"({{"start":"{}","after":{}}})", history.start(), after);
    });
}

Answer changeLogLevel(std::string const& level)
{
    constexpr std::uint64_t kMostLogLevel = 6;
    return numberOf(level, 0, kMostLogLevel).map([](std::uint64_t number) {
        setLogLevel(static_cast<int>(number));
        return std::string();
    });
}

Answer setMessages(Session& session, Given& given)
{
    constexpr std::uint64_t kMostMessages = 9999;
    auto const fresh = numberOf(*given[1], 0, kMostMessages);
    auto const old = numberOf(*given[2], 0, kMostMessages);
    if (!fresh || !old) {
        return tl::unexpected((fresh ? old : fresh).error());
    }
    return done(session.services().telephone.setMessages(*given[0], static_cast<int>(*fresh), static_cast<int>(*old)));
}

Answer advanceTime(Session& session, std::string const& duration)
{
    return secondsOf(duration).and_then([&session](double seconds) {
        return done(
            session.advance(std::chrono::duration_cast<SteadyClock::duration>(std::chrono::duration<double>(seconds))));
    });
}

Answer setUp(Session& session, std::string const& file)
{
    std::filesystem::path const path = std::filesystem::path(session.options().folder) / file;
    return setUpFixture(session, path.string()).and_then([&session] { return table(session, callRows); });
}

bool isOn(std::optional<std::string> const& word)
{
    return word == "on";
}

TelephoneControls& telephoneOf(Session& session)
{
    return session.services().telephone;
}

Outcome<TrafficRecorder*> recorderOf(Session& session)
{
    TrafficRecorder* const recorder = session.services().recorder;
    return recorder != nullptr ? Outcome<TrafficRecorder*>(recorder)
                               : refuse(RefusalKind::kNotSupported, "nothing can be recorded here");
}

Answer stopRecording(Session& session, Given& given)
{
    return given[0] ? done(telephoneOf(session).record(*given[0], false))
                    : recorderOf(session).and_then([](TrafficRecorder* found) { return done(found->stop()); });
}

// clang-format off
constexpr std::array kTable{
    Command{"help",       "[NAME...]",                "this list; or the meaning of a request, an event, a command or a value", [](Session& s, Given& g) { return describeOr(s, g, help); }},
    Command{"hello",      "[NAME]",                   "which telephone this is, and whether it is ready, as JSON; its log will call you NAME", [](Session& s, Given& g) { return s.hello(g[0]); }},
    Command{"describe",   "[NAME...]",                "every name of the protocol; or the meaning of one", [](Session& s, Given& g) { return describeOr(s, g, [](auto const& d) { return d.overview(); }); }},
    Command{"describe json", "",                      "the whole protocol as JSON",                         [](Session& s, Given&) -> Answer { return s.services().description.json(); }},
    Command{"state",      "",                         "the telephone at this moment, as JSON",              [](Session& s, Given&) -> Answer { return stateJson(telephoneOf(s).state()); }},
    Command{"state save", "FILE",                     "writes the state to a file",                         [](Session& s, Given& g) { return done(saveState(telephoneOf(s).state(), *g[0])); }},
    Command{"state diff", "FIRST SECOND",             "what differs between the states in two files; now stands for the present state", [](Session& s, Given& g) { return compareStates(*g[0], *g[1], telephoneOf(s).state()).and_then([](auto const& found) { return rows(found, "no difference"); }); }},
    Command{"events",     "[after NUMBER] [of START] [only EVENTS] [line LINES]", "events, numbered across the telephone, after a number or from now on; names and lines are separated by commas", followEvents},
    Command{"events off", "",                         "no more events",                                     [](Session& s, Given&) -> Answer { s.unfollow(); return std::string(); }},
    Command{"reasons",    "on|off",                   "a sentence beside the answer to each request that was refused or did nothing", [](Session& s, Given& g) -> Answer { s.options().reasons = isOn(g[0]); return std::string(); }},
    Command{"strict",     "on|off",                   "refuses requests with unknown names and wrong values, which the service would guess at", [](Session& s, Given& g) -> Answer { s.options().strict = isOn(g[0]); return std::string(); }},
    Command{"raw",        "on|off",                   "on the console: messages with their tags, not in words", [](Session& s, Given& g) { return showTags(s, isOn(g[0])); }},
    Command{"lines",      "",                         "the lines and their states",                         [](Session& s, Given&) { return table(s, lineRows); }},
    Command{"calls",      "",                         "the calls and their states",                         [](Session& s, Given&) { return table(s, callRows, "no calls"); }},
    Command{"keys",       "",                         "the keys of the telephone",                          [](Session& s, Given&) { return table(s, keyRows); }},
    Command{"lamps",      "",                         "the lamps and their modes",                          [](Session& s, Given&) { return table(s, lampRows); }},
    Command{"panel",      "",                         "the telephone as a drawing: its display, keys and lamps", [](Session& s, Given&) { return table(s, panelRows); }},
    Command{"press",      "KEY",                      "presses a key, named by number, label or function",  [](Session& s, Given& g) { return done(telephoneOf(s).press(*g[0])); }},
    Command{"release",    "KEY",                      "releases a key",                                     [](Session& s, Given& g) { return done(telephoneOf(s).release(*g[0])); }},
    Command{"hook",       "up|down",                  "lifts or replaces the handset",                      [](Session& s, Given& g) { return done(telephoneOf(s).hook(g[0] == "up")); }},
    Command{"plug",       "headset|handset|line [out]", "plugs a device in, or unplugs it",                 [](Session& s, Given& g) { return done(telephoneOf(s).plug(*g[0], !g[1])); }},
    Command{"unplug",     "headset|handset|line",     "unplugs a device",                                   [](Session& s, Given& g) { return done(telephoneOf(s).plug(*g[0], false)); }},
    Command{"lock",       "",                         "locks the telephone: only permitted numbers can be called", [](Session& s, Given&) { return done(telephoneOf(s).lock(true)); }},
    Command{"unlock",     "",                         "unlocks the telephone",                              [](Session& s, Given&) { return done(telephoneOf(s).lock(false)); }},
    Command{"record on",  "LINE",                     "starts recording the calls of a line",               [](Session& s, Given& g) { return done(telephoneOf(s).record(*g[0], true)); }},
    Command{"record off", "[LINE]",                   "stops recording the calls of a line; without one, ends the file of record FILE", stopRecording},
    Command{"record",     "FILE",                     "writes requests, commands, their replies and events to a file until record off, to be replayed", [](Session& s, Given& g) { return recorderOf(s).and_then([&](TrafficRecorder* r) { return done(r->start(*g[0])); }); }},
    Command{"trace on",   "FILE",                     "writes everything that happens, with what causes it, to a file until trace off (docs/trace.md)", [](Session& s, Given& g) { return done(traceTo(*g[0], telephoneOf(s))); }},
    Command{"trace off",  "",                         "ends the file of trace on",                          [](Session&, Given&) { return done(stopTrace()); }},
    Command{"call",       "LINE from NUMBER [name NAME]", "a call from a number of the exchange to a line",  [](Session& s, Given& g) { return done(telephoneOf(s).call(*g[0], *g[1], g[2].value_or(""))); }},
    Command{"message",    "LINE new COUNT old COUNT", "messages in a line's mailbox at the exchange",       setMessages},
    Command{"exchange",   "NUMBER [does] STEPS...",   "what a number of the exchange does in its next calls (docs/exchange.md); without does: at once, in its present call, or in a new one if the first step is call", [](Session& s, Given& g) { return done(g[1] ? telephoneOf(s).defineNumber(*g[0], *g[2]) : telephoneOf(s).playSteps(*g[0], *g[2])); }},
    Command{"exchange numbers", "",                   "the numbers of the exchange and what they do",       [](Session& s, Given&) { return telephoneOf(s).exchangeNumbers().and_then([](TelephoneControls::Rows const& found) { return rows(found); }); }},
    Command{"exchange registrar", "accept|refuse|redirect|away|forget [VALUE]", "what the exchange's registrar does: refuse 403, redirect sip:127.0.0.1:5099; forget removes all registrations once", [](Session& s, Given& g) { return done(telephoneOf(s).setRegistrar(g[1] ? *g[0] + " " + *g[1] : *g[0])); }},
    Command{"registrar",  "on|off",                   "exchange registrar accept, or away",                 [](Session& s, Given& g) { return done(telephoneOf(s).setRegistrar(isOn(g[0]) ? "accept" : "away")); }},
    Command{"fault",      "FAULT...",                 "a fault of what surrounds the telephone (docs/faults.md), now or at a moment: fault datagrams lost 2 on CallHeldEvent", [](Session& s, Given& g) { return done(telephoneOf(s).addFault(*g[0])); }},
    Command{"fault off",  "[FAULT...]",               "ends a fault, active or waiting; without a name, all of them", [](Session& s, Given& g) { return done(telephoneOf(s).endFault(g[0].value_or(""))); }},
    Command{"faults",     "",                         "the faults that are active, and those that wait for their moment", [](Session& s, Given&) { return rows(telephoneOf(s).faults(), "no faults"); }},
    Command{"store list", "",                         "the settings in the configuration store",            [](Session& s, Given&) { return rows(telephoneOf(s).settings()); }},
    Command{"store get",  "SETTING",                  "one setting",                                        [](Session& s, Given& g) -> Answer { auto const value = telephoneOf(s).setting(*g[0]); return value ? Answer(*g[0] + " = " + *value) : refuse(RefusalKind::kNotFound, "no setting " + *g[0]); }},
    Command{"store set",  "SETTING VALUE",            "changes a setting",                                  [](Session& s, Given& g) { return done(telephoneOf(s).set(*g[0], *g[1])); }},
    Command{"advance",    "SECONDS",                  "in virtual time: lets so much time pass; the result follows every event until then", [](Session& s, Given& g) { return advanceTime(s, *g[0]); }},
    Command{"fixture",    "FILE",                     "in virtual time: brings the telephone into the state that a file describes (docs/fixtures.md); the result is the table of calls", [](Session& s, Given& g) { return setUp(s, *g[0]); }},
    Command{"time",       "",                         "the time of day, in UTC, and whether it is real or virtual", [](Session&, Given&) -> Answer { return timeText(wallTime()) + (isVirtual() ? " virtual" : " real"); }},
    Command{"check",      "",                         "refused if something does not hold that must hold of every telephone at rest: a lamp without a cause, a call whose end no event told, ...", [](Session& s, Given&) { return done(s.check()); }},
    Command{"log",        "LEVEL",                    "0 (nothing) to 6 (every request and SIP message); 4 is usual", [](Session&, Given& g) { return changeLogLevel(*g[0]); }},
    Command{"say",        "[TEXT...]",                "the text as the result, for scripts",                [](Session&, Given& g) -> Answer { return g[0].value_or(""); }},
    Command{"quit",       "",                         "ends the telephone",                                 [](Session& s, Given&) -> Answer { s.services().end(); return std::string(); }},
};
// clang-format on

}  // namespace

std::span<Command const> commands()
{
    return kTable;
}

std::size_t wordsInName(Command const& command)
{
    return command.name.find(' ') == std::string_view::npos ? 1 : 2;
}

Command const* findCommand(Words const& words)
{
    Command const* found = nullptr;
    for (Command const& each : kTable) {
        std::size_t const count = wordsInName(each);
        std::string const begin = words.size() < count ? "" : count == 1 ? words[0] : words[0] + " " + words[1];
        if (equalIgnoringCase(begin, each.name) && (found == nullptr || count > wordsInName(*found))) {
            found = &each;
        }
    }
    return found;
}

std::string usageOf(Command const& command)
{
    return std::string(command.name).append(command.arguments.empty() ? "" : " ").append(command.arguments);
}

Outcome<Arguments> parseArguments(Command const& command, Words const& words)
{
    auto arguments = CommandSyntax(command.arguments).parse(words, wordsInName(command));
    if (!arguments) {
        return refuse(RefusalKind::kBadInput,
                      fmt::format("{}; write it as: {}", arguments.error().reason, usageOf(command)));
    }
    return arguments;
}

Outcome<std::string> runCommand(Session& session, Command const& command, Words const& words)
{
    return parseArguments(command, words).and_then([&](Arguments const& arguments) {
        return command.handler(session, arguments);
    });
}

tl::unexpected<Refusal> unknownWord(std::string const& word)
{
    auto names = requestNames();
    auto const own = commandNames();
    names.insert(names.end(), own.begin(), own.end());
    return refuse(RefusalKind::kNotFound,
                  fmt::format("no request or command {}{}; help lists them", word, suggestion(word, names)));
}

std::vector<CommandDescription> commandDescriptions()
{
    std::vector<CommandDescription> descriptions;
    descriptions.reserve(kTable.size());
    for (Command const& each : kTable) {
        descriptions.push_back({std::string(each.name), std::string(each.arguments), std::string(each.meaning)});
    }
    return descriptions;
}

std::vector<std::string_view> commandNames()
{
    return namesOf(kTable, &Command::name);
}

}  // namespace telephone
