// The parts of SIP messages that users of the adapter see: headers, responses, bodies and dialog identifiers as plain
// values, and the incoming request outside a dialog.
#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "telephone/sip/Uri.h"

namespace telephone::sip {

struct Header
{
    std::string name;
    std::string value;

    bool operator==(Header const&) const = default;
};

// Headers in the order of the message. Names compare without regard to case; compact names are expanded.
class Headers
{
public:
    Headers() = default;
    Headers(std::initializer_list<Header> list)
        : list_(list)
    {}

    void add(std::string name, std::string value) { list_.push_back({std::move(name), std::move(value)}); }
    void add(Headers const& more) { list_.insert(list_.end(), more.list_.begin(), more.list_.end()); }
    // The first value of that name; empty if the header is missing.
    std::string value(std::string_view name) const;
    std::vector<std::string> values(std::string_view name) const;
    // The elements of a comma-separated header, of all its occurrences.
    std::vector<std::string> list(std::string_view name) const;
    // The number with which the header begins; 0: there is none.
    std::uint32_t number(std::string_view name) const;
    // Whether a comma-separated header has that element, in any case.
    bool lists(std::string_view name, std::string_view element) const;
    bool has(std::string_view name) const;
    bool empty() const { return list_.empty(); }
    auto begin() const { return list_.begin(); }
    auto end() const { return list_.end(); }
    // "Name: value\r\n" for each header. Line breaks in a value become blanks, so that it cannot inject a header.
    std::string format() const;

private:
    std::vector<Header> list_;
};

// The far end's response to a request.
struct Response
{
    int status = 0;  // 100 to 699
    std::string reason;
    Headers headers;
    std::string body;
};

// A message body and its type. An empty type means that there is no body.
struct Content
{
    std::string type;
    std::string body;
};

// Content type of CSTA messages (ECMA TR/87).
constexpr char const* kCstaType = "application/csta+xml";

// The Replaces header (RFC 3891) as sent: toTag is the local tag of its receiver.
struct Replaces
{
    std::string callId;
    std::string toTag;
    std::string fromTag;
    bool earlyOnly = false;

    static std::optional<Replaces> parse(std::string_view value);
    std::string format() const;

    bool operator==(Replaces const&) const = default;
};

// The identifier of a dialog (RFC 3261 section 12), seen from this end. The remote tag is empty until the far end sends
// one.
struct DialogId
{
    std::string callId;
    std::string localTag;
    std::string remoteTag;

    // The Replaces header that makes the far end replace this dialog.
    Replaces replaces() const { return {callId, remoteTag, localTag, false}; }
    // Whether a received Replaces header names this dialog.
    bool matches(Replaces const& wanted) const
    {
        return wanted.callId == callId && wanted.toTag == localTag && wanted.fromTag == remoteTag;
    }

    bool operator==(DialogId const&) const = default;
};

// A request outside a dialog: REGISTER, MESSAGE, INFO ... A request destroyed unanswered is answered with 500.
class IncomingRequest
{
public:
    virtual ~IncomingRequest() = default;
    virtual std::string method() const = 0;
    virtual std::string requestUri() const = 0;
    virtual NameAddr from() const = 0;
    virtual NameAddr to() const = 0;
    virtual std::string callId() const = 0;
    virtual Headers const& headers() const = 0;
    virtual Content const& content() const = 0;
    // Answers with a status from 200 to 699. Ignored, and logged, once the request is answered.
    virtual void reply(int status, std::string const& reason, Headers const& headers = {},
                       Content const& content = {}) = 0;
    // Over TLS, requests to the address of the contact take the connection on which this one came, as long as it lasts
    // (RFC 5923). For a registrar that knows who has sent the request.
    virtual void useConnectionFor(Uri const& contact) = 0;
    // Leaves the request unanswered, as if it had been lost; a retransmission is a new request.
    virtual void ignore() = 0;
};

// The final response to a request of ours; 408 without an answer, 503 if the request could not be sent.
using ResponseHandler = std::function<void(Response const&)>;

}  // namespace telephone::sip
