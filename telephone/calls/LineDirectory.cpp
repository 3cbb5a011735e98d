#include "telephone/calls/LineDirectory.h"

#include <spdlog/fmt/fmt.h>

#include "telephone/sip/Uri.h"

namespace telephone {

// The service numbers an unknown line 0.
Outcome<LineAddress> LineDirectory::placeOf(int recordLine, int appearance) const
{
    if (auto place = addressOf(recordLine, appearance)) {
        return *std::move(place);
    }
    return refuse(RefusalKind::kNotFound, recordLine == 0 ? "the request names no line of this telephone"
                                                          : fmt::format("there is no line {}", recordLine));
}

Outcome<LineAccount> LineDirectory::accountOfLine(int lineNumber) const
{
    for (LineAccount& line : accounts()) {
        if (line.lineNumber == lineNumber) {
            return std::move(line);
        }
    }
    return refuse(RefusalKind::kNotFound, fmt::format("line {} has no account", lineNumber));
}

Outcome<std::string> LineDirectory::targetFrom(int lineNumber, std::string const& destination) const
{
    return accountOfLine(lineNumber).and_then([&destination](LineAccount const& line) {
        return callTarget(destination, line.account);
    });
}

Outcome<LineAccount> LineDirectory::accountNamed(std::string const& name) const
{
    std::string const user = sip::userOf(name);
    for (LineAccount& line : accounts()) {
        if (name.empty() || line.lineURI == name || line.account.user == name ||
            (!user.empty() && line.account.user == user)) {
            return std::move(line);
        }
    }
    return refuse(RefusalKind::kNotFound, fmt::format("there is no line \"{}\"", name));
}

std::optional<LineAccount> LineDirectory::accountOfUser(std::string const& user) const
{
    auto const number = lineOfUser(user);
    if (!number) {
        return std::nullopt;
    }
    auto line = accountOfLine(*number);
    return line ? std::optional(std::move(*line)) : std::nullopt;
}

Outcome<std::string> callTarget(std::string const& destination, sip::Account const& account)
{
    std::string target = sip::targetUri(destination, account.domain);
    auto const uri = sip::Uri::parse(target);
    if (destination.empty() || !uri || uri->host.empty()) {
        return refuse(RefusalKind::kBadInput,
                      fmt::format("\"{}\" is not a number or an address that can be called", destination));
    }
    if (!uri->headers.empty()) {
        return refuse(RefusalKind::kBadInput,
                      fmt::format("\"{}\" cannot be called: leave out the headers after \"?\"", destination));
    }
    return target;
}

}  // namespace telephone
