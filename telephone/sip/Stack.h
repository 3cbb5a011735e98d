// The one door to the SIP stack below: its headers, and the few wrappers that make its reference-counted objects and
// its text slices safe to hold. Only sources of this folder include this, never a header that others see.
#pragma once

extern "C" {
#include <re.h>
#include <rem.h>
}

#include <string>
#include <string_view>
#include <utility>

#include "telephone/sip/Message.h"

namespace telephone::sip {

// Owns one reference to an object of the stack. Stays where it is, because the stack keeps the address of such pointers
// and clears them when the object ends. Reference counts are not atomic: made, changed and destroyed under the lock.
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
    // For functions that hand out a new object; what was held is given back first.
    T** out()
    {
        reset();
        return &object_;
    }
    // For functions that may end or replace what is held.
    T** inOut() { return &object_; }
    void reset() { mem_deref(std::exchange(object_, nullptr)); }
    // Takes one more reference to an object that somebody else owns.
    void share(T const* object)
    {
        T* shared = static_cast<T*>(mem_ref(const_cast<T*>(object)));
        reset();
        object_ = shared;
    }

private:
    T* object_ = nullptr;
};

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

// What is left in a buffer from where it stands.
std::string remainingText(mbuf const* buffer);
// Puts a new buffer with that text, at its start, into the given place; false without memory.
bool fill(Ref<mbuf>& buffer, std::string_view content);

std::string addressText(sa const& address);  // "address:port"
std::string errorText(int error);

Headers headersOf(sip_msg const& message);
Response responseOf(sip_msg const& message);
Content contentOf(sip_msg const& message);
std::string headerValue(sip_msg const& message, char const* name);
// An address header as the stack parsed it; an empty name-addr for one that is none.
NameAddr nameAddrOf(sip_taddr const& address);
// URI of the first Contact; empty when there is none.
std::string contactOf(sip_msg const& message);
// Local tag that the stack gives a dialog made from this request.
std::string localTagOf(sip_msg const& request);
// Headers and the end of an answer, the way the stack's reply functions want them.
std::string replyTail(Headers const& headers, Content const& content);

// User and password for challenges, as an object of the stack, because the stack may ask after its user is gone.
struct Credentials;
void makeCredentials(Ref<Credentials>& credentials, std::string const& user, std::string const& password);
int answerChallenge(char** user, char** password, char const* realm, void* credentials);

}  // namespace telephone::sip
