// Session on one sipsess of the stack. SessionImpl.cpp implements its operations, SessionCallbacks.cpp the handlers of
// the stack, SessionEarly.cpp the responses before the answer and PRACK, SessionUpdate.cpp UPDATE and the refreshes.
//
// The observer may destroy the session in any callback, so each callback is the last action of its function. Within the
// stack's offer and answer handlers, which would not survive that, callbacks are posted.
#pragma once

#include <deque>
#include <mutex>

#include "telephone/sip/ClientRequest.h"
#include "telephone/sip/DialogHeaders.h"
#include "telephone/sip/EarlyDialogs.h"
#include "telephone/sip/Element.h"
#include "telephone/sip/EventLoop.h"
#include "telephone/sip/Referral.h"
#include "telephone/sip/ReliableResponses.h"
#include "telephone/sip/RtpStream.h"
#include "telephone/sip/SdpNegotiation.h"
#include "telephone/sip/ServerTransaction.h"
#include "telephone/sip/Session.h"
#include "telephone/sip/SessionTimer.h"

namespace telephone::sip {

// Why a call ends whose far end has not answered a refresh.
constexpr char const* kNoAnswerToRefresh = "the far end does not answer the refresh of the call";

// Refusals of its operations.
Outcome<> notWaitingForAnswer();
Outcome<> notEstablished();
Outcome<> noDescription();

class SessionImpl final : public Session, private MessageTapListener
{
public:
    // An outgoing call. Throws std::runtime_error without a port for RTP.
    SessionImpl(std::shared_ptr<Element> element, CallRequest const& request, Route route, SessionObserver& observer);
    // An incoming call. Throws std::runtime_error without a port for RTP.
    SessionImpl(std::shared_ptr<Element> element, sip_msg const& invite);
    ~SessionImpl() override;

    // Sends the INVITE of an outgoing call.
    [[nodiscard]] Outcome<> start();
    // Sends 100 for an incoming call and reads the offer. False if the INVITE is unusable, which has refused it.
    [[nodiscard]] bool begin();

    void setObserver(SessionObserver* observer) override;
    SessionState state() const override { return locked(state_); }
    bool isOutgoing() const override { return outgoing_; }
    Invitation const& invitation() const override { return invitation_; }
    DialogId dialogId() const override { return locked(dialogId_); }
    NameAddr remoteParty() const override { return locked(remoteParty_); }
    std::string remoteContact() const override { return locked(remoteContact_); }
    std::string localContact() const override;
    bool supportsTelephoneEvents() const override;
    Outcome<> ring(Headers const& headers) override;
    Outcome<> progress(Headers const& headers) override;
    Outcome<> answer(Headers const& headers) override;
    void reject(int status, std::string const& reason, Headers const& headers) override;
    Outcome<> redirect(std::string const& contact, std::string const& diversionReason) override;
    void makeReliable() override;
    void hangUp(std::string const& reason) override;
    Outcome<> fallSilent() override;
    Outcome<> modify(Direction direction, std::optional<bool> encrypted) override;
    Outcome<> refresh() override;
    Direction localDirection() const override;
    bool isHeldByRemote() const override;
    Outcome<> sendInfo(Content const& content, ResponseHandler done) override;
    Outcome<> sendDigits(std::string const& digits, std::chrono::milliseconds duration) override;
    Outcome<> transfer(std::string const& target, std::optional<Replaces> const& replaces) override;
    AudioStream& audio() override { return rtp_; }
    AudioStream const& audio() const override { return rtp_; }

private:
    struct PendingInfo
    {
        SessionImpl* session = nullptr;
        ResponseHandler done;
    };
    struct Modification
    {
        Direction direction;
        std::optional<bool> encrypted;
    };
    struct DigitByInfo
    {
        char key = 0;
        std::chrono::milliseconds duration{};
    };

    // A copy made under the lock.
    template <class Value>
    Value locked(Value const& value) const
    {
        std::lock_guard const guard(element_->loop());
        return value;
    }

    std::string localTag() const override { return dialogId_.localTag; }
    void onReason(std::string const& reason) override { closingReason_ = reason; }
    void onInviteRefused(Response const& response) override;
    void onInviteRedirected(Response const& response) override;
    bool takeRedirection(Response const& response) override;
    void onEndIgnored() override;
    bool takeRequest(sip_msg const& request) override;

