// The telephone's call control: every call, from the request to the wire and from the wire to the event. Made by the
// composition root after the event loop and the lines, destroyed before them.
//
// Each subject is a class that owns its state; the engine owns the subjects, starts and ends them together, and hands
// them what calls and the user agent report. A subject knows only those below it:
//
//     Pickups  ->  OutgoingCalls  ->  CallBacks   IncomingCalls -> CallForwarding   JoinedCalls   DialogPublisher
//                       |                 |             |                |               |               |
//                  EstablishedCalls <-----|-------------+----------------|---------------+               |
//                       |                 |                              |                               |
//                    CallList  <----------+------------------------------+-------------------------------+
//                       |
//                     Call  (CallAudio, CallEvents)        Registrations   MessageWaiting   ServerLink
//
//     CallList          the calls, their ids, taps and mute; ended calls until the running callback has returned
//     EstablishedCalls  hold, retrieve, alternate, digits; the order in which calls were held
//     OutgoingCalls     from the destination to the INVITE
//     IncomingCalls     ring, answer, refuse, deflect; no-reply timers; forwarding by the rules of CallForwarding
//     JoinedCalls       transfer, conference, Replaces, Join; the pairs of calls in an attended transfer
//     Pickups           taking over calls of other telephones; the searches for them
//     CallBacks         the parties that are waited for; the calls for which a call-back can be set
//     DialogPublisher   the watchers of this telephone's lines
//
// The phone lock is the event loop's recursive lock. Each public operation takes it, may be called from any thread and
// never waits for the network: the far end's answer comes as an event. std::lock_guard<CallEngine> brackets several
// operations. An operation that is refused changes nothing, and no event follows. Observers are called under the lock;
// events are handed to `post` under it and delivered by others without it.
//
// Two seams are implemented above: LineDirectory (lines, accounts, places for calls) and CallPolicy (forwarding,
// do-not-disturb). A call is named by its id alone, which is unique in the telephone.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "telephone/calls/Availability.h"
#include "telephone/calls/CallBacks.h"
#include "telephone/calls/CallHost.h"
#include "telephone/calls/CallList.h"
#include "telephone/calls/CallObservers.h"
#include "telephone/calls/CallPolicy.h"
#include "telephone/calls/DialogPublisher.h"
#include "telephone/calls/EngineConfiguration.h"
#include "telephone/calls/EstablishedCalls.h"
#include "telephone/calls/EventPoster.h"
#include "telephone/calls/IncomingCalls.h"
#include "telephone/calls/JoinedCalls.h"
#include "telephone/calls/LineDirectory.h"
#include "telephone/calls/MessageWaiting.h"
#include "telephone/calls/OutgoingCalls.h"
#include "telephone/calls/PhoneCalls.h"
#include "telephone/calls/Pickups.h"
#include "telephone/calls/Registrations.h"
#include "telephone/calls/ServerLink.h"
#include "telephone/sip/EventLoop.h"
#include "telephone/sip/UserAgent.h"

namespace telephone {

class CallEngine final : public PhoneCalls, private CallHost, private sip::UserAgentObserver
{
public:
    // Binds the SIP ports; throws std::runtime_error saying which could not be bound and why.
    CallEngine(sip::EventLoop& loop, EngineConfiguration configuration, LineDirectory& lines, CallPolicy& policy,
               EventPoster post);
    ~CallEngine() override;  // as deactivate()

    // Registers the lines and takes calls. Before and after, calls are refused both ways.
    void activate();
    // Ends all calls, call-backs and subscriptions, and unregisters the lines.
    void deactivate();
    // Out of service, no call begins and the lines are unregistered; calls in progress go on.
    void setServiceState(sfiServiceState state);
    sfiServiceState serviceState() const { return availability_.serviceState; }
    void addObserver(CallObserver& observer);
    void removeObserver(CallObserver& observer);

