// One call as this end sees it (an INVITE and the dialog it makes), and the observer that follows it. A session is made
// by UserAgent::call or comes with UserAgentObserver::onIncomingCall, and belongs to whoever holds it: destroying it
// ends the call as hangUp() does. All operations may be called on any thread; callbacks come on the loop's thread with
// the lock held, and may call anything, the destruction of their own session included.
//
//     outgoing:  call -> onProgress* -> onEstablished -> ... -> onClosed
//     incoming:  onIncomingCall -> ring / progress -> answer -> onEstablished -> ... -> onClosed
//
// onClosed is the last callback. After hangUp() or reject() of ours there is none at all.
//
// An operation that does not fit the state of the call, or that the stack refuses, changes nothing and returns false.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "telephone/sip/Audio.h"
#include "telephone/sip/Message.h"
#include "telephone/sip/Transfer.h"

namespace telephone::sip {

class Session;

// Who diverted a call on its way here and why: one Diversion header (RFC 5806), or one entry of History-Info (RFC
// 7044).
struct Diversion
{
    NameAddr party;
    std::string reason;  // "unconditional", "user-busy", "no-answer" ...; empty: not told
};

// What an INVITE says about the call it brings.
struct Invitation
{
    std::string requestUri;
    NameAddr from;
    NameAddr to;
    std::optional<NameAddr> assertedIdentity;  // P-Asserted-Identity (RFC 3325)
    std::vector<Diversion> diversions;         // the latest first
    std::optional<Replaces> replaces;
    std::string alertInfo;
    std::string callInfo;
    std::string resourcePriority;  // RFC 4412
    std::string referredBy;
    bool answerAutomatically = false;  // Answer-Mode: Auto (RFC 5373), answer-after in Call-Info or Alert-Info, or
                                       // info= alert-autoanswer in Alert-Info
    Headers headers;                   // all of them

    // The asserted identity where there is one, else From.
    NameAddr const& caller() const { return assertedIdentity ? *assertedIdentity : from; }
};

enum class CloseCause : int
{
    kRemoteHangUp,  // BYE
    kCancelled,     // the caller gave up before an answer (CANCEL)
    kRejected,      // our INVITE was refused: status and headers say how
    kTimeout,       // the far end is silent: no answer to an INVITE, a re-INVITE or INFO, or no ACK
    kFailed,        // nothing could be sent, or no codec in common
};

struct Closing
{
    CloseCause cause = CloseCause::kFailed;
    int status = 0;  // of the refusal; 408 for kTimeout, 503 or 488 for kFailed, 0 for a hang-up
    std::string text;
    std::string reasonHeader;  // Reason (RFC 3326) of the BYE, CANCEL or refusal; empty: none
    Headers headers;           // of the refusal: Retry-After, Warning ...

    // True where the Reason of a CANCEL says that another telephone took the call (RFC 3326, cause 200).
    bool answeredElsewhere() const;
};

class SessionObserver
{
public:
    virtual ~SessionObserver() = default;

    // 101 to 199 for our INVITE. earlyMedia: it brought SDP, and what the far end plays is heard.
    virtual void onProgress(Session&, Response const&, bool /*earlyMedia*/) {}
    // 300 to 399 for our INVITE; the call goes on to that contact by itself. diversion: as that answer told it.
    virtual void onRedirected(Session&, std::string const& /*contact*/, Response const&) {}
    // The call is through: 2xx to our INVITE, or ACK to our answer.
    virtual void onEstablished(Session&) {}
    // The far end's own change of the media: what it said its direction is (seen from this end: kReceiveOnly means that
    // it sends but does not listen). Both flags equal: a re-INVITE that changed neither.
    virtual void onRemoteHold(Session&, bool /*held*/, Direction /*agreed*/) {}
    // The end of modify(): accepted, or refused with its status (408: no answer, the call stays as it was).
    virtual void onModified(Session&, bool /*accepted*/, int /*status*/, std::string const& /*reason*/) {}
    // A re-INVITE or an answer told another identity of the far end (P-Asserted-Identity, else nothing).
    virtual void onRemoteIdentity(Session&, NameAddr const&) {}
    // INFO in the dialog; already answered with 200. INFO with DTMF comes as onDigit.
    virtual void onInfo(Session&, Content const&) {}
    // A key of the far end (0-9 * # A-D), by RFC 4733 or by INFO.
    virtual void onDigit(Session&, char /*digit*/) {}
    // REFER in the dialog. Not keeping it refuses it.
    virtual void onTransferRequested(Session&, std::unique_ptr<Transfer>) {}
    // How a transfer that we asked for goes: statuses of the call the far end makes. ended: the last one, which is the
    // status of the REFER itself where the far end refused that (408: no answer).
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

    virtual void setObserver(SessionObserver* observer) = 0;  // null: nobody; before and after it is called no more
    virtual SessionState state() const = 0;
    virtual bool isOutgoing() const = 0;
    // Of an incoming call; empty for an outgoing one.
    virtual Invitation const& invitation() const = 0;
    virtual DialogId dialogId() const = 0;
    virtual NameAddr remoteParty() const = 0;  // From or To of the far end, or its latest asserted identity
    virtual std::string
    remoteContact() const = 0;  // URI; where the far end can be called directly; empty: not known yet
    virtual std::string localContact() const = 0;  // URI that a Refer-To to this end of the call can name
    virtual bool supportsTelephoneEvents() const = 0;

    // --- an incoming call
    // 180, or 183 with our SDP so that the caller hears the stream before the answer.
    virtual bool ring(Headers const& headers = {}) = 0;
    virtual bool progress(Headers const& headers = {}) = 0;
    virtual bool answer(Headers const& headers = {}) = 0;
    // 300 to 699.
    virtual bool reject(int status, std::string const& reason, Headers const& headers = {}) = 0;
    // 302 with that Contact. diversionReason, where it is not empty, makes a Diversion header that names the called
    // party.
    virtual bool redirect(std::string const& contact, std::string const& diversionReason = {}) = 0;

    // --- any call
    // Cancels, refuses (486) or ends with BYE, whatever the state asks for. reason: value of a Reason header, or empty.
    // It always ends here at once; whether the far end answers the BYE is not told.
    virtual void hangUp(std::string const& reason = {}) = 0;

    // Changes our direction by re-INVITE: kSendOnly holds, kSendReceive retrieves; the present one renews the call.
    // The end comes as onModified; one asked for while another is under way follows it. 491 is tried again as RFC 3261
    // section 14.1 says.
    virtual bool modify(Direction direction) = 0;
    virtual Direction localDirection() const = 0;  // what we offer or last asked for
    virtual bool isHeldByRemote() const = 0;

    // INFO. The handler may be empty.
    virtual bool sendInfo(Content const& content, ResponseHandler done = {}) = 0;
    // Digits 0-9 * # A-D one after the other; by RFC 4733 where the far end has it, else by INFO
    // (application/dtmf-relay).
    virtual bool sendDigits(std::string const& digits,
                            std::chrono::milliseconds duration = std::chrono::milliseconds(100)) = 0;

    // Asks the far end to call target (REFER); replaces: the call there it shall take the place of. The end comes as
    // onTransferProgress; this call stays until somebody ends it.
    virtual bool transfer(std::string const& target, std::optional<Replaces> const& replaces = std::nullopt) = 0;

    virtual AudioStream& audio() = 0;
    virtual AudioStream const& audio() const = 0;
};

}  // namespace telephone::sip
