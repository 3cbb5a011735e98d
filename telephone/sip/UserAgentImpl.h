// The inside of a user agent: the stack's objects of one element, its listeners, and the sessions that are alive, by
// Call-ID. Shared by everything the user agent gave out, so that a late owner finds a closed element, not a dangling
// one. Used under the lock.
#pragma once

#include "MediaClock.h"
#include "Stack.h"
#include "UserAgent.h"

#include <map>

namespace telephone::sip {

class SessionImpl;

// What the sources of this folder agree on about our own capabilities.
constexpr const char* kAllow = "INVITE, ACK, BYE, CANCEL, OPTIONS, INFO, REFER, NOTIFY, SUBSCRIBE";
constexpr const char* kSupported = "replaces";
constexpr const char* kSdpType = "application/sdp";

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
    std::optional<Route> routeTo(const Account& account, const std::string& target, std::string& whyNot) const;
    void say(LogLevel level, const std::string& line) const;
    // Says why an operation failed, and hands the text on.
    void refuse(const std::string& what, const std::string& why, std::string* whyNot) const;
    std::string localUri(const std::string& user, sip_transp transport) const;

    void add(const std::string& callId, SessionImpl& session);
    void remove(SessionImpl& session);
    SessionImpl* find(const std::string& callId, const std::string& localTag) const;

    bool onRequestFirst(const sip_msg& message);
    bool onRequestLast(const sip_msg& message);
    void onInvite(const sip_msg& message);
    bool onFirstSubscribe(const sip_msg& message);
    void onTrace(bool sent, const sa& from, const sa& to, std::string_view packet);

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
    bool refuseUnsupported(const sip_msg& message) const;
    bool takeOutOfDialog(const sip_msg& message);
    void answerOptions(const sip_msg& message) const;
    void takeUnsolicitedNotify(const sip_msg& message);
    void takeRefer(const sip_msg& message);
    void noteBye(const sip_msg& message);
    void noteRefusal(std::string_view packet);
    bool takeRedirection(const sip_msg& message, std::string_view packet, const mbuf& copy);
    void noteCancel(std::string_view packet);
    void waitForQuiet();
};

}  // namespace telephone::sip
