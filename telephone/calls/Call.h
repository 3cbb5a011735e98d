// One call of the telephone: for the applications a number, a line, a state and events; on the wire a session, which a
// transfer or a pick-up may exchange for another one. Owned by CallList. Called with the phone lock held.
//
// A change is written into the snapshot, reported to the host, and then posted as an event, in this order.
#pragma once

#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "telephone/base/Refusal.h"
#include "telephone/calls/CallAudio.h"
#include "telephone/calls/CallEvents.h"
#include "telephone/calls/CallHost.h"
#include "telephone/calls/CallSnapshot.h"
#include "telephone/calls/EventPoster.h"
#include "telephone/calls/SipMeaning.h"
#include "telephone/sip/Session.h"
#include "telephone/sip/Timer.h"
#include "telephone/sip/UserAgent.h"
#include "telephone/time/SteadyClock.h"

namespace telephone {

class Call final : private sip::SessionObserver
{
public:
    // Called at the end of a change of the media: whether the far end accepted it.
    using Done = std::function<void(bool)>;

    // The longest time for a transfer, including the ringing of its target.
    static constexpr std::chrono::seconds kTransferTime{180};

    // Shared by all calls of a telephone; outlives them.
    struct Surroundings
    {
        sip::EventLoop& loop;
        CallHost& host;
        EventPoster const& post;
        std::chrono::milliseconds reinviteTimeout;  // for the far end to answer a re-INVITE
    };

    Call(Surroundings const& surroundings, int callID, LineAddress line, bool incoming,
         std::unique_ptr<sip::AudioSource> voice);
    ~Call() override;

    int id() const { return now_.callID; }
    CallSnapshot const& snapshot() const { return now_; }
    LineAddress const& line() const { return now_.line; }
    sfiCallState state() const { return now_.state; }
    bool isEstablished() const { return established_ && !now_.ended(); }
    sip::Session const* session() const { return session_.get(); }
    CallAudio& audio() { return audio_; }

    // --- outgoing
    // Sends the INVITE. kUnavailable: it could not be sent.
    [[nodiscard]] Outcome<> dial(sip::UserAgent& agent, sip::CallRequest const& request);
    // Reports the call to the applications; its INVITE has been sent or waits for the hold of another call.
    void announceDialling(std::string const& target);
    void setConsultation() { now_.consultation = true; }
    // The call takes over another telephone's call; success and failure are reported as that feature.
    void setPickup(sfiFeature feature) { pickup_ = feature; }
    // The dialog that the call replaces, and the parties to show for it.
    void setReplaces(sfiReplacesDisplay const& replaces) { events_.setReplaces(replaces); }
    std::string const& target() const { return target_; }

    // --- incoming
    void offer(std::unique_ptr<sip::Session> session, sfiCallType type);
    [[nodiscard]] Outcome<> ring();
    [[nodiscard]] Outcome<> answer();
    [[nodiscard]] Outcome<> reject(StatusLine const& line);
    [[nodiscard]] Outcome<> redirect(std::string const& contact, sfiForwardReason reason);

    // --- any
    void clear(CSTAEventCause cause);
    void end(Ending const& ending);
    // `done` is called once, unless the change is refused or the call is on hold already.
    [[nodiscard]] Outcome<> hold(sfiFeature feature, Done done = {});
    [[nodiscard]] Outcome<> retrieve(sfiFeature feature, Done done = {});
    // Negotiates the media again, with or without encryption. kNotSupported: the configuration does not permit it.
    [[nodiscard]] Outcome<> changeSecurity(bool secure);
    void setHeldByHand(bool manual) { now_.heldByHand = manual; }
    void setMuted(bool muted);
    [[nodiscard]] Outcome<> sendDigits(std::string const& digits);

    // Membership in a conference; its maker joins the audio.
    void enterConference();
    void leaveConference();

