#include "telephone/fleet/FleetTable.h"

#include <algorithm>
#include <array>
#include <iterator>

#include <spdlog/fmt/fmt.h>
#include <spdlog/fmt/ranges.h>

#include "telephone/display/Parties.h"
#include "telephone/display/SafeText.h"
#include "telephone/display/StyledText.h"

namespace telephone {

namespace {

constexpr std::array kConditionWords{"starting", "running", "waiting", "stopped"};
constexpr double kMegabyte = 1e6;

// The columns with the blanks behind them.
constexpr std::size_t kNumberWidth = 11;
constexpr std::size_t kLineWidth = 10;
constexpr std::size_t kRegistrationWidth = 17;
constexpr std::size_t kMemoryWidth = 10;
constexpr std::size_t kProcessorWidth = 11;
constexpr std::size_t kStartsWidth = 8;

std::string wordOf(FleetCondition condition)
{
    return kConditionWords.at(static_cast<std::size_t>(condition));
}

std::string textOr(Json const& value, char const* otherwise = "")
{
    return value.is_string() ? value.get<std::string>() : std::string(otherwise);
}

Json const& firstLineOf(FleetRow const& row)
{
    static Json const kNone = Json::object();
    return row.state.is_object() && !row.state["lines"].empty() ? row.state["lines"].front() : kNone;
}

Json liveCallsOf(FleetRow const& row)
{
    Json calls = Json::array();
    if (row.state.is_object()) {
        std::ranges::copy_if(row.state["calls"], std::back_inserter(calls),
                             [](Json const& each) { return !each["over"].get<bool>(); });
    }
    return calls;
}

// Of the key of the first line.
Json lampOf(FleetRow const& row)
{
    auto const& keys = row.state["keys"];
    auto const found = std::ranges::find_if(keys, [](Json const& key) { return key["function"] == "line"; });
    return found == keys.end() ? Json() : (*found)["lamp"];
}

std::string callWords(FleetRow const& row)
{
    DisplayOptions const options{.ownDomain = textOr(row.state.is_object() ? row.state["domain"] : Json())};
    std::vector<std::string> words;
    for (Json const& each : liveCallsOf(row)) {
        words.push_back(
            fmt::format("{} {}", each["state"].get<std::string>(),
                        partyText(textOr(each["party"]["address"]), textOr(each["party"]["name"]), options)));
    }
    return fmt::format("{}", fmt::join(words, ", "));
}

std::string memoryText(std::uint64_t bytes)
{
    return fmt::format("{:.1f} MB", static_cast<double>(bytes) / kMegabyte);
}

double secondsOf(std::chrono::milliseconds time)
{
    return std::chrono::duration<double>(time).count();
}

bool isRegistered(FleetRow const& row)
{
    return firstLineOf(row).value("registration", "") == "registered";
}

// What it does, in the place of its registration if it does not run.
std::string conditionWords(FleetRow const& row)
{
    switch (row.condition) {
    case FleetCondition::kRunning:
        return row.state.is_object() ? firstLineOf(row).value("registration", "") : "does not answer";
    case FleetCondition::kWaiting:
        return row.reason + "; it is started again";
    case FleetCondition::kStarting:
    case FleetCondition::kStopped:
        break;
    }
    return wordOf(row.condition);
}

std::string tableRow(FleetRow const& row, DisplayOptions const& options)
{
    StyledText text;
    text.cell(std::to_string(row.number), kNumberWidth);
    text.cell(safeText(firstLineOf(row).value("id", "")), kLineWidth);
    if (row.process == 0) {
        return text.add(safeText(conditionWords(row)), Style::kMagenta).line(options);
    }
    return text.cell(conditionWords(row), kRegistrationWidth, isRegistered(row) ? Style::kPlain : Style::kMagenta)
        .cell(memoryText(row.use.memory), kMemoryWidth)
        .cell(fmt::format("{:.2f} s", secondsOf(row.use.processor)), kProcessorWidth)
        .cell(std::to_string(row.starts), kStartsWidth)
        .add(callWords(row))
        .line(options);
}

std::string sums(std::vector<FleetRow> const& rows)
{
    std::uint64_t memory = 0;
    std::chrono::milliseconds processor{0};
    for (FleetRow const& each : rows) {
        memory += each.use.memory;
        processor += each.use.processor;
    }
    return fmt::format("{} telephone{}, {} registered, {} in a call, {} of memory, {:.1f} s of processor time",
                       rows.size(), rows.size() == 1 ? "" : "s", std::ranges::count_if(rows, isRegistered),
                       std::ranges::count_if(rows, [](FleetRow const& each) { return !liveCallsOf(each).empty(); }),
                       memoryText(memory), secondsOf(processor));
}

}  // namespace

std::vector<FleetRow> rowsOf(FleetTelephones const& telephones, int stop)
{
    FleetTelephones running;
    std::ranges::copy_if(telephones, std::back_inserter(running),
                         [](FleetTelephone* each) { return each->condition() == FleetCondition::kRunning; });
    auto const replies = askEach(
        running, [](FleetTelephone const&) { return "state"; }, stop);
    std::vector<FleetRow> rows;
    std::size_t next = 0;
    for (FleetTelephone const* const each : telephones) {
        rows.push_back(
            {each->number(), each->condition(), each->reason(), each->process(), each->starts(), each->use(), {}});
        if (next < running.size() && running[next] == each) {
            auto const& reply = replies[next++];
            rows.back().state = reply ? Json::parse(reply->text.value_or(""), nullptr, false) : Json();
        }
    }
    return rows;
}

std::vector<std::string> fleetTable(std::vector<FleetRow> const& rows, DisplayOptions const& options)
{
    std::vector<std::string> lines{StyledText()
                                       .cell("telephone", kNumberWidth, Style::kDim)
                                       .cell("line", kLineWidth, Style::kDim)
                                       .cell("registration", kRegistrationWidth, Style::kDim)
                                       .cell("memory", kMemoryWidth, Style::kDim)
                                       .cell("processor", kProcessorWidth, Style::kDim)
                                       .cell("starts", kStartsWidth, Style::kDim)
                                       .add("calls", Style::kDim)
                                       .line(options)};
    std::ranges::transform(rows, std::back_inserter(lines),
                           [&options](FleetRow const& each) { return tableRow(each, options); });
    lines.push_back(sums(rows));
    return lines;
}

Json fleetJson(std::vector<FleetRow> const& rows)
{
    Json list = Json::array();
    for (FleetRow const& each : rows) {
        bool const isKnown = each.state.is_object();
        Json const& line = firstLineOf(each);
        list.push_back({{"number", each.number},
                        {"condition", wordOf(each.condition)},
                        {"reason", textOrNull(each.reason)},
                        {"process", each.process == 0 ? Json() : Json(each.process)},
                        {"starts", each.starts},
                        {"memory", each.use.memory},
                        {"processor", secondsOf(each.use.processor)},
                        {"domain", isKnown ? each.state["domain"] : Json()},
                        {"time", isKnown ? each.state["time"] : Json()},
                        {"line", isKnown ? line.value("id", Json()) : Json()},
                        {"registration", isKnown ? line.value("registration", Json()) : Json()},
                        {"state", isKnown ? line.value("state", Json()) : Json()},
                        {"lamp", isKnown ? lampOf(each) : Json()},
                        {"calls", isKnown ? liveCallsOf(each) : Json()}});
    }
    return list;
}

}  // namespace telephone
