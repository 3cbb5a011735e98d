#include "telephone/lines/LineTable.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include <spdlog/fmt/fmt.h>

#include "platform/lines/ClientUtils.h"
#include "platform/lines/LineData.h"
#include "telephone/sip/Uri.h"

namespace telephone {

namespace {

std::string hostOf(std::string const& hostPort)
{
    auto const uri = sip::Uri::parse("sip:" + hostPort);
    return uri ? uri->host : hostPort;
}

// "4711" of "sip:4711@domain"; empty for anything else.
std::string userAt(std::string const& address, std::string const& domain)
{
    if (!address.starts_with("sip:")) {
        return {};
    }
    auto const uri = sip::Uri::parse(address);
    bool const ours = uri && (domain.empty() || sip::equalsIgnoringCase(uri->host, hostOf(domain)));
    return ours ? uri->user : std::string();
}

std::vector<LineConfiguration> withDefaults(std::vector<LineConfiguration> lines)
{
    int position = 0;
    for (auto& line : lines) {
        ++position;
        line.number = line.number == 0 ? position : line.number;
        line.overviewPosition = line.overviewPosition == 0 ? position : line.overviewPosition;
    }
    return lines;
}

bool isLine(LineTable::Row const& row)
{
    return row.address.appearance == 0;
}

}  // namespace

LineTable::LineTable(Configuration const& configuration)
    : configuration_(configuration)
    , lines_(withDefaults(configuration.lines))
{
    for (auto const& line : lines_) {
        addLine(line);
    }
}

void LineTable::addLine(LineConfiguration const& line)
{
    if (line.number < 1 || line.number > kLastVirtualLine) {
        throw std::runtime_error(fmt::format("line {}: its number is not 1 to {}", line.id, kLastVirtualLine));
    }
    add({line, {line.number, line.number, 0, line.id}});
    if (hasAppearances(rows_.back())) {
        addAppearances(line);
    }
}

void LineTable::addAppearances(LineConfiguration const& line)
{
    std::vector<int> virtualLines;
    for (int index = 1; index <= line.appearances; ++index) {
        virtualLines.push_back(freeVirtualLine(line.id));
        add({line, {line.number, virtualLines.back(), index, fmt::format("{}#{}", line.id, index)}});
    }
    appearances_.addLine(line.number, line.id, std::move(virtualLines));
}

void LineTable::add(Row row)
{
    auto const& added = rows_.emplace_back(std::move(row));
    auto const& address = added.address;
    if (!byId_.emplace(address.lineURI, &added).second) {
        throw std::runtime_error(fmt::format("line {} is configured twice", address.lineURI));
    }
    if (!byNumber_.emplace(address.recordLine, &added).second) {
        throw std::runtime_error(
            fmt::format("line {}: another line has its number {}", address.lineURI, address.recordLine));
    }
}

// The numbers of lines further down in the configuration are taken, too.
int LineTable::freeVirtualLine(std::string const& lineID) const
{
    for (int number = kFirstVirtualLine; number <= kLastVirtualLine; ++number) {
        bool const isLineNumber =
            std::any_of(lines_.begin(), lines_.end(), [number](auto const& line) { return line.number == number; });
        if (!isLineNumber && byNumber_.count(number) == 0) {
            return number;
        }
    }
    throw std::runtime_error(fmt::format("line {}: too many appearances; all lines together have at most {}", lineID,
                                         kLastVirtualLine - kFirstVirtualLine + 1));
}

std::vector<LineAccount> LineTable::accounts() const
{
    std::vector<LineAccount> accounts;
    for (auto const& line : lines_) {
        accounts.push_back({line.number, line.id, accountOf(line, configuration_, server_),
                            line.registers && !server_.registrar.empty(), line.sharedLineType != LineData::kNotShared,
                            line.isPrivate});
    }
    std::sort(accounts.begin(), accounts.end(),
              [](LineAccount const& left, LineAccount const& right) { return left.lineNumber < right.lineNumber; });
    return accounts;
}

std::optional<LineAddress> LineTable::addressOf(int recordLine, int /*appearance*/) const
{
    auto const* const row = byNumber(recordLine);
    return row == nullptr ? std::nullopt : std::optional(row->address);
}

std::optional<int> LineTable::lineOfUser(std::string const& user) const
{
    auto line =
        std::find_if(lines_.begin(), lines_.end(), [&user](auto const& each) { return userOfLine(each) == user; });
    if (line == lines_.end()) {
        line = std::find_if(lines_.begin(), lines_.end(), [&user](auto const& each) { return each.id == user; });
    }
    return line == lines_.end() ? std::nullopt : std::optional(line->number);
}

std::optional<LineAddress> LineTable::seizeForIncoming(int lineNumber, int callID)
{
    auto const* const row = byNumber(lineNumber);
    if (row == nullptr || !hasAppearances(*row)) {
        return row == nullptr ? std::nullopt : std::optional(row->address);
    }
    int const virtualLine = appearances_.seizeForIncoming(row->address.lineNumber, callID);
    return virtualLine == 0 ? std::nullopt : std::optional(byNumber(virtualLine)->address);
}

bool LineTable::hasAppearances(Row const& line) const
{
    return isLine(line) && isKeyset() && line.configuration.appearances > 1;
}

LineTable::Row const* LineTable::find(std::string const& lineURI) const
{
    auto const exact = byId_.find(lineURI);
    if (exact != byId_.end()) {
        return exact->second;
    }
    std::string address;
    int index = 0;
    ClientUtils::splitMCADeviceIndex(lineURI, address, index);
    auto const user = userAt(address, server_.domain);
    auto const line = user.empty() ? std::nullopt : lineOfUser(user);
    auto const* const row = line ? byNumber(*line) : nullptr;
    if (row == nullptr || index == 0) {
        return row;
    }
    auto const appearance = byId_.find(fmt::format("{}#{}", row->address.lineURI, index));
    return appearance == byId_.end() ? nullptr : appearance->second;
}

LineTable::Row const* LineTable::byNumber(int recordLine) const
{
    if (recordLine == 0 && !isKeyset()) {
        return rows_.empty() ? nullptr : &rows_.front();
    }
    auto const found = byNumber_.find(recordLine);
    return found == byNumber_.end() ? nullptr : found->second;
}

LineTable::Row const* LineTable::primary() const
{
    auto const marked = std::find_if(rows_.begin(), rows_.end(),
                                     [](Row const& row) { return isLine(row) && row.configuration.primary; });
    if (marked != rows_.end()) {
        return &*marked;
    }
    return rows_.empty() ? nullptr : &rows_.front();
}

}  // namespace telephone