    bool refuseIncoming(std::uint16_t status, char const* reason, Headers const& headers = {});
    Outcome<> accept(std::uint16_t status, char const* reason, mbuf* description, Headers const& headers);
    Outcome<> respond(std::uint16_t status, char const* reason, mbuf* description, Headers const& headers);
    bool followRedirection();
    Outcome<> respondEarly(EarlyResponse const& response);
    Outcome<> sendEarly(EarlyResponse const& response);
    bool sendsReliably(bool described) const;
    Outcome<> sendAnswer(Headers const& headers);
    void onPrack(sip_msg const& prack);
    bool takeDescription(sip_msg const& prack, bool answersOurs, Content& answer);
    void onPrackMissing();
    void failIncoming(int status, std::string const& reason, CloseCause cause);
    bool restart();
    Outcome<> sendModification(Modification const& modification);
    Outcome<> offer();
    void finishModification(bool accepted, int status, std::string const& reason);
    void reissueModification();
    bool isIncomingPending() const;
    void end();
    void releaseStack();
    void abandon(std::string const& why);
    void sendNextDigitByInfo();

    sip_dialog* dialogOf(sip_msg const& request) const;
    void onUpdate(sip_msg const& update, sip_dialog* dialog);
    bool refuseCrossingOffer(sip_msg const& update);
    bool takeOffer(sip_msg const& request, Content& answer);
    Headers dialogHeaders() const;
    std::string withCapabilities(Headers const& more) const;
    bool refuseBriefSession(sip_msg const& request);
    bool callForLonger(sip_msg const* refusal);
    Outcome<> refreshByUpdate();
    Outcome<> refreshByInvite();
    void onRefreshed(int error, sip_msg const* answer);
    void watchAudio();
    void checkAudio();
    void refreshRefused(int status, Headers const& headers);

    void learnDialog(sip_msg const& message);
    bool isFromServer(sip_msg const& message) const;
    void learnIdentity(sip_msg const& message);
    void learnPrecedence(sip_msg const& request);
    Outcome<> useEncryption(bool overTls);
    Headers warning(std::string const& objection) const;
    void applyMedia();
    void postFromStack(std::function<void()> work);

    void onProgress(sip_msg const& message);
    int onOffer(mbuf** description, sip_msg const& message);
    int onAnswer(sip_msg const& message);
    void onEstablished(sip_msg const& message);
    void onInfo(::sip* stack, sip_msg const& message);
    void onRefer(::sip* stack, sip_msg const& message);
    void onClose(int error, sip_msg const* message);
    Closing closingOf(int error, sip_msg const* message) const;
    void onInfoAnswered(PendingInfo& pending, int error, sip_msg const* message);
    void onCancelledBeforeAnswer();
    void announceRemoteChange();
    void announceDigit(char key);

    std::shared_ptr<Element> element_;
    std::shared_ptr<void const> token_{element_->sessionToken()};
    std::shared_ptr<SessionImpl*> self_ = std::make_shared<SessionImpl*>(this);  // expires with the session
    SessionObserver* observer_ = nullptr;
    bool outgoing_;
    SessionState state_;
    std::string const lineUser_;
    Invitation invitation_;
    DialogId dialogId_;
    NameAddr remoteParty_;
    std::string remoteContact_;
    std::string resourcePriority_;  // of the far end's latest request that named one
    std::string contactUser_;
    std::string ownUri_;
    CallRequest request_;
    Route route_;

    std::optional<Response> redirection_;
    int redirections_ = 0;

    sa const local_;  // our address of the family of the call
    RtpStream rtp_;
    SdpNegotiation sdp_;
    bool offersInAnswer_ = false;   // the INVITE has no description
    bool offerUnanswered_ = false;  // the offer in our answer to a re-INVITE without one

    Ref<Credentials> credentials_;
    Ref<sipsess> session_;
    std::optional<ServerTransaction> invite_;     // of an incoming call
    std::optional<DialogHeaders> dialogHeaders_;  // from the establishment to the end
    EarlyDialogs earlyDialogs_;                   // of an outgoing call
    ReliableResponses earlyResponses_;            // of an incoming call
    bool reliable_ = false;                       // all of them
    bool described_ = false;                      // the caller has acknowledged our description
    std::optional<Headers> dueAnswer_;            // waits for that
    std::optional<Referral> referral_;            // the transfer that we requested last

    std::optional<SdpNegotiation::Offer> offerBefore_;  // set while a re-INVITE of ours is under way
    std::deque<Modification> queuedModifications_;
    Timer modificationGuard_;
    bool renewing_ = false;  // the re-INVITE under way is a refresh

    SessionTimer sessionTimer_;
    std::shared_ptr<ClientRequest> update_;  // that we sent last
    bool remoteTakesUpdate_ = false;
    Timer audioWatch_;
    std::uint64_t audioDueSince_ = 0;  // milliseconds of the stack's clock
    std::string answerHeaders_;        // of our answer to the re-INVITE that is being read

    std::vector<std::unique_ptr<PendingInfo>> infos_;
    std::deque<DigitByInfo> digitsByInfo_;
    bool digitUnderWay_ = false;
    std::string closingReason_;
    Timer silenceEnd_;  // runs once the far end has tried to end a call that has fallen silent
};

}  // namespace telephone::sip
