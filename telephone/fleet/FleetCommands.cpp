#include "telephone/fleet/FleetCommands.h"

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include <spdlog/fmt/fmt.h>
#include <spdlog/fmt/ranges.h>

#include "telephone/access/Words.h"
#include "telephone/console/Terminal.h"
#include "telephone/fleet/Asking.h"
#include "telephone/fleet/FleetConfiguration.h"
#include "telephone/fleet/FleetTable.h"
#include "telephone/fleet/PairedCalls.h"

namespace telephone {

namespace {

using Answer = Outcome<std::string>;

// The first word and what follows it.
std::pair<std::string_view, std::string_view> splitOff(std::string_view text)
{
    std::size_t const blank = std::min(text.find(' '), text.size());
    return {text.substr(0, blank), trimmed(text.substr(blank))};
}

tl::unexpected<Refusal> missing(std::string_view command)
{
    auto const* const found = readFleetLine(command).command;
    return refuse(RefusalKind::kBadInput, fmt::format("write {} {}", found->name, found->usage));
}

// 1-3, 7
std::string rangesOf(std::vector<int> const& numbers)
{
    std::vector<std::string> ranges;
    for (std::size_t i = 0; i < numbers.size();) {
        std::size_t last = i;
        while (last + 1 < numbers.size() && numbers[last + 1] == numbers[last] + 1) {
            ++last;
        }
        ranges.push_back(last == i ? std::to_string(numbers[i]) : fmt::format("{}-{}", numbers[i], numbers[last]));
        i = last + 1;
    }
    return fmt::format("{}", fmt::join(ranges, ", "));
}

// Equal answers of several telephones are one line.
class Answers
{
public:
    void add(int number, Answer const& answer)
    {
        std::string const& text = answer ? *answer : answer.error().reason;
        auto found = std::ranges::find(groups_, text, &std::pair<std::string, std::vector<int>>::first);
        if (found == groups_.end()) {
            found = groups_.insert(groups_.end(), {text, {}});
        }
        found->second.push_back(number);
        hasFailed_ = hasFailed_ || !answer;
    }

