// The SIP stack's headers, and wrappers for its reference-counted objects and its text slices. Included only within
// this folder, never by a header that other folders include.
#pragma once

extern "C" {
#include <re.h>
#include <rem.h>
}

#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "telephone/base/Refusal.h"
#include "telephone/sip/Log.h"
#include "telephone/sip/Message.h"
#include "telephone/trace/Trace.h"

namespace telephone::sip {

// Owns one reference to an object of the stack. Cannot be moved, because the stack keeps the address of the pointer and
// clears it when the object ends. Reference counts are not atomic: use it under the lock only.
template <class T>
class Ref
{
public:
    Ref() = default;
    ~Ref() { reset(); }
    Ref(Ref const&) = delete;
    Ref& operator=(Ref const&) = delete;

    T* get() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }
    // For functions that return a new object; releases the present one first.
    T** out()
    {
        reset();
        return &object_;
    }
    void reset() { mem_deref(std::exchange(object_, nullptr)); }
    // Takes another reference to an object owned elsewhere.
    void share(T const* object)
    {
        T* shared = static_cast<T*>(mem_ref(const_cast<T*>(object)));
        reset();
        object_ = shared;
    }

private:
    T* object_ = nullptr;
};

// What a received message has caused by arriving, for the trace. Defined with the messages of the trace.
[[nodiscard]] TraceCause causeOfReceived(sip_msg const& message);
// The same of the message that a dialog has received last.
[[nodiscard]] TraceCause causeOfLastReceived(std::string const& callId);

// The message among the arguments of a handler; null: it has none.
inline sip_msg const* messageAmong()
{
    return nullptr;
}
template <class First, class... Others>
sip_msg const* messageAmong(First const& first, Others const&... others)
{
    if constexpr (std::is_convertible_v<First, sip_msg const*>) {
        return first;
    } else {
        return messageAmong(others...);
    }
}

// handlerOf<&Class::method> is a handler of the stack, whose last argument is the object. Where the handler takes a
// pointer, the method may take a reference. What it does is caused by the message that it is given.
template <class T>
struct HandlerArgument
{
    using Type = T;
    static T pass(T value) { return value; }
};
template <class T>
struct HandlerArgument<T&>
{
    using Type = T*;
    static T& pass(T* value) { return *value; }
};
template <auto method>
struct Handler;
template <class Class, class Result, class... Arguments, Result (Class::*method)(Arguments...)>
struct Handler<method>
{
    static Result call(typename HandlerArgument<Arguments>::Type... arguments, void* object)
    {
        sip_msg const* const message = isTracing() ? messageAmong(arguments...) : nullptr;
        TraceScope const scope(message != nullptr ? causeOfReceived(*message) : causeOfThread());
        return (static_cast<Class*>(object)->*method)(HandlerArgument<Arguments>::pass(arguments)...);
    }
};
template <auto method>
constexpr auto handlerOf = &Handler<method>::call;

inline std::string text(pl const& slice)
{
    return slice.p ? std::string(slice.p, slice.l) : std::string();
}

inline std::string_view view(pl const& slice)
{
    return slice.p ? std::string_view(slice.p, slice.l) : std::string_view();
}

inline pl slice(std::string_view value)
{
    return pl{value.data(), value.size()};
}

// The text from the buffer's position to its end.
std::string remainingText(mbuf const* buffer);
// Makes a buffer with that text, positioned at its start; false without memory.
bool fill(Ref<mbuf>& buffer, std::string_view content);

std::string hexText(std::uint64_t number, std::size_t digits = 16);  // small letters, with leading zeros
std::string addressText(sa const& address);                          // "address:port"
std::string errorText(int error);
// An error that stands for a reason of ours and passes through the stack as those of errno do. errorText() gives the
// reason back; only the latest hundred are kept. Under the lock.
int failureOf(std::string const& reason);
// Success for 0, else kUnavailable: "<what> cannot be sent: <error text>".
[[nodiscard]] Outcome<> sent(int error, std::string const& what);

Headers headersOf(sip_msg const& message);
Response responseOf(sip_msg const& message);
Content contentOf(sip_msg const& message);
std::string headerValue(sip_msg const& message, char const* name);
// An empty name-addr if the header is malformed.
NameAddr nameAddrOf(sip_taddr const& address);
// URI of the first Contact; empty without one.
std::string contactOf(sip_msg const& message);
// The local tag that the stack gives to a dialog made from this request.
std::string localTagOf(sip_msg const& request);
// Headers, empty line and body in the form that the stack's reply functions take.
std::string replyTail(Headers const& headers, Content const& content);

// User and password for challenges, as an object of the stack: the stack may need them after their user is destroyed.
struct Account;
struct Credentials;
void makeCredentials(Ref<Credentials>& credentials, Account const& account, Logger const& log);
// The stack's handler for challenges; without credentials it fails.
int answerChallenge(char** user, char** password, char const* realm, void* credentials);
// Logs why a challenge is not answered; does nothing without credentials.
void reportUnanswered(void const* credentials, std::string const& reason);

}  // namespace telephone::sip
