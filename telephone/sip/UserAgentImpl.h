// The inside of a user agent: the stack's objects of one element, its listeners, and the sessions that are alive, by
// Call-ID. Shared by everything the user agent gave out, so that a late owner finds a closed element, not a dangling
// one. Used under the lock.
#pragma once

#include <map>

#include "telephone/sip/MediaClock.h"
#include "telephone/sip/Stack.h"
#include "telephone/sip/UserAgent.h"

namespace telephone::sip {

class SessionImpl;

// What the sources of this folder agree on about our own capabilities.
constexpr char const* kAllow = "INVITE, ACK, BYE, CANCEL, OPTIONS, INFO, REFER, NOTIFY, SUBSCRIBE";
constexpr char const* kSupported = "replaces";
constexpr char const* kSdpType = "application/sdp";

// One URI to send to, and how to get there.
struct Route
{
    std::string target;
    std::string fromUri;
    std::string fromName;  // ready for a quoted string
    std::string contactUser;
    std::string proxy;  // empty: none
};

struct UserAgent::Impl : std::enable_shared_from_this<UserAgent::Impl>
{
    Impl(EventLoop& eventLoop, UserAgentConfig settings, UserAgentObserver& observer);
    ~Impl();

    void open();
    void close();
    bool isClosed() const { return closed; }

    // A target as this element can reach it: the account's transport added, "localhost" resolved. Nothing, with the
    // reason, when it cannot.
    std::optional<Route> routeTo(Account const& account, std::string const& target, std::string& whyNot) const;
    void say(LogLevel level, std::string const& line) const;
    // Says why an operation failed, and hands the text on.
    void refuse(std::string const& what, std::string const& why, std::string* whyNot) const;
    std::string localUri(std::string const& user, sip_transp transport) const;

    void add(std::string const& callId, SessionImpl& session);
    void remove(SessionImpl& session);
    SessionImpl* find(std::string const& callId, std::string const& localTag) const;

    bool onRequestFirst(sip_msg const& message);
    bool onRequestLast(sip_msg const& message);
    void onInvite(sip_msg const& message);
    bool onFirstSubscribe(sip_msg const& message);
    void onTrace(bool sent, sa const& from, sa const& to, std::string_view packet);

    EventLoop& loop;
    UserAgentConfig config;
    UserAgentObserver* observer;
    MediaClock clock;
    sa address{};
    std::uint16_t udpPort = 0;
    std::uint16_t tcpPort = 0;
    bool closed = false;
    std::size_t livingSessions = 0;  // objects, ended or not
    std::multimap<std::string, SessionImpl*> sessions;

    ::sip* stack = nullptr;
    Ref<sip_lsnr> firstListener;
    Ref<sip_lsnr> lastListener;
    Ref<sip_lsnr> strayListener;
    Ref<sipsess_sock> sessionSocket;
    Ref<sipevent_sock> eventSocket;

private:
    void bind();
    void bindTcp();
    void listen();
    bool refuseUnsupported(sip_msg const& message) const;
    bool takeOutOfDialog(sip_msg const& message);
    void answerOptions(sip_msg const& message) const;
    void takeUnsolicitedNotify(sip_msg const& message);
    void takeRefer(sip_msg const& message);
    void noteBye(sip_msg const& message);
    void noteRefusal(std::string_view packet);
    bool takeRedirection(sip_msg const& message, std::string_view packet, mbuf const& copy);
    void noteCancel(std::string_view packet);
    void waitForQuiet();
};

}  // namespace telephone::sip
