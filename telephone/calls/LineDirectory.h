// The telephone's lines as the calls need them. The line model implements this interface; every operation is called
// with the phone lock held, must be quick, and may only ask the calls questions.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "telephone/base/Refusal.h"
#include "telephone/sip/Account.h"

namespace telephone {

// A place for a call: a line, and on a multi-call-appearance line one of its appearances.
struct LineAddress
{
    int lineNumber = 0;   // of the line itself
    int recordLine = 0;   // the line in call records: the appearance's virtual line, if it has one, else lineNumber
    int appearance = 0;   // 0 for a plain line
    std::string lineURI;  // the line in events

    bool operator==(LineAddress const&) const = default;
};

// The account behind a line.
struct LineAccount
{
    int lineNumber = 0;
    std::string lineURI;
    sip::Account account;
    bool registers = false;  // false: peer to peer
    bool shared = false;     // with other telephones
    bool isPrivate = false;  // they may neither take its calls over nor join them
};

class LineDirectory
{
public:
    virtual ~LineDirectory() = default;

    // Each line once, by rising number, without virtual lines.
    virtual std::vector<LineAccount> accounts() const = 0;
    // The place that a call record names. Line 0 is the line of a single-line telephone; a keyset has no line 0.
    virtual std::optional<LineAddress> addressOf(int recordLine, int appearance) const = 0;
    // The line whose address has that user part, for incoming requests; nothing: no such user here.
    virtual std::optional<int> lineOfUser(std::string const& user) const = 0;
    // Takes a place on a line for an incoming call; nothing: all appearances are in use.
    virtual std::optional<LineAddress> seizeForIncoming(int lineNumber, int callID) = 0;

    // As addressOf, or why there is no such place.
    [[nodiscard]] Outcome<LineAddress> placeOf(int recordLine, int appearance) const;
    [[nodiscard]] Outcome<LineAccount> accountOfLine(int lineNumber) const;
    // The URI to call for a number or address, dialled on that line.
    [[nodiscard]] Outcome<std::string> targetFrom(int lineNumber, std::string const& destination) const;
    // By identifier, user or address; an empty name is the first line.
    [[nodiscard]] Outcome<LineAccount> accountNamed(std::string const& name) const;
    // The line for whose user an incoming request is.
    std::optional<LineAccount> accountOfUser(std::string const& user) const;
};

// The URI to call for a number or address, seen from that account.
[[nodiscard]] Outcome<std::string> callTarget(std::string const& destination, sip::Account const& account);

}  // namespace telephone
