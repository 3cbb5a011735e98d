#include "telephone/display/StateTables.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <iterator>

#include <spdlog/fmt/fmt.h>
#include <spdlog/fmt/ranges.h>

#include "telephone/display/LampWords.h"
#include "telephone/display/Parties.h"
#include "telephone/display/ReadableLines.h"
#include "telephone/display/SafeText.h"
#include "telephone/display/StyledText.h"

namespace telephone {

namespace {

using Details = std::vector<std::string>;

// The columns with the blanks behind them.
constexpr std::size_t kFunctionWidth = 12;
constexpr std::size_t kLabelWidth = 19;
constexpr std::size_t kLampWidth = 19;

void addIf(Details& details, bool condition, std::string_view text)
{
    if (condition) {
        details.emplace_back(text);
    }
}

std::string counted(int count, std::string_view noun)
{
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

std::string joinedDetails(Details const& details)
{
    return fmt::format("{}", fmt::join(details, ", "));
}

// 0:02, 1:02:03.
std::string ageText(std::chrono::system_clock::duration age)
{
    auto const seconds = std::max<long long>(0, std::chrono::duration_cast<std::chrono::seconds>(age).count());
    auto const hours = seconds / 3600;
    auto const minutes = seconds / 60 % 60;
    return hours > 0 ? fmt::format("{}:{:02}:{:02}", hours, minutes, seconds % 60)
                     : fmt::format("{}:{:02}", minutes, seconds % 60);
}

// --- lines

std::string lineDetails(LineStatus const& line, DisplayOptions const& options)
{
    Details details;
    addIf(details, !line.registration.empty(), line.registration);
    addIf(details, line.primary, "primary");
    addIf(details, line.selected, "selected");
    addIf(details, line.doNotDisturb, "do-not-disturb");
    for (ForwardingState const& rule : line.forwarding) {
        addIf(details, rule.active,
              fmt::format("forwards {} to {}", rule.name, addressText(rule.destination, options)));
    }
    addIf(details, !line.agent.empty() && line.agent != "logged off", "agent " + safeText(line.agent));
    addIf(details, !line.rings, "silent");
    addIf(details, line.rings && line.ringDelay > 0, fmt::format("rings after {} s", line.ringDelay));
    if (line.messages && line.messages->waiting) {
        details.push_back(line.messages->unread > 0 ? counted(line.messages->unread, "new message")
                                                    : "messages waiting");
    }
    return joinedDetails(details);
}

std::string lineRow(LineStatus const& line, DisplayOptions const& options)
{
    return StyledText()
        .cell(safeWord(line.id), kLineWidth)
        .cell(line.state, kWhatWidth, Style::kBold)
        .add(lineDetails(line, options))
        .line(options);
}

// --- calls

std::string callDetails(CallStatus const& call, TelephoneState const& state, DisplayOptions const& options)
{
    std::string const party = partyText(call.party.address, call.party.name, options);
    Details details{(call.incoming ? "from " : "to ") + (party.empty() ? "unknown" : party)};
    details.push_back(ageText(state.time - call.since));
    addIf(details, !call.reason.empty() && call.reason != "normal" && call.reason != call.state, call.reason);
    addIf(details, call.over, "over");
    for (PartyState const& other : call.conference) {
        addIf(details, other.address != call.party.address, "with " + partyText(other.address, other.name, options));
    }
    addIf(details, call.heldForConsultation, "for a consultation");
    addIf(details, call.secure, "secure");
    addIf(details, call.recording, "being recorded");
    addIf(details, call.callBackPossible, "call-back possible");
    return joinedDetails(details);
}

// --- keys and lamps

StyledText beginKey(KeyState const& key)
{
    StyledText row;
    row.add(key.number == 0 ? "     " : fmt::format("{:>3}  ", key.number));
    return row.cell(safeText(key.function), kFunctionWidth)
        .cell(key.label.empty() ? "" : quotedText(key.label), kLabelWidth);
}

std::string lampRow(KeyState const& key, TelephoneState const& state, DisplayOptions const& options)
{
    bool const hasColour = key.lamp.mode != "off" && !key.lamp.colour.empty() && key.lamp.colour != "none";
    int const letter = hasColour ? std::toupper(static_cast<unsigned char>(key.lamp.colour.front())) : ' ';
    Style const style = lampStyle(key.lamp);
    return beginKey(key)
        .add(lampPicture(key.lamp), style)
        .add(fmt::format(" {}  ", static_cast<char>(letter)), style)
        .cell(lampWords(key.lamp), kLampWidth, style)
        .add(lampMeaning(key, state))
        .line(options);
}

}  // namespace

TableRows lineRows(TelephoneState const& state, DisplayOptions const& options)
{
    TableRows rows;
    for (LineStatus const& line : state.lines) {
        rows.push_back(lineRow(line, options));
        for (LineStatus const& appearance : line.appearances) {
            rows.push_back(lineRow(appearance, options));
        }
    }
    return rows;
}

TableRows callRows(TelephoneState const& state, DisplayOptions const& options)
{
    TableRows rows;
    for (CallStatus const& call : state.calls) {
        rows.push_back(StyledText()
                           .cell(safeWord(call.place), kLineWidth)
                           .cell(std::to_string(call.id), kCallWidth)
                           .cell(call.state, kWhatWidth, Style::kBold)
                           .add(callDetails(call, state, options))
                           .line(options));
    }
    return rows;
}

TableRows keyRows(TelephoneState const& state, DisplayOptions const& options)
{
    TableRows rows;
    for (KeyState const& key : state.keys) {
        if (key.number != 0) {
            Details details;
            addIf(details, !key.target.empty(), addressText(key.target, options));
            addIf(details, key.showsOnly, "shows only");
            rows.push_back(beginKey(key).add(joinedDetails(details)).line(options));
        }
    }
    return rows;
}

TableRows lampRows(TelephoneState const& state, DisplayOptions const& options)
{
    TableRows rows;
    for (KeyState const& key : state.keys) {
        rows.push_back(lampRow(key, state, options));
    }
    return rows;
}

}  // namespace telephone
