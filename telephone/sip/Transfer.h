// A transfer that the far end requests (REFER, RFC 3515). Its holder accepts or rejects it, makes the requested call
// and reports that call's progress. A transfer destroyed unanswered is rejected with 603; one destroyed after accept()
// without a final status ends with 503. Any thread.
#pragma once

#include <optional>
#include <string>

#include "telephone/base/Refusal.h"
#include "telephone/sip/Message.h"

namespace telephone::sip {

class Transfer
{
public:
    virtual ~Transfer() = default;

    // The URI to call, without headers. A Replaces header in it is returned by replaces() (attended transfer, RFC
    // 5589).
    virtual std::string target() const = 0;
    virtual std::optional<Replaces> replaces() const = 0;
    virtual std::string referredBy() const = 0;  // value of the header; empty: none
    virtual NameAddr from() const = 0;
    virtual NameAddr to() const = 0;

    // Sends 202 and the first NOTIFY, "100 Trying". kWrongState: already answered; kUnavailable: the stack cannot send.
    [[nodiscard]] virtual Outcome<> accept() = 0;
    // 300 to 699. Ignored, and logged, once the transfer is answered.
    virtual void reject(int status, std::string const& reason) = 0;
    // Reports a status, 100 to 699, of the requested call. The first of 200 or more is the last one; later ones are
    // ignored.
    virtual void notify(int status, std::string const& reason) = 0;
};

}  // namespace telephone::sip
