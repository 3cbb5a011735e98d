#include "telephone/display/PanelDrawing.h"

#include <algorithm>
#include <cctype>

#include <spdlog/fmt/fmt.h>
#include <spdlog/fmt/ranges.h>

#include "telephone/display/LampWords.h"
#include "telephone/display/Parties.h"
#include "telephone/display/ReadableLines.h"
#include "telephone/display/SafeText.h"
#include "telephone/display/StyledText.h"

namespace telephone {

namespace {

constexpr std::size_t kWidth = 62;  // within the frame
constexpr std::size_t kLabelColumn = 18;
constexpr std::size_t kKeyColumn = 34;
constexpr std::size_t kKeysInARow = 2;

// The text cut to a column less than the width, and padded to the width. Something must stand behind blanks for them to
// be kept.
std::string padded(std::string_view text, std::size_t width)
{
    DisplayOptions narrow;
    narrow.width = width - 1;
    std::string row = StyledText().cell(StyledText().add(text).line(narrow), width).add("|").line({});
    row.pop_back();
    return row;
}

std::string framed(std::string_view text)
{
    return "| " + padded(text, kWidth + 1) + "|";
}

std::string displayRow(std::string_view first, std::string_view state, std::string_view rest)
{
    return framed(StyledText().cell(first, kLineWidth).cell(state, kWhatWidth).add(rest).line({}));
}

std::string lineWords(LineStatus const& line)
{
    std::vector<std::string> words{line.registration};
    if (line.selected) {
        words.emplace_back("selected");
    }
    if (line.doNotDisturb) {
        words.emplace_back("do-not-disturb");
    }
    if (line.messages && line.messages->waiting) {
        words.emplace_back("messages waiting");
    }
    std::erase(words, "");
    return fmt::format("{}", fmt::join(words, ", "));
}

void addDisplay(TableRows& rows, TelephoneState const& state, DisplayOptions const& options)
{
    std::string const edge = "+" + std::string(kWidth + 2, '-') + "+";
    rows.push_back(edge);
    for (LineStatus const& each : state.lines) {
        rows.push_back(displayRow(safeWord(each.id), each.state, lineWords(each)));
    }
    for (CallStatus const& each : state.calls) {
        rows.push_back(
            displayRow(std::to_string(each.id), each.state, partyText(each.party.address, each.party.name, options)));
    }
    rows.push_back(edge);
}

std::string keyCell(KeyState const& key)
{
    bool const hasColour = key.lamp.mode != "off" && !key.lamp.colour.empty() && key.lamp.colour != "none";
    int const letter = hasColour ? std::toupper(static_cast<unsigned char>(key.lamp.colour.front())) : ' ';
    std::string const number = key.number == 0 ? "" : std::to_string(key.number);
    std::string const label = safeText(key.label.empty() ? key.function : key.label);
    return fmt::format("{:>3}  {}{} {}", number, padded(label, kLabelColumn), lampPicture(key.lamp),
                       static_cast<char>(letter));
}

void addKeys(TableRows& rows, TelephoneState const& state)
{
    for (std::size_t i = 0; i < state.keys.size(); i += kKeysInARow) {
        StyledText row;
        for (std::size_t j = i; j < std::min(i + kKeysInARow, state.keys.size()); ++j) {
            row.cell(keyCell(state.keys[j]), kKeyColumn);
        }
        rows.push_back(row.line({}));
    }
}

}  // namespace

TableRows panelRows(TelephoneState const& state, DisplayOptions const& options)
{
    TableRows rows;
    addDisplay(rows, state, options);
    addKeys(rows, state);
    rows.push_back(fmt::format("handset {}, plugged in: {}{}{}", state.hookUp ? "lifted" : "on the hook",
                               state.plugged.empty() ? "nothing" : fmt::format("{}", fmt::join(state.plugged, ", ")),
                               state.muted ? ", muted" : "", state.locked ? ", locked" : ""));
    return rows;
}

}  // namespace telephone
