// One call of the telephone: what it is to the applications (number, line, state, events) around what it is on the wire
// (a session, which a transfer or a pick-up may exchange for another one). The engine owns it. Everything is called
// with the phone lock held.
//
// What changes is written into the snapshot, told to the engine, and then posted as event, in this order.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "telephone/calls/CallAudio.h"
#include "telephone/calls/CallHost.h"
#include "telephone/calls/CallSnapshot.h"
#include "telephone/calls/SipMeaning.h"
#include "telephone/sip/Session.h"
#include "telephone/sip/Timer.h"
#include "telephone/sip/UserAgent.h"

namespace telephone {

// Who diverted a call here, for its events.
struct DivertedBy
{
    std::string uri;
    std::string name;
    sfiForwardReason reason = sfiForwardReasonNone;
};

class Call final : private sip::SessionObserver
{
public:
    // How a change of the media ended.
    using Done = std::function<void(bool)>;

    // How long a transfer may take, its target's ringing included.
    static constexpr std::chrono::seconds kTransferTime{180};

    Call(CallHost& host, int callID, LineAddress line, bool incoming, std::unique_ptr<sip::AudioSource> voice);
    ~Call() override;

    int id() const { return now_.callID; }
    CallSnapshot const& snapshot() const { return now_; }
    LineAddress const& line() const { return now_.line; }
    sfiCallState state() const { return now_.state; }
    bool isEstablished() const { return established_ && !now_.ended(); }
    sip::Session const* session() const { return session_.get(); }
    CallAudio& audio() { return audio_; }

    // --- outgoing
    // Sends the INVITE. False, with the reason, when it could not be sent.
    bool dial(sip::UserAgent& agent, sip::CallRequest const& request, std::string& whyNot);
    // Tells the applications that the call is there, whether it has been sent or waits for another call's hold.
    void announceDialling(std::string const& target);
    void setConsultation() { now_.consultation = true; }
    // The call takes over another telephone's one: how that goes is told as that feature.
    void setPickup(sfiFeature feature) { pickup_ = feature; }
    // The dialog that the call takes the place of, and the parties to show for it.
    void setReplaces(sfiReplacesDisplay const& replaces) { replaces_ = replaces; }
    std::string const& target() const { return target_; }

    // --- incoming
    void offer(std::unique_ptr<sip::Session> session, sfiCallType type);
    bool ring();
    bool answer();
    bool refuse(StatusLine const& line);
    bool redirect(std::string const& contact, sfiForwardReason reason);

    // --- any
    void clear(CSTAEventCause cause);
    void end(Ending const& ending);
    // False: nothing was begun. Else done is called once, at once where there is nothing to do.
    bool hold(sfiFeature feature, Done done = {});
    bool retrieve(sfiFeature feature, Done done = {});
    bool renewMedia();
    void setHeldByHand(bool manual) { now_.heldByHand = manual; }
    void setMuted(bool muted);
    bool sendDigits(std::string const& digits);
    bool sendInfo(sip::Content const& content, sip::ResponseHandler done);

    // Membership in a conference; the engine joins the audio.
    void enterConference();
    void leaveConference();

    // --- transfer
    bool transfer(sfiFeature feature, std::string const& target, std::optional<sip::Replaces> const& replaces);
    // The other call of an attended transfer: shows itself as being transferred.
    void beginTransferring();
    // The transfer failed: the call is what it was.
    void endTransferring();
    // Takes the place of the present session once it is established. transfer: tell it how that goes; may be null.
    bool replaceWithCall(sip::UserAgent& agent, sip::CallRequest const& request,
                         std::unique_ptr<sip::Transfer> transfer);
    bool replaceWith(std::unique_ptr<sip::Session> session);

    void postFeatureSuccess(sfiFeature feature);
    void postFeatureFailed(sfiFeature feature, sfiFeatureFailure failure);

private:
    enum class MediaChange : int
    {
        kHold,
        kRetrieve,
        kRenew,
    };
    struct PendingChange
    {
        MediaChange change;
        sfiFeature feature;
        std::vector<Done> done;
    };

    void onProgress(sip::Session& session, sip::Response const& response, bool earlyMedia) override;
    void onRedirected(sip::Session& session, std::string const& contact, sip::Response const& response) override;
    void onEstablished(sip::Session& session) override;
    void onRemoteHold(sip::Session& session, bool held, sip::Direction agreed) override;
    void onModified(sip::Session& session, bool accepted, int status, std::string const& reason) override;
    void onRemoteIdentity(sip::Session& session, sip::NameAddr const& identity) override;
    void onInfo(sip::Session& session, sip::Content const& content) override;
    void onDigit(sip::Session& session, char digit) override;
    void onTransferRequested(sip::Session& session, std::unique_ptr<sip::Transfer> transfer) override;
    void onTransferProgress(sip::Session& session, int status, std::string const& reason, bool ended) override;
    void onClosed(sip::Session& session, sip::Closing const& closing) override;

    // Applies a change to the snapshot and tells the engine.
    template <class Change>
    void update(Change change);
    void enter(sfiCallState state, sfiReason reason = sfiReasonNormal);  // with its event
    sfiCallState settledState() const;
    bool beginChange(MediaChange change, sip::Direction direction, sfiFeature feature, Done done);
    void awaitChange();
    void changeAccepted(PendingChange const& change);
    void changeRefused(PendingChange const& change, int status);
    void failPendingChanges();
    void finishTransfer(int status);
    void exchangeSessions();
    void setRemote(sip::NameAddr const& party);
    void updateVoice();
    void dropSession();
    void postStateChange();
    void postRemoteDetails(bool leftConference);
    void postIncoming(sfiCallType type);
    void postMissed(sfiReason reason);
    void postPickedUp();
    sfiSendOptions sendOptions() const;

    CallHost& host_;
    CallSnapshot now_;
    std::unique_ptr<sip::Session> session_;
    std::unique_ptr<sip::Session> replacement_;
    std::unique_ptr<sip::Transfer> transferHere_;  // asks for the replacement
    CallAudio audio_;
    sip::Timer transferTimer_;
    sip::Timer changeTimer_;
    std::deque<PendingChange> changes_;
    std::string target_;
    DivertedBy divertedBy_;
    sfiReplacesDisplay replaces_{};
    sfiResourcePriority priority_ = sfiResourcePriorityNone;
    std::optional<sfiFeature> pickup_;
    sfiFeature transferFeature_ = sfiFeatureBlindTransfer;
    bool referring_ = false;  // a REFER of ours is under way
    bool established_ = false;
    bool answering_ = false;
    bool diverted_ = false;  // goes to somebody else than was called
    bool heldHere_ = false;  // agreed with the far end
    bool muted_ = false;
    bool over_ = false;
};

template <class Change>
void Call::update(Change change)
{
    const CallSnapshot before = now_;
    change(now_);
    updateVoice();
    if (!(now_ == before)) {
        host_.callChanged(*this, before);
    }
}

// The address that events and displays carry.
std::string displayUri(sip::NameAddr const& party);

}  // namespace telephone
