#include "telephone/console/CommandInterpreter.h"

#include <algorithm>
#include <limits>

#include "telephone/base/Names.h"
#include "telephone/console/CommandError.h"
#include "telephone/console/EventPattern.h"
#include "telephone/console/Help.h"
#include "telephone/console/RequestText.h"
#include "telephone/console/TelephoneControls.h"
#include "telephone/console/Transcript.h"
#include "telephone/framework/Channel.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/RequestRunner.h"

namespace telephone {

namespace {

constexpr std::size_t kAnyNumber = std::numeric_limits<std::size_t>::max();
constexpr int kMostLogLevel = 6;

void demand(TelephoneControls::Refusal const& refusal)
{
    if (refusal) {
        throw CommandError(*refusal);
    }
}

// One of two words.
bool choice(std::string const& word, std::string_view yes, std::string_view no)
{
    if (equalIgnoringCase(word, yes)) {
        return true;
    }
    if (equalIgnoringCase(word, no)) {
        return false;
    }
    throw CommandError("\"" + word + "\" is neither " + std::string(yes) + " nor " + std::string(no));
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
    // clang-format off
    static std::vector<Command> const table{
        {"help",     "[NAME]",                    0, 1, "this list; what a request, an event or a command is",     &I::help},
        {"requests", "",                          0, 0, "every request with its parameters",                       &I::requests},
        {"events",   "",                          0, 0, "every event with its elements",                           &I::events},
        {"lines",    "",                          0, 0, "the lines and how they are",                              &I::lines},
        {"calls",    "",                          0, 0, "the calls and how they are",                              &I::calls},
        {"keys",     "",                          0, 0, "the keys of the telephone",                               &I::keys},
        {"lamps",    "",                          0, 0, "the lamps and their modes",                               &I::lamps},
        {"press",    "KEY",                       1, 1, "presses a key, by number, label or function",             &I::press},
        {"release",  "KEY",                       1, 1, "releases it",                                             &I::release},
        {"hook",     "up|down",                   1, 1, "lifts or replaces the handset",                           &I::hook},
        {"plug",     "headset|handset|line [out]",1, 2, "plugs something in, or out",                              &I::plug},
        {"unplug",   "headset|handset|line",      1, 1, "plugs it out",                                            &I::unplug},
        {"lock",     "",                          0, 0, "locks the telephone: only permitted numbers can be called",&I::lock},
        {"unlock",   "",                          0, 0, "unlocks it",                                              &I::unlock},
        {"record",   "on|off LINE",               2, 2, "records the calls of a line, or ends it",                 &I::record},
        {"store",    "list|get KEY|set KEY VALUE",1, 3, "the settings in the configuration store",                 &I::store},
        {"log",      "LEVEL",                     1, 1, "0 (nothing) to 6 (every request); 4 is usual",            &I::log},
        {"say",      "TEXT",                      0, kAnyNumber, "prints a text",                                  &I::say},
        {"quit",     "",                          0, 0, "ends the telephone",                                      &I::quit},
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
    std::vector<std::string_view> names;
    for (Command const& each : commands()) {
        names.push_back(each.name);
    }
    return names;
}

bool CommandInterpreter::sendsRequest(Words const& words)
{
    return !words.empty() && findCommand(words.front()) == nullptr;
}

CommandInterpreter::Result CommandInterpreter::run(std::string_view line)
{
    std::string_view const text = trimmed(line);
    return isRequestText(text) ? send(std::string(text)) : run(splitWords(text));
}

CommandInterpreter::Result CommandInterpreter::run(Words const& words)
{
    if (words.empty()) {
        return {};
    }
    Command const* const command = findCommand(words.front());
    if (command == nullptr) {
        if (findRequest(words.front()) != nullptr) {
            return send(requestText(words));
        }
        auto names = requestNames();
        auto const others = commandNames();
        names.insert(names.end(), others.begin(), others.end());
        throw CommandError("no request or command " + words.front() + suggestion(words.front(), names) +
                           "; help lists them");
    }
    std::size_t const arguments = words.size() - 1;
    if (arguments < command->least || arguments > command->most) {
        throw CommandError("write it as: " + std::string(command->name) + " " + std::string(command->arguments));
    }
    (this->*command->handler)(words);
    return {command->handler == &CommandInterpreter::quit ? Kind::kQuit : Kind::kCommand, std::nullopt};
}

CommandInterpreter::Result CommandInterpreter::send(std::string const& request)
{
    transcript_.request(request);
    RequestRunner::Reply reply = runner_.run(channel_, request);
    if (reply.answer) {
        transcript_.answer(*reply.answer);
    } else {
        transcript_.noAnswer();
    }
    return {Kind::kRequest, std::move(reply.answer)};
}

void CommandInterpreter::help(Words const& words)
{
    if (words.size() < 2) {
        return helpForAll();
    }
    std::string const& name = words[1];
    RequestDescription const* const request = findRequest(name);
    EventDescription const* const event = findEvent(name);
    Command const* const command = findCommand(name);
    if (request != nullptr) {
        transcript_.rows(helpForRequest(*request));
    }
    if (event != nullptr) {
        transcript_.rows(helpForEvent(*event));
    }
    if (command != nullptr) {
        transcript_.note(std::string(command->name) + " " + std::string(command->arguments) + ": " +
                         std::string(command->meaning));
    }
    if (request != nullptr || event != nullptr || command != nullptr) {
        return;
    }
    auto names = requestNames();
    for (auto const& others : {eventNames(), commandNames()}) {
        names.insert(names.end(), others.begin(), others.end());
    }
    throw CommandError("nothing is called " + name + suggestion(name, names));
}

void CommandInterpreter::helpForAll()
{
    transcript_.note("A request is written as it stands (<Method>GetDevices</Method>), or short, completed by Tab:\n"
                     "  OutgoingCallMakeRequest Line=4711 CallID=1 Destination=100\n"
                     "help HoldCall tells what a request takes, help CallHeldEvent what an event holds. Commands:");
    for (Command const& each : commands()) {
        std::string row = "  " + std::string(each.name) + " " + std::string(each.arguments);
        row.resize(std::max<std::size_t>(row.size() + 1, 38), ' ');
        transcript_.note(row + std::string(each.meaning));
    }
}

void CommandInterpreter::requests(Words const& /*words*/)
{
    transcript_.rows(requestRows());
}

void CommandInterpreter::events(Words const& /*words*/)
{
    transcript_.rows(eventRows());
}

void CommandInterpreter::lines(Words const& /*words*/)
{
    transcript_.rows(controls_.lines());
}

void CommandInterpreter::calls(Words const& /*words*/)
{
    auto const rows = controls_.calls();
    transcript_.rows(rows.empty() ? TelephoneControls::Rows{"no calls"} : rows);
}

void CommandInterpreter::keys(Words const& /*words*/)
{
    transcript_.rows(controls_.keys());
}

void CommandInterpreter::lamps(Words const& /*words*/)
{
    transcript_.rows(controls_.lamps());
}

void CommandInterpreter::press(Words const& words)
{
    demand(controls_.press(words[1]));
}

void CommandInterpreter::release(Words const& words)
{
    demand(controls_.release(words[1]));
}

void CommandInterpreter::hook(Words const& words)
{
    demand(controls_.hook(choice(words[1], "up", "down")));
}

void CommandInterpreter::plug(Words const& words)
{
    demand(controls_.plug(words[1], words.size() < 3 || choice(words[2], "in", "out")));
}

void CommandInterpreter::unplug(Words const& words)
{
    demand(controls_.plug(words[1], false));
}

void CommandInterpreter::lock(Words const& /*words*/)
{
    demand(controls_.lock(true));
}

void CommandInterpreter::unlock(Words const& /*words*/)
{
    demand(controls_.lock(false));
}

void CommandInterpreter::record(Words const& words)
{
    demand(controls_.record(words[2], choice(words[1], "on", "off")));
}

void CommandInterpreter::store(Words const& words)
{
    if (words[1] == "list" && words.size() == 2) {
        transcript_.rows(controls_.settings());
    } else if (words[1] == "get" && words.size() == 3) {
        auto const value = controls_.setting(words[2]);
        if (!value) {
            throw CommandError("no setting " + words[2]);
        }
        transcript_.note(words[2] + " = " + *value);
    } else if (words[1] == "set" && words.size() == 4) {
        demand(controls_.set(words[2], words[3]));
    } else {
        throw CommandError("write it as: store list, store get KEY, or store set KEY VALUE");
    }
}

void CommandInterpreter::log(Words const& words)
{
    std::string const& level = words[1];
    if (level.size() != 1 || level[0] < '0' || level[0] > '0' + kMostLogLevel) {
        throw CommandError("\"" + level + "\" is no log level: 0 (nothing) to 6 (every request)");
    }
    setLogLevel(level[0] - '0');
}

void CommandInterpreter::say(Words const& words)
{
    transcript_.note(joinWords(words, 1));
}

void CommandInterpreter::quit(Words const& /*words*/) {}

}  // namespace telephone
