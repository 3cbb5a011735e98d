// The session behind the interface, on one sipsess of the stack. SessionImpl.cpp has what users ask of it,
// SessionCallbacks.cpp what the stack tells it.
//
// The observer may destroy the session in any callback, so each callback is the last thing a function does; inside the
// stack's offer and answer handlers, where the stack does not survive that, callbacks are posted instead.
#pragma once

#include "RtpStream.h"
#include "SdpNegotiation.h"
#include "Session.h"
#include "UserAgentImpl.h"

#include <deque>

namespace telephone::sip {

class SessionImpl final : public Session
{
public:
    // An outgoing call; start() sends it. Throws std::runtime_error without a port for RTP.
    SessionImpl(std::shared_ptr<UserAgent::Impl> agent, const CallRequest& request, Route route,
                SessionObserver& observer);
    // An incoming call, with "100 Trying" still to be sent by begin().
    SessionImpl(std::shared_ptr<UserAgent::Impl> agent, const sip_msg& invite);
    ~SessionImpl() override;

    int start();
    // Sends 100 and reads the offer; the status to refuse the INVITE with, or 0.
    int begin();

    // From the user agent, which sees what the stack does not tell.
    void noteRefusedInvite(const Response& response);
    void noteRedirection(const Response& response);
    // Whether the session follows this redirection of its INVITE itself, as soon as the stack lets go of it.
    bool takeRedirection(const Response& response);
    void noteReason(const std::string& reason) { closingReason_ = reason; }

    void setObserver(SessionObserver* observer) override;
    SessionState state() const override;
    bool isOutgoing() const override { return outgoing_; }
    const Invitation& invitation() const override { return invitation_; }
    DialogId dialogId() const override;
    NameAddr remoteParty() const override;
    std::string remoteContact() const override;
    std::string localContact() const override;
    bool supportsTelephoneEvents() const override;
    bool ring(const Headers& headers) override;
    bool progress(const Headers& headers) override;
    bool answer(const Headers& headers) override;
    bool reject(int status, const std::string& reason, const Headers& headers) override;
    bool redirect(const std::string& contact, const std::string& diversionReason) override;
    void hangUp(const std::string& reason) override;
    bool modify(Direction direction) override;
    Direction localDirection() const override;
    bool isHeldByRemote() const override;
    bool sendInfo(const Content& content, ResponseHandler done) override;
    bool sendDigits(const std::string& digits, std::chrono::milliseconds duration) override;
    bool transfer(const std::string& target, const std::optional<Replaces>& replaces) override;
    AudioStream& audio() override { return rtp_; }
    const AudioStream& audio() const override { return rtp_; }

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

    int accept(std::uint16_t status, const char* reason, mbuf* description, const Headers& headers);
    int provisional(std::uint16_t status, const char* reason, mbuf* description, const Headers& headers);
    bool followRedirection();
    bool sendModification(Direction direction);
    void finishModification(bool accepted, int status, const std::string& reason);
    void reissueModification();
    bool isIncomingPending() const;
    void end();
    void releaseStack();
    void sendNextDigitByInfo();

    void learnDialog(const sip_msg& message);
    void learnIdentity(const sip_msg& message);
    void applyMedia();
    void postFromStack(std::function<void()> work);

    void onProgress(const sip_msg& message);
    int onOffer(mbuf** description, const sip_msg& message);
    int onAnswer(const sip_msg& message);
    void onEstablished(const sip_msg& message);
    void onInfo(const sip_msg& message);
    void onRefer(const sip_msg& message);
    void onClose(int error, const sip_msg* message);
    void onInfoAnswered(PendingInfo& pending, int error, const sip_msg* message);
    void onReferNotify(const sip_msg& message);
    void onReferClosed(int error, const sip_msg* message);
    void onCancelledBeforeAnswer();
    void announceRemoteChange();

    // The stack's handlers: the session is the argument.
    static void progressHandler(const sip_msg* message, void* session);
    static int offerHandler(mbuf** description, const sip_msg* message, void* session);
    static int answerHandler(const sip_msg* message, void* session);
    static void establishedHandler(const sip_msg* message, void* session);
    static void infoHandler(::sip*, const sip_msg* message, void* session);
    static void referHandler(::sip*, const sip_msg* message, void* session);
    static void closeHandler(int error, const sip_msg* message, void* session);

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