    // For subscriptions beside the calls (busy-lamp fields): the telephone's user agent, and the account of a line.
    sip::UserAgent& userAgent() { return agent_; }
    std::optional<sip::Account> accountOfLine(int lineNumber) const;

    // --- the subjects
    CallList& list() { return list_; }
    EstablishedCalls& established() { return established_; }
    OutgoingCalls& outgoing() { return outgoing_; }
    IncomingCalls& incoming() { return incoming_; }
    JoinedCalls& joined() { return joined_; }
    Pickups& pickups() { return pickups_; }
    CallBacks& callBacks() { return callBacks_; }
    MessageWaiting& messages() { return messages_; }
    ServerLink& server() { return server_; }
    Registrations& registrations() { return registrations_; }

    // --- PhoneCalls
    void lock() override { loop_.lock(); }
    void unlock() override { loop_.unlock(); }
    std::vector<CallSnapshot> calls() const override { return list_.calls(); }
    std::optional<CallSnapshot> call(int callID) const override { return list_.call(callID); }
    std::optional<CallSnapshot> activeCall() const override { return list_.activeCall(); }
    int freeCallID() override { return list_.freeCallID(); }
    Outcome<> make(LineAddress const& place, int callID, std::string const& destination, CallPurpose purpose) override;
    Outcome<> answer(int callID) override { return incoming_.answer(callID); }
    Outcome<> clear(int callID) override { return list_.clear(callID); }
    Outcome<> hold(int callID) override;
    Outcome<> retrieve(int callID) override { return established_.retrieve(callID); }
    Outcome<> deflect(int callID, std::string const& destination) override
    {
        return incoming_.deflect(callID, destination);
    }
    Outcome<> blindTransfer(int callID, std::string const& destination) override
    {
        return joined_.blindTransfer(callID, destination);
    }
    Outcome<> pickup(LineAddress const& place, int callID, std::string const& number) override;
    Outcome<> takeOver(LineAddress const& place, int callID, PickupTarget const& target) override;
    void featureFailed(int recordLine, sfiFeature feature, sfiFeatureFailure failure) override;

private:
    void registrationChanged(LineAccount const& line, bool registered);

    // --- CallHost
    void callChanged(Call& call, CallSnapshot const& before) override;
    void callEnded(Call& call) override { joined_.callEnded(call); }
    bool callBackPossible(Call const& call) const override { return callBacks_.isPossible(call); }
    void infoReceived(Call& call, sip::Content const& content) override;
    void transferRequested(Call& call, std::unique_ptr<sip::Transfer> transfer) override
    {
        joined_.transferRequested(call, std::move(transfer));
    }
    void transferEnded(Call& call, int status) override { joined_.transferEnded(call, status); }

    // --- sip::UserAgentObserver
    bool knowsUser(std::string const& user) override { return lines_.lineOfUser(user).has_value(); }
    std::optional<sip::GuardedUser> guardedUser(std::string const& user) override;
    void onIncomingCall(std::unique_ptr<sip::Session> session) override;
    void onTransferRequested(std::unique_ptr<sip::Transfer> transfer) override;
    void onSubscribe(std::unique_ptr<sip::Notifier> notifier) override;
    void onUnsolicitedNotify(sip::NameAddr const& from, sip::NameAddr const& to,
                             sip::Notification const& notification) override;
    void onRequest(std::unique_ptr<sip::IncomingRequest>& request) override;

    sip::EventLoop& loop_;
    EngineConfiguration const configuration_;
    LineDirectory& lines_;
    EventPoster const post_;
    Availability availability_;
    CallObservers observers_;
    sip::UserAgent agent_;
    Call::Surroundings const surroundings_;
    CallList list_;
    EstablishedCalls established_;
    CallBacks callBacks_;
    OutgoingCalls outgoing_;
    IncomingCalls incoming_;
    JoinedCalls joined_;
    Pickups pickups_;
    MessageWaiting messages_;
    Registrations registrations_;
    DialogPublisher publisher_;
    ServerLink server_;
};

}  // namespace telephone