    [[nodiscard]] Answer whole() const
    {
        bool const isOne = groups_.size() == 1 && groups_.front().second.size() == 1;
        std::vector<std::string> lines;
        for (auto const& [text, numbers] : groups_) {
            bool const isLong = text.find('\n') != std::string::npos;
            lines.push_back(
                isOne ? text
                      : fmt::format("{}:{}{}", rangesOf(numbers), isLong ? "\n" : " ", text.empty() ? "done" : text));
        }
        std::string text = fmt::format("{}", fmt::join(lines, "\n"));
        return hasFailed_ ? refuse(RefusalKind::kNotPermitted, std::move(text)) : Answer(std::move(text));
    }

private:
    std::vector<std::pair<std::string, std::vector<int>>> groups_;
    bool hasFailed_ = false;
};

Answer passOn(Members& members, std::string_view rest)
{
    auto const [numbers, command] = splitOff(rest);
    if (command.empty()) {
        return missing("do");
    }
    return members.select(numbers).and_then([&, text = command](FleetTelephones const& chosen) {
        auto const replies = askEach(
            chosen, [text](FleetTelephone const& each) { return withFleetNumber(text, each.number()); },
            members.stop());
        Answers answers;
        for (std::size_t i = 0; i < chosen.size(); ++i) {
            answers.add(chosen[i]->number(), textOf(replies[i]));
        }
        return answers.whole();
    });
}

Answer list(Members& members, std::string_view rest)
{
    return members.select(rest.empty() ? "all" : rest).map([&](FleetTelephones const& chosen) {
        DisplayOptions options;
        fitToTerminal(options, ColourUse::kAuto);
        return fmt::format("{}", fmt::join(fleetTable(rowsOf(chosen, members.stop()), options), "\n"));
    });
}

// 1 and 2, 3 and 4, ...
std::vector<FleetPair> neighbours(Members& members)
{
    std::vector<FleetPair> pairs;
    auto& all = members.all();
    for (std::size_t i = 0; i + 1 < all.size(); i += 2) {
        pairs.emplace_back(&all[i], &all[i + 1]);
    }
    return pairs;
}

Outcome<std::vector<FleetPair>> pairsOf(Members& members, std::string_view rest)
{
    if (rest == "pairs") {
        return neighbours(members);
    }
    auto const [from, to] = splitOff(rest);
    if (to.empty()) {
        return missing("call");
    }
    auto const caller = members.select(from);
    auto const called = caller ? members.select(to) : caller;
    if (!called) {
        return tl::unexpected(called.error());
    }
    if (caller->size() != called->size()) {
        return refuse(RefusalKind::kBadInput, fmt::format("{} telephones cannot call {}: name as many on both sides",
                                                          caller->size(), called->size()));
    }
    std::vector<FleetPair> pairs;
    for (std::size_t i = 0; i < caller->size(); ++i) {
        pairs.emplace_back((*caller)[i], (*called)[i]);
    }
    return pairs;
}

Answer call(Members& members, std::string_view rest)
{
    return pairsOf(members, rest).and_then([&](std::vector<FleetPair> const& pairs) {
        return callPairs(pairs, members.stop()).map([&pairs] {
            return fmt::format("{} call{} connected", pairs.size(), pairs.size() == 1 ? "" : "s");
        });
    });
}

Answer endSome(Members& members, std::string_view rest)
{
    return rest.empty() ? missing("stop") : members.select(rest).map([&](FleetTelephones const& chosen) {
        std::ranges::for_each(chosen, [](FleetTelephone* each) { each->end(true); });
        members.wakeUp();
        return std::string();
    });
}

Answer startSome(Members& members, std::string_view rest)
{
    return rest.empty() ? missing("start") : members.select(rest).map([&](FleetTelephones const& chosen) {
        std::ranges::for_each(chosen, [](FleetTelephone* each) { each->startNow(); });
        members.wakeUp();
        return std::string();
    });
}

Answer help(Members& /*members*/, std::string_view /*rest*/)
{
    std::string text = "NUMBERS are 7, 3-5, 1,4 or all. {number} in a command is the number of the telephone, 007.";
    for (FleetCommand const& each : fleetCommands()) {
        text += fmt::format("\n  {:<24}{}", fmt::format("{} {}", each.name, each.usage), each.meaning);
    }
    return text;
}

// clang-format off
constexpr std::array kFleetCommands{
    FleetCommand{"list",  "[NUMBERS]",       "telephones with registration, calls, memory and processor time", list},
    FleetCommand{"do",    "NUMBERS COMMAND", "gives them a command or a request: do 7 press 3",          passOn},
    FleetCommand{"call",  "FROM TO | pairs", "FROM calls TO, which answers; pairs: 1 calls 2, 3 calls 4, ...", call},
    FleetCommand{"stop",  "NUMBERS",         "ends them",                                                endSome},
    FleetCommand{"start", "NUMBERS",         "starts them again, at once",                               startSome},
    FleetCommand{"wait",  "[TIME]",          "waits: 5, 2.5s, 200ms; without a time until a signal comes", nullptr},
    FleetCommand{"help",  "",                "this list",                                                help},
    FleetCommand{"quit",  "",                "ends the fleet",                                           nullptr},
};
// clang-format on

}  // namespace

std::span<FleetCommand const> fleetCommands()
{
    return kFleetCommands;
}

FleetLine readFleetLine(std::string_view line)
{
    auto const [name, rest] = splitOff(trimmed(line));
    auto const* const found = std::ranges::find(kFleetCommands, name, &FleetCommand::name);
    return {found == kFleetCommands.end() ? nullptr : found, rest};
}

Outcome<std::string> runFleetLine(Members& members, std::string_view line)
{
    FleetLine const read = readFleetLine(line);
    if (read.command == nullptr) {
        return refuse(RefusalKind::kBadInput, fmt::format("\"{}\" is not a command of the fleet; help lists them",
                                                          splitOff(trimmed(line)).first));
    }
    if (read.command->run == nullptr) {
        return refuse(RefusalKind::kNotSupported, fmt::format("{} is for the prompt of the fleet", read.command->name));
    }
    auto const lock = members.lock();
    return read.command->run(members, read.rest);
}

}  // namespace telephone