    // --- transfer
    [[nodiscard]] Outcome<> transfer(sfiFeature feature, std::string const& target,
                                     std::optional<sip::Replaces> const& replaces);
    // The other call of an attended transfer: shows itself as being transferred.
    void beginTransferring();
    // The transfer failed: the call returns to its state before.
    void endTransferring();
    // Makes a call that replaces the present session once it is established, and reports progress to `transfer`.
    [[nodiscard]] Outcome<> replaceWithCall(sip::UserAgent& agent, sip::CallRequest const& request,
                                            std::unique_ptr<sip::Transfer> transfer);
    [[nodiscard]] Outcome<> replaceWith(std::unique_ptr<sip::Session> session);

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
        Done done;
    };

    void onProgress(sip::Session& session, sip::Response const& response, bool earlyMedia) override;
    void onRedirected(sip::Session& session, std::string const& contact, sip::Response const& response) override;
    void onEstablished(sip::Session& session) override;
    void onRemoteHold(sip::Session& session, bool held, sip::Direction agreed) override;
    void onModified(sip::Session& session, bool accepted, int status, std::string const& reason) override;
    void onRemoteIdentity(sip::Session& session, sip::NameAddr const& identity) override;
    void onPrecedence(sip::Session& session, std::string const& resourcePriority) override;
    void onInfo(sip::Session& session, sip::Content const& content) override;
    void onDigit(sip::Session& session, char digit) override;
    void onTransferRequested(sip::Session& session, std::unique_ptr<sip::Transfer> transfer) override;
    void onTransferProgress(sip::Session& session, int status, std::string const& reason, bool ended) override;
    void onClosed(sip::Session& session, sip::Closing const& closing) override;

    // Applies a change to the snapshot and reports it to the host.
    template <class Change>
    void update(Change change);
    void enter(sfiCallState state, sfiReason reason = sfiReasonNormal);  // with its event
    sfiCallState settledState() const;
    tl::unexpected<Refusal> cannot(char const* operation, char const* why) const;
    Outcome<> beginChange(MediaChange change, sip::Direction direction, sfiFeature feature, Done done,
                          std::optional<bool> encrypted = std::nullopt);
    bool noteSecurity();
    void followSecurity();
    void noteHold(bool held, sfiFeature feature);
    void awaitChange();
    void changeAccepted(PendingChange const& change);
    void settle(bool held);
    void changeRefused(PendingChange const& change, int status);
    static void finish(PendingChange const& change, bool accepted);
    void failPendingChanges();
    void finishTransfer(int status);
    void exchangeSessions();
    void replacementClosed(sip::Closing const& closing);
    void setRemote(sip::NameAddr const& party);
    void updateVoice();
    void dropSession();
    void postStateChange();
    sfiSendOptions sendOptions() const;

    CallHost& host_;
    CallEvents events_;
    std::chrono::milliseconds const reinviteTimeout_;
    CallSnapshot now_;
    std::unique_ptr<sip::Session> session_;
    std::unique_ptr<sip::Session> replacement_;
    std::unique_ptr<sip::Transfer> transferHere_;  // the far end's request for the replacement
    CallAudio audio_;
    sip::Timer transferTimer_;
    sip::Timer changeTimer_;
    std::deque<PendingChange> changes_;
    std::string target_;
    std::optional<sfiFeature> pickup_;
    sfiFeature transferFeature_ = sfiFeatureBlindTransfer;
    bool referring_ = false;  // a REFER of ours is under way
    bool established_ = false;
    bool answering_ = false;
    bool diverted_ = false;  // reaches another party than was called
    bool heldHere_ = false;  // agreed with the far end
    bool muted_ = false;
    bool over_ = false;
};

template <class Change>
void Call::update(Change change)
{
    CallSnapshot const before = now_;
    change(now_);
    if (now_.state != before.state) {
        now_.since = wallTime();
    }
    updateVoice();
    if (!(now_ == before)) {
        host_.callChanged(*this, before);
    }
}

}  // namespace telephone
