// A transfer that the far end asks of us (REFER, RFC 3515). Given to the observer, who accepts or refuses it, makes the
// call it asks for, and tells how that goes. One destroyed unanswered is refused with 603; one destroyed after it was
// accepted but without a final status ends with 503.
#pragma once

#include <optional>
#include <string>

#include "telephone/sip/Message.h"

namespace telephone::sip {

class Transfer
{
public:
    virtual ~Transfer() = default;

    // The URI to call, without headers; what a Replaces header in it named stands apart (attended transfer, RFC 5589).
    virtual std::string target() const = 0;
    virtual std::optional<Replaces> replaces() const = 0;
    virtual std::string referredBy() const = 0;  // value of the header; empty: none
    virtual NameAddr from() const = 0;
    virtual NameAddr to() const = 0;

    virtual bool accept() = 0;  // 202, and the first notice "100 Trying"
    virtual bool reject(int status, std::string const& reason) = 0;
    // Tells the status of the call that was asked for. 200 and above is the last one.
    virtual bool notify(int status, std::string const& reason) = 0;
};

}  // namespace telephone::sip
