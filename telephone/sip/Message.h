// The parts of SIP messages that users of the adapter see, as plain values: header lists, answers, and the request that
// is not part of a dialog. Copies; valid as long as their owner keeps them.
#pragma once

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

// In the order of the message. Names compare without regard to case; compact forms are already spelled out.
class Headers
{
public:
    Headers() = default;
    Headers(std::initializer_list<Header> list)
        : list_(list)
    {}

    void add(std::string name, std::string value) { list_.push_back({std::move(name), std::move(value)}); }
    // The first value of that name; empty when there is none.
    std::string value(std::string_view name) const;
    std::vector<std::string> values(std::string_view name) const;
    bool has(std::string_view name) const;
    bool empty() const { return list_.empty(); }
    auto begin() const { return list_.begin(); }
    auto end() const { return list_.end(); }
    // "Name: value\r\n" for each. A value with a line break would be another header: such breaks become blanks.
    std::string format() const;

private:
    std::vector<Header> list_;
};

// A status line with its headers: what a far end answered.
struct Response
{
    int status = 0;  // 100 to 699
    std::string reason;
    Headers headers;
    std::string body;
};

// A message body with its type; an empty type means no body.
struct Content
{
    std::string type;
    std::string body;
};

// Replaces (RFC 3891), seen as in the header: toTag is the local tag of whoever receives it.
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

// The three names of a dialog (RFC 3261 section 12), seen from this end. The remote tag is empty before the far end
// gave one.
struct DialogId
{
    std::string callId;
    std::string localTag;
    std::string remoteTag;

    // The Replaces that makes the far end replace this dialog.
    Replaces replaces() const { return {callId, remoteTag, localTag, false}; }
    // Whether a Replaces that came in means this dialog.
    bool matches(Replaces const& wanted) const
    {
        return wanted.callId == callId && wanted.toTag == localTag && wanted.fromTag == remoteTag;
    }

    bool operator==(DialogId const&) const = default;
};

// A request outside every dialog that no other object takes: REGISTER, MESSAGE, INFO ... Answered once; one that is
// destroyed unanswered is answered with 500.
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
    // "address:port" the request came from.
    virtual std::string source() const = 0;
    virtual bool reply(int status, std::string const& reason, Headers const& headers = {},
                       Content const& content = {}) = 0;
};

// Ends a request of ours: the final answer, or status 408 when none came and 503 when it could not be sent.
using ResponseHandler = std::function<void(Response const&)>;

}  // namespace telephone::sip
