#include "telephone/console/CommandInterpreter.h"

#include <algorithm>
#include <initializer_list>
#include <limits>

#include "telephone/base/Names.h"
#include "telephone/console/EventPattern.h"
#include "telephone/console/Help.h"
#include "telephone/console/RequestShorthand.h"
#include "telephone/console/TelephoneControls.h"
#include "telephone/console/Transcript.h"
#include "telephone/framework/Channel.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/RequestRunner.h"

namespace telephone {

namespace {

constexpr std::size_t kAnyNumber = std::numeric_limits<std::size_t>::max();
constexpr int kMostLogLevel = 6;
constexpr std::string_view kQuit = "quit";

using Names = std::vector<std::string_view>;

Names joined(std::initializer_list<Names> lists)
{
    Names all;
    for (Names const& each : lists) {
        all.insert(all.end(), each.begin(), each.end());
    }
    return all;
}

// Whether the word is the first of two.
Outcome<bool> choice(std::string const& word, std::string_view yes, std::string_view no)
{
    bool const isYes = equalIgnoringCase(word, yes);
    if (!isYes && !equalIgnoringCase(word, no)) {
        return refuse(RefusalKind::kBadInput, fmt::format("\"{}\" is neither {} nor {}", word, yes, no));
    }
    return isYes;
}

Outcome<> changeLogLevel(std::string const& level)
{
    if (level.size() != 1 || level[0] < '0' || level[0] > '0' + kMostLogLevel) {
        return refuse(RefusalKind::kBadInput, "\"" + level + "\" is not a log level: 0 (nothing) to 6 (everything)");
    }
    setLogLevel(level[0] - '0');
    return {};
}

}  // namespace

CommandInterpreter::CommandInterpreter(Channel& channel, RequestRunner& runner, TelephoneControls& controls,
                                       Transcript& transcript)
    : channel_(channel)
    , runner_(runner)
    , controls_(controls)
    , transcript_(transcript)
{}

std::vector<CommandInterpreter::Command> const& CommandInterpreter::commands()
{
    using I = CommandInterpreter;
    using W = Words const;
    // clang-format off
    static std::vector<Command> const table{
        {"help",     "[NAME]",                     0, 1, "this list; or the meaning of a request, an event or a command", [](I& i, W& w) { return i.help(w); }},
        {"requests", "",                           0, 0, "every request with its parameters",                        [](I& i, W&) { return i.show(requestRows()); }},
        {"events",   "",                           0, 0, "every event with its elements",                            [](I& i, W&) { return i.show(eventRows()); }},
        {"lines",    "",                           0, 0, "the lines and their states",                               [](I& i, W&) { return i.show(i.controls_.lines()); }},
        {"calls",    "",                           0, 0, "the calls and their states",                               [](I& i, W&) { auto const rows = i.controls_.calls(); return i.show(rows.empty() ? decltype(rows){"no calls"} : rows); }},
        {"keys",     "",                           0, 0, "the keys of the telephone",                                [](I& i, W&) { return i.show(i.controls_.keys()); }},
        {"lamps",    "",                           0, 0, "the lamps and their modes",                                [](I& i, W&) { return i.show(i.controls_.lamps()); }},
        {"press",    "KEY",                        1, 1, "presses a key, named by number, label or function",        [](I& i, W& w) { return i.controls_.press(w[1]); }},
        {"release",  "KEY",                        1, 1, "releases a key",                                           [](I& i, W& w) { return i.controls_.release(w[1]); }},
        {"hook",     "up|down",                    1, 1, "lifts or replaces the handset",                            [](I& i, W& w) { return choice(w[1], "up", "down").and_then([&](bool up) { return i.controls_.hook(up); }); }},
        {"plug",     "headset|handset|line [out]", 1, 2, "plugs a device in, or unplugs it",                         [](I& i, W& w) { return i.plug(w); }},
        {"unplug",   "headset|handset|line",       1, 1, "unplugs a device",                                         [](I& i, W& w) { return i.controls_.plug(w[1], false); }},
        {"lock",     "",                           0, 0, "locks the telephone: only permitted numbers can be called", [](I& i, W&) { return i.controls_.lock(true); }},
        {"unlock",   "",                           0, 0, "unlocks the telephone",                                    [](I& i, W&) { return i.controls_.lock(false); }},
        {"record",   "on|off LINE",                2, 2, "starts or stops recording the calls of a line",            [](I& i, W& w) { return choice(w[1], "on", "off").and_then([&](bool on) { return i.controls_.record(w[2], on); }); }},
        {"store",    "list|get KEY|set KEY VALUE", 1, 3, "the settings in the configuration store",                  [](I& i, W& w) { return i.store(w); }},
        {"log",      "LEVEL",                      1, 1, "0 (nothing) to 6 (every request and SIP message); 4 is usual", [](I&, W& w) { return changeLogLevel(w[1]); }},
        {"say",      "TEXT",                       0, kAnyNumber, "prints a text",                                   [](I& i, W& w) { return i.say(w); }},
        {kQuit,      "",                           0, 0, "ends the telephone",                                       [](I&, W&) { return Outcome<>(); }},
    };
    // clang-format on
    return table;
}

CommandInterpreter::Command const* CommandInterpreter::findCommand(std::string_view name)
{
    auto const& table = commands();
    auto const found = std::find_if(table.begin(), table.end(),
                                    [&](Command const& each) { return equalIgnoringCase(each.name, name); });
    return found == table.end() ? nullptr : &*found;
}

std::vector<std::string_view> CommandInterpreter::commandNames()
{
    return namesOf(commands(), &Command::name);
}

Outcome<CommandInterpreter::Result> CommandInterpreter::run(std::string_view line)
{
    std::string_view const text = trimmed(line);
    if (isRequestText(text)) {
        return send(std::string(text));
    }
    return splitWords(text).and_then([this](Words const& words) { return run(words); });
}

Outcome<CommandInterpreter::Result> CommandInterpreter::run(Words const& words)
{
    if (words.empty()) {
        return Result{};
    }
    Command const* const command = findCommand(words.front());
    if (command == nullptr && findRequest(words.front()) != nullptr) {
        return requestText(words).map([this](std::string const& request) { return send(request); });
    }
    if (command == nullptr) {
        return refuse(RefusalKind::kNotFound, "no request or command " + words.front() +
                                                  suggestion(words.front(), joined({requestNames(), commandNames()})) +
                                                  "; help lists them");
    }
    std::size_t const arguments = words.size() - 1;
    if (arguments < command->least || arguments > command->most) {
        return refuse(RefusalKind::kBadInput, fmt::format("write it as: {} {}", command->name, command->arguments));
    }
    return command->handler(*this, words).map([command] {
        return Result{command->name == kQuit ? Kind::kQuit : Kind::kCommand, std::nullopt};
    });
}

CommandInterpreter::Result CommandInterpreter::send(std::string const& request)
{
    transcript_.request(request);
    RequestRunner::Reply reply = runner_.run(channel_, request);
    transcript_.answer(reply.answer);
    return {Kind::kRequest, std::move(reply.answer)};
}

Outcome<> CommandInterpreter::show(std::vector<std::string> const& rows)
{
    transcript_.rows(rows);
    return {};
}

Outcome<> CommandInterpreter::help(Words const& words)
{
    if (words.size() < 2) {
        return helpForAll();
    }
    std::string const& name = words[1];
    RequestDescription const* const request = findRequest(name);
    EventDescription const* const event = findEvent(name);
    Command const* const command = findCommand(name);
    if (request == nullptr && event == nullptr && command == nullptr) {
        return refuse(RefusalKind::kNotFound,
                      "nothing is called " + name +
                          suggestion(name, joined({requestNames(), eventNames(), commandNames()})));
    }
    if (request != nullptr) {
        transcript_.rows(helpForRequest(*request));
    }
    if (event != nullptr) {
        transcript_.rows(helpForEvent(*event));
    }
    if (command != nullptr) {
        transcript_.note(fmt::format("{} {}: {}", command->name, command->arguments, command->meaning));
    }
    return {};
}

Outcome<> CommandInterpreter::helpForAll()
{
    transcript_.note("Requests are written in full (<Method>GetDevices</Method>) or short, with Tab for completion:\n"
                     "  OutgoingCallMakeRequest Line=4711 CallID=1 Destination=100\n"
                     "help HoldCall explains the request, help CallHeldEvent the event. Commands:");
    for (Command const& each : commands()) {
        transcript_.note(fmt::format("  {:<35} {}", fmt::format("{} {}", each.name, each.arguments), each.meaning));
    }
    return {};
}

Outcome<> CommandInterpreter::plug(Words const& words)
{
    auto const isIn = words.size() < 3 ? Outcome<bool>(true) : choice(words[2], "in", "out");
    return isIn.and_then([&](bool in) { return controls_.plug(words[1], in); });
}

Outcome<> CommandInterpreter::store(Words const& words)
{
    if (words[1] == "list" && words.size() == 2) {
        return show(controls_.settings());
    }
    if (words[1] == "set" && words.size() == 4) {
        return controls_.set(words[2], words[3]);
    }
    if (words[1] != "get" || words.size() != 3) {
        return refuse(RefusalKind::kBadInput, "write it as: store list, store get KEY, or store set KEY VALUE");
    }
    auto const value = controls_.setting(words[2]);
    return value ? show({words[2] + " = " + *value}) : refuse(RefusalKind::kNotFound, "no setting " + words[2]);
}

Outcome<> CommandInterpreter::say(Words const& words)
{
    transcript_.note(joinWords(words, 1));
    return {};
}

}  // namespace telephone
