// What the call engine must know about the telephone's lines. The line model implements it; every operation is called
// with the phone lock held, must be quick, and may call the engine only for questions.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "telephone/sip/Account.h"

namespace telephone {

// A place for a call: a line, and on a multi-call-appearance line one of its appearances.
struct LineAddress
{
    int lineNumber = 0;  // of the line itself
    int recordLine = 0;  // what a call record carries as its line: the virtual line where there is one, else lineNumber
    int appearance = 0;  // 0 for a plain line
    std::string lineURI;  // what events carry as the line

    bool operator==(LineAddress const&) const = default;
};

// The account behind a line.
struct LineAccount
{
    int lineNumber = 0;
    std::string lineURI;
    sip::Account account;
    bool registers = false;  // false: peer to peer
};

class LineDirectory
{
public:
    virtual ~LineDirectory() = default;

    // Every line once, by rising number; virtual lines are not among them.
    virtual std::vector<LineAccount> accounts() const = 0;
    // The place that a call record names. Line 0 is the line of a single-line telephone; on a keyset it is none.
    virtual std::optional<LineAddress> addressOf(int recordLine, int appearance) const = 0;
    // The line whose address has that user part, for what comes in; nothing: there is no such user here.
    virtual std::optional<int> lineOfUser(std::string const& user) const = 0;
    // A place for an incoming call on a line, and the note that the call is there; nothing: all appearances are taken.
    virtual std::optional<LineAddress> seizeForIncoming(int lineNumber, int callID) = 0;
};

}  // namespace telephone
