// Reads received packets before the stack does, for what the stack does not report: the Reason of a BYE or CANCEL, a
// refused re-INVITE, a redirection that it follows on its own, and requests in a dialog that it does not know. Tells
// the session concerned, which it finds by Call-ID and local tag. One per user agent; used under the lock.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>

#include "telephone/sip/Stack.h"

namespace telephone::sip {

class EventLoop;

class MessageTapListener
{
public:
    virtual ~MessageTapListener() = default;

    virtual bool isOutgoing() const = 0;
    virtual std::string localTag() const = 0;  // empty until known

    // The value of a received Reason header, or empty.
    virtual void onReason(std::string const& reason) = 0;
    // An INVITE of ours was answered with 400 or more. Called after the stack has handled the response.
    virtual void onInviteRefused(Response const& response) = 0;
    // An INVITE of ours was answered with 300 to 399. The stack has followed, unless it belonged to a call.
    virtual void onInviteRedirected(Response const& response) = 0;
    // Called before the stack sees the redirection: true keeps the stack from following it.
    virtual bool takeRedirection(Response const& response) = 0;
    // A request in a dialog, before the stack sees it. True: it is answered, or will be.
    virtual bool takeRequest(sip_msg const& /*request*/) { return false; }
    // A BYE or CANCEL came for a silent listener.
    virtual void onEndIgnored() {}
};

class MessageTap : public std::enable_shared_from_this<MessageTap>
{
public:
    explicit MessageTap(EventLoop& loop);

    // Whether there is a session with that Call-ID and local tag.
    bool knows(std::string const& callId, std::string const& localTag) const
    {
        return find(callId, localTag) != nullptr;
    }
    void add(std::string const& callId, MessageTapListener& listener);
    void remove(MessageTapListener& listener);

    // Keeps everything that comes in the listener's dialog from the stack.
    void silence(MessageTapListener& listener) { silent_.insert(&listener); }

    void onReceived(std::string_view packet);
    // Whether the request is one that was kept from the stack, which has parsed it by then.
    static bool isBlank(sip_msg const& request);
    void onBye(sip_msg const& bye);
    // True: a session has taken the request.
    bool onRequest(sip_msg const& request) const;

private:
    MessageTapListener* find(std::string const& callId, std::string const& localTag) const;
    bool takeForSilent(std::string_view packet) const;
    void onRefusal(std::string_view packet);
    bool takeRedirection(sip_msg const& response, std::string_view packet, mbuf const& copy) const;
    void onCancel(std::string_view packet) const;

    EventLoop& loop_;
    std::multimap<std::string, MessageTapListener*> listeners_;
    std::set<MessageTapListener*> silent_;
};

}  // namespace telephone::sip
