// One call as this end sees it: an INVITE and the dialog it creates, and the observer that follows it. UserAgent::call
// makes a session, or UserAgentObserver::onIncomingCall brings one. It belongs to its holder; destroying it ends the
// call as hangUp() does. All operations may be called on any thread. Callbacks come on the loop's thread with the lock
// held and may call anything, including the destruction of their own session.
//
//     outgoing:  call -> onProgress* -> onEstablished -> ... -> onClosed
//     incoming:  onIncomingCall -> ring / progress -> answer -> onEstablished -> ... -> onClosed
//
// onClosed is the last callback. hangUp() and reject() of ours cause no callback.
//
// An operation that refuses changes nothing: kWrongState when the state of the call does not allow it, kBadInput for
// malformed arguments, kUnavailable when the stack cannot send.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "telephone/base/Refusal.h"
#include "telephone/sip/Audio.h"
#include "telephone/sip/Message.h"
#include "telephone/sip/Transfer.h"

namespace telephone::sip {

class Session;

// One diversion of a call on its way here: a Diversion header (RFC 5806) or an entry of History-Info (RFC 7044).
struct Diversion
{
    NameAddr party;
    std::string reason;  // "unconditional", "user-busy", "no-answer" ...; empty: not given
};

// The contents of an INVITE.
struct Invitation
{
    std::string requestUri;
    NameAddr from;
    NameAddr to;
    std::optional<NameAddr> assertedIdentity;  // P-Asserted-Identity (RFC 3325) of the line's server
    std::vector<Diversion> diversions;         // the most recent first
    std::optional<Replaces> replaces;
    std::optional<Replaces> joins;  // Join (RFC 3911), written like Replaces
    std::string alertInfo;
    std::string resourcePriority;  // RFC 4412
    std::string referredBy;
    // Answer-Mode: Auto (RFC 5373), answer-after or alert-autoanswer in Call-Info or Alert-Info.
    bool answerAutomatically = false;
    Headers headers;  // all of them

    // The asserted identity if there is one, else From.
    NameAddr const& caller() const { return assertedIdentity ? *assertedIdentity : from; }
};

enum class CloseCause : int
{
    kRemoteHangUp,  // BYE
    kCancelled,     // CANCEL before an answer
    kRejected,      // our INVITE was refused, with the status and headers of Closing
    kTimeout,       // no answer to an INVITE, a re-INVITE or INFO, or no ACK
    kAbandoned,     // this end gave up on a far end that is not there any more; the text of Closing says how it showed
    kFailed,        // the request could not be sent, or there is no common codec
};

struct Closing
{
    CloseCause cause = CloseCause::kFailed;
    int status = 0;  // of the refusal; 408 for kTimeout and kAbandoned, 503 or 488 for kFailed, 0 for a hang-up
    std::string text;
    std::string reasonHeader;  // Reason (RFC 3326) of the BYE, CANCEL or refusal; empty: none
    Headers headers;           // of the refusal: Retry-After, Warning ...

    // Whether the Reason of a CANCEL says that another telephone answered the call (RFC 3326, cause 200).
    bool answeredElsewhere() const;
};

class SessionObserver
{
public:
    virtual ~SessionObserver() = default;

    // 101 to 199 for our INVITE. earlyMedia: the response had SDP, and the far end can be heard.
    virtual void onProgress(Session&, Response const&, bool /*earlyMedia*/) {}
    // 300 to 399 for our INVITE; the call continues to that contact on its own. The response has the Diversion headers.
    virtual void onRedirected(Session&, std::string const& /*contact*/, Response const&) {}
    // 2xx to our INVITE, or ACK to our answer.
    virtual void onEstablished(Session&) {}
    // A re-INVITE of the far end. agreed is seen from this end: kReceiveOnly means that the far end sends but does not
    // listen. A re-INVITE that changes neither value is reported too.
    virtual void onRemoteHold(Session&, bool /*held*/, Direction /*agreed*/) {}
    // The result of modify(): accepted, or refused with a status (408: no answer). A refusal leaves the call unchanged.
    virtual void onModified(Session&, bool /*accepted*/, int /*status*/, std::string const& /*reason*/) {}
    // The P-Asserted-Identity of a re-INVITE or a response of the line's server names a new far end.
    virtual void onRemoteIdentity(Session&, NameAddr const&) {}
    // A re-INVITE or UPDATE of the far end names another precedence: the value of Resource-Priority (RFC 4412).
    virtual void onPrecedence(Session&, std::string const& /*resourcePriority*/) {}
    // INFO in the dialog, already answered with 200. INFO with DTMF arrives as onDigit.
    virtual void onInfo(Session&, Content const&) {}
    // A digit of the far end (0-9 * # A-D), by RFC 4733 or by INFO.
    virtual void onDigit(Session&, char /*digit*/) {}
    // REFER in the dialog. Dropping the transfer refuses it.
    virtual void onTransferRequested(Session&, std::unique_ptr<Transfer>) {}
    // The progress of a transfer that we requested: statuses of the call that the far end makes. ended: the last one,
    // which is the status of the REFER itself if the far end refused that (408: no answer).
    virtual void onTransferProgress(Session&, int /*status*/, std::string const& /*reason*/, bool /*ended*/) {}
    virtual void onClosed(Session&, Closing const&) {}
};

enum class SessionState : int
{
    kCalling,
    kIncoming,
    kEarly,
    kAnswering,
    kEstablished,
    kClosed
};

class Session
{
public:
    virtual ~Session() = default;

