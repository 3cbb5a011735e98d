// The session behind the interface, on one sipsess of the stack. SessionImpl.cpp has what users ask of it,
// SessionCallbacks.cpp what the stack tells it.
//
// The observer may destroy the session in any callback, so each callback is the last thing a function does; inside the
// stack's offer and answer handlers, where the stack does not survive that, callbacks are posted instead.
#pragma once

#include <deque>

#include "telephone/sip/RtpStream.h"
#include "telephone/sip/SdpNegotiation.h"
#include "telephone/sip/Session.h"
#include "telephone/sip/UserAgentImpl.h"

namespace telephone::sip {

class SessionImpl final : public Session
{
public:
    // An outgoing call; start() sends it. Throws std::runtime_error without a port for RTP.
    SessionImpl(std::shared_ptr<UserAgent::Impl> agent, CallRequest const& request, Route route,
                SessionObserver& observer);
    // An incoming call, with "100 Trying" still to be sent by begin().
    SessionImpl(std::shared_ptr<UserAgent::Impl> agent, sip_msg const& invite);
    ~SessionImpl() override;

    int start();
    // Sends 100 and reads the offer; the status to refuse the INVITE with, or 0.
    int begin();

    // From the user agent, which sees what the stack does not tell.
    void noteRefusedInvite(Response const& response);
    void noteRedirection(Response const& response);
    // Whether the session follows this redirection of its INVITE itself, as soon as the stack lets go of it.
    bool takeRedirection(Response const& response);
    void noteReason(std::string const& reason) { closingReason_ = reason; }

    void setObserver(SessionObserver* observer) override;
    SessionState state() const override;
    bool isOutgoing() const override { return outgoing_; }
    Invitation const& invitation() const override { return invitation_; }
    DialogId dialogId() const override;
    NameAddr remoteParty() const override;
    std::string remoteContact() const override;
    std::string localContact() const override;
    bool supportsTelephoneEvents() const override;
    bool ring(Headers const& headers) override;
    bool progress(Headers const& headers) override;
    bool answer(Headers const& headers) override;
    bool reject(int status, std::string const& reason, Headers const& headers) override;
    bool redirect(std::string const& contact, std::string const& diversionReason) override;
    void hangUp(std::string const& reason) override;
    bool modify(Direction direction) override;
    Direction localDirection() const override;
    bool isHeldByRemote() const override;
    bool sendInfo(Content const& content, ResponseHandler done) override;
    bool sendDigits(std::string const& digits, std::chrono::milliseconds duration) override;
    bool transfer(std::string const& target, std::optional<Replaces> const& replaces) override;
    AudioStream& audio() override { return rtp_; }
    AudioStream const& audio() const override { return rtp_; }

private:
    struct PendingInfo
    {
        SessionImpl* session = nullptr;
        ResponseHandler done;
    };
    struct DigitByInfo
    {
        char key = 0;
        std::chrono::milliseconds duration{};
    };

    int accept(std::uint16_t status, char const* reason, mbuf* description, Headers const& headers);
    int provisional(std::uint16_t status, char const* reason, mbuf* description, Headers const& headers);
    bool followRedirection();
    bool sendModification(Direction direction);
    void finishModification(bool accepted, int status, std::string const& reason);
    void reissueModification();
    bool isIncomingPending() const;
    void end();
    void releaseStack();
    void sendNextDigitByInfo();

    void learnDialog(sip_msg const& message);
    void learnIdentity(sip_msg const& message);
    void applyMedia();
    void postFromStack(std::function<void()> work);

    void onProgress(sip_msg const& message);
    int onOffer(mbuf** description, sip_msg const& message);
    int onAnswer(sip_msg const& message);
    void onEstablished(sip_msg const& message);
    void onInfo(sip_msg const& message);
    void onRefer(sip_msg const& message);
    void onClose(int error, sip_msg const* message);
    void onInfoAnswered(PendingInfo& pending, int error, sip_msg const* message);
    void onReferNotify(sip_msg const& message);
    void onReferClosed(int error, sip_msg const* message);
    void onCancelledBeforeAnswer();
    void announceRemoteChange();

    // The stack's handlers: the session is the argument.
    static void progressHandler(sip_msg const* message, void* session);
    static int offerHandler(mbuf** description, sip_msg const* message, void* session);
    static int answerHandler(sip_msg const* message, void* session);
    static void establishedHandler(sip_msg const* message, void* session);
    static void infoHandler(::sip*, sip_msg const* message, void* session);
    static void referHandler(::sip*, sip_msg const* message, void* session);
    static void closeHandler(int error, sip_msg const* message, void* session);

    std::shared_ptr<UserAgent::Impl> agent_;
    std::shared_ptr<SessionImpl*> self_ = std::make_shared<SessionImpl*>(this);  // for what is posted: gone with us
    SessionObserver* observer_ = nullptr;
    bool outgoing_;
    SessionState state_;
    Invitation invitation_;
    DialogId dialogId_;
    NameAddr remoteParty_;
    std::string remoteContact_;
    std::string contactUser_;
    std::string ownUri_;
    CallRequest request_;
    Route route_;

    std::optional<Response> redirection_;
    int redirections_ = 0;

    RtpStream rtp_;
    SdpNegotiation sdp_;
    bool offered_ = false;  // an INVITE without a description: ours goes into the answer

    Ref<Credentials> credentials_;
    Ref<sipsess> session_;
    Ref<sip_msg> invite_;
    sip_strans* transaction_ = nullptr;  // of an INVITE that is only tried yet
    Ref<sipsub> referral_;
    int referralStatus_ = 0;
    bool referring_ = false;

    struct Modification
    {
        Direction wanted = Direction::kSendReceive;
        Direction before = Direction::kSendReceive;
    };
    std::optional<Modification> modification_;
    std::deque<Direction> queuedModifications_;
    Timer modificationGuard_;

    std::vector<std::unique_ptr<PendingInfo>> infos_;
    std::deque<DigitByInfo> digitsByInfo_;
    bool digitUnderWay_ = false;
    std::string closingReason_;
};

}  // namespace telephone::sip
