#include "telephone/replay/ReplayReport.h"

#include <algorithm>
#include <array>
#include <numeric>

#include <spdlog/fmt/fmt.h>
#include <spdlog/fmt/ranges.h>

#include "telephone/display/SafeText.h"
#include "telephone/display/StyledText.h"
#include "telephone/protocol/JsonText.h"
#include "telephone/protocol/Vocabulary.h"

namespace telephone {

namespace {

struct KindWords
{
    DifferenceKind kind;
    char const* column;    // of the table, and in JSON
    char const* sentence;  // in front of the message
};
constexpr std::array<KindWords, 4> kKindWords{{
    {DifferenceKind::kDifferent, "different", "different"},
    {DifferenceKind::kMissing, "missing", "missing"},
    {DifferenceKind::kExtra, "extra", "extra, behind this line"},
    {DifferenceKind::kOutOfOrder, "reordered", "not at its place"},
}};

constexpr std::size_t kNumberWidth = 11;

KindWords const& wordsOf(DifferenceKind kind)
{
    return kKindWords.at(static_cast<std::size_t>(kind));
}

std::string valueInWords(std::string const& value, Enumeration const* values)
{
    if (value.empty()) {
        return "empty";
    }
    return values == nullptr ? safeText(value) : nameOfValue(*values, value);
}

std::string inWords(ReplayDifference const& difference)
{
    std::string text = difference.text;
    for (PartDifference const& each : difference.parts) {
        text += fmt::format("; {} was {} and is {}", safeText(each.tag), valueInWords(each.recorded, each.values),
                            valueInWords(each.present, each.values));
    }
    return text;
}

std::string counted(int number, char const* what)
{
    return fmt::format("{} {}{}", number, what, number == 1 ? "" : "s");
}

Json jsonOfPart(PartDifference const& part)
{
    return {{"element", part.tag}, {"recorded", part.recorded}, {"present", part.present}};
}

}  // namespace

void ReplayReport::addEqual(std::string const& message)
{
    Count& count = counts_[message];
    ++count.recorded;
    ++count.equal;
}

void ReplayReport::add(ReplayDifference difference)
{
    Count& count = counts_[difference.message];
    ++count.different[difference.kind];
    count.recorded += difference.kind == DifferenceKind::kExtra ? 0 : 1;
    for (PartDifference const& each : difference.parts) {
        count.elements.insert(each.tag);
    }
    auto const behind = std::upper_bound(differences_.begin(), differences_.end(), difference.line,
                                         [](int line, ReplayDifference const& other) { return line < other.line; });
    differences_.insert(behind, std::move(difference));
}

TableRows ReplayReport::rows() const
{
    TableRows rows;
    for (ReplayDifference const& each : differences_) {
        rows.push_back(fmt::format("{}:{}: {}: {}", recording_, each.line, wordsOf(each.kind).sentence, inWords(each)));
    }
    int const recorded = std::accumulate(counts_.begin(), counts_.end(), 0,
                                         [](int sum, auto const& each) { return sum + each.second.recorded; });
    int const found = static_cast<int>(differences_.size());
    rows.push_back(fmt::format("{}: {}, {}", recording_, counted(recorded, "message"),
                               found == 0 ? "no difference" : counted(found, "difference")));
    return rows;
}

TableRows ReplayReport::table() const
{
    std::size_t widest = std::string_view("message").size();
    for (auto const& [message, count] : counts_) {
        widest = std::max(widest, columnsOf(message));
    }
    TableRows rows;
    auto const addRow = [&rows, widest](std::string const& name, std::vector<std::string> const& cells) {
        StyledText row;
        row.cell(name, widest + 2);
        for (std::string const& cell : cells) {
            row.cell(cell, kNumberWidth);
        }
        rows.push_back(row.line({}));
    };
    std::vector<std::string> heads{"recorded", "equal"};
    for (KindWords const& each : kKindWords) {
        heads.emplace_back(each.column);
    }
    heads.emplace_back("elements");
    addRow("message", heads);
    for (auto const& [message, count] : counts_) {
        std::vector<std::string> cells{std::to_string(count.recorded), std::to_string(count.equal)};
        for (KindWords const& each : kKindWords) {
            auto const found = count.different.find(each.kind);
            cells.push_back(std::to_string(found == count.different.end() ? 0 : found->second));
        }
        cells.push_back(fmt::format("{}", fmt::join(count.elements, ", ")));
        addRow(message, cells);
    }
    return rows;
}

std::string ReplayReport::json() const
{
    Json messages = Json::array();
    for (auto const& [message, count] : counts_) {
        Json row{{"message", message}, {"recorded", count.recorded}, {"equal", count.equal}};
        for (KindWords const& each : kKindWords) {
            auto const found = count.different.find(each.kind);
            row[each.column] = found == count.different.end() ? 0 : found->second;
        }
        row["elements"] = count.elements;
        messages.push_back(std::move(row));
    }
    Json differences = Json::array();
    for (ReplayDifference const& each : differences_) {
        Json parts = Json::array();
        std::transform(each.parts.begin(), each.parts.end(), std::back_inserter(parts), jsonOfPart);
        differences.push_back({{"kind", wordsOf(each.kind).column},
                               {"line", each.line},
                               {"message", each.message},
                               {"text", each.text},
                               {"elements", std::move(parts)}});
    }
    return lineOf({{"recording", recording_},
                   {"equal", isEqual()},
                   {"messages", std::move(messages)},
                   {"differences", std::move(differences)}});
}

}  // namespace telephone