    virtual void setObserver(SessionObserver* observer) = 0;  // null: no callbacks
    virtual SessionState state() const = 0;
    virtual bool isOutgoing() const = 0;
    // The INVITE of an incoming call; empty for an outgoing one.
    virtual Invitation const& invitation() const = 0;
    virtual DialogId dialogId() const = 0;
    // From or To of the far end, or its latest asserted identity.
    virtual NameAddr remoteParty() const = 0;
    // The URI at which the far end can be called directly; empty until it is known.
    virtual std::string remoteContact() const = 0;
    // The URI with which a Refer-To can name this end of the call.
    virtual std::string localContact() const = 0;
    virtual bool supportsTelephoneEvents() const = 0;

    // --- an incoming call
    // 180 Ringing.
    [[nodiscard]] virtual Outcome<> ring(Headers const& headers = {}) = 0;
    // 183 Session Progress with our SDP, so that the caller hears the stream before the answer.
    [[nodiscard]] virtual Outcome<> progress(Headers const& headers = {}) = 0;
    [[nodiscard]] virtual Outcome<> answer(Headers const& headers = {}) = 0;
    // Refuses the call with a status from 300 to 699. Ignored, and logged, unless the call is waiting for an answer.
    virtual void reject(int status, std::string const& reason, Headers const& headers = {}) = 0;
    // 302 with that Contact. A diversionReason that is not empty makes a Diversion header that names the called party.
    [[nodiscard]] virtual Outcome<> redirect(std::string const& contact, std::string const& diversionReason = {}) = 0;

    // From now on the responses before the answer are reliable (RFC 3262), if the caller supports that. Those with a
    // session description are in any case.
    virtual void makeReliable() = 0;

    // --- any call
    // Sends CANCEL, 486 or BYE, as the state requires. The call ends here at once; whether the far end answers the BYE
    // is not reported. reason: value of a Reason header, or empty.
    virtual void hangUp(std::string const& reason = {}) = 0;

    // Behaves like an end that has failed without a word: from now on nothing that the far end sends in the call is
    // answered or reported, and no audio is sent. When the far end has tried to end the call and must have given up,
    // the call is closed here with kTimeout. kNotSupported: the call is not over UDP.
    [[nodiscard]] virtual Outcome<> fallSilent() = 0;

    // Changes our direction by re-INVITE: kSendOnly holds, kSendReceive retrieves; the present one renews the call.
    // encrypted: offers new keys, or none (kNotSupported: the configuration does not permit it); not given: as before.
    // onModified reports the result. Changes requested meanwhile are queued. 491 is retried as RFC 3261 section 14.1
    // requires.
    [[nodiscard]] virtual Outcome<> modify(Direction direction, std::optional<bool> encrypted = std::nullopt) = 0;
    // Refreshes the call as its session timer does (RFC 4028): with UPDATE if the far end takes that, else by
    // re-INVITE.
    [[nodiscard]] virtual Outcome<> refresh() = 0;
    virtual Direction localDirection() const = 0;  // the one that we offer or requested last
    virtual bool isHeldByRemote() const = 0;

    // INFO. The handler may be empty.
    [[nodiscard]] virtual Outcome<> sendInfo(Content const& content, ResponseHandler done = {}) = 0;
    // Sends the digits 0-9 * # A-D in order, by RFC 4733 if the far end supports it, else by INFO
    // (application/dtmf-relay).
    [[nodiscard]] virtual Outcome<> sendDigits(std::string const& digits,
                                               std::chrono::milliseconds duration = std::chrono::milliseconds(100)) = 0;

    // Asks the far end to call target (REFER). replaces: the call at the target that the new one replaces.
    // onTransferProgress reports the result; this call stays until either end clears it.
    [[nodiscard]] virtual Outcome<> transfer(std::string const& target,
                                             std::optional<Replaces> const& replaces = std::nullopt) = 0;

    virtual AudioStream& audio() = 0;
    virtual AudioStream const& audio() const = 0;
};

}  // namespace telephone::sip
