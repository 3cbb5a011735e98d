// The telephone's call control: every call, from the request to the wire and from the wire to the event. One object,
// made by the composition root after the event loop and the lines, destroyed before them.
//
// The phone lock is the event loop's recursive lock: each operation takes it, and whoever needs several steps as one
// brackets them with std::lock_guard<CallEngine>. Observers are called under it; events are handed to `post` under it
// and delivered by others without it. All operations may be called from any thread and never wait for the network: what
// the far end says comes as event. They answer sfiSuccess (5) when the work has begun, else sfiFailure (0, or the 1 to
// 4 of call-backs) with the reason in the log, and then no event follows.
//
//     make:  Dialling -> Proceeding -> RemoteRinging -> Connected -> ... -> Idle | Busy | Failed
//     in:    incomingCall -> Ringing -> Connected -> ... -> Idle
//
// Two seams are others' to implement: LineDirectory (lines, accounts, places for calls) and CallPolicy (forwarding,
// do-not-disturb). Calls are named by their id alone, which is unique in the telephone.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/sfi/SfiTypes.h"
#include "telephone/calls/AudioTap.h"
#include "telephone/calls/CallObserver.h"
#include "telephone/calls/CallPolicy.h"
#include "telephone/calls/CallSnapshot.h"
#include "telephone/calls/EngineConfiguration.h"
#include "telephone/calls/LineDirectory.h"
#include "telephone/sip/UserAgent.h"

class CommunicationsServiceEventIfc;

namespace telephone {

using Event = std::function<void(CommunicationsServiceEventIfc&)>;
// Queues an event for all subscribers; never blocks and never delivers itself.
using EventPoster = std::function<void(Event)>;

enum class CallPurpose : int
{
    kOrdinary,
    kConsultation,  // to ask back: the call of the line that it interrupts waits for it
    kPickup,        // the destination is a pick-up number
    kCallBack,
};

// A call at another telephone that can be taken over, as the dialog package (RFC 4235) tells of it.
struct PickupTarget
{
    std::string targetURI;   // who is to be called: the far end of the ringing telephone
    sip::Replaces replaces;  // the dialog there
    std::string callingURI;  // for the display
    std::string callingName;
    std::string calledURI;
    std::string calledName;
};

class CallEngine
{
public:
    // Binds the SIP ports; throws std::runtime_error saying which could not be bound and why.
    CallEngine(sip::EventLoop& loop, EngineConfiguration configuration, LineDirectory& lines, CallPolicy& policy,
               EventPoster post);
    ~CallEngine();  // as deactivate()
    CallEngine(CallEngine const&) = delete;
    CallEngine& operator=(CallEngine const&) = delete;

    void lock();
    void unlock();
    bool try_lock();

    // --- life
    // Registers the lines and takes calls. Before and after, calls are refused both ways.
    sfiResult activate();
    // Ends all calls, call-backs and subscriptions, and takes the registrations back.
    sfiResult deactivate();
    bool isActive() const;
    // Out of service: no calls either way; those that live go on.
    void setServiceState(sfiServiceState state);
    sfiServiceState serviceState() const;
    // The lines' accounts have changed: registers the new ones, takes back the old ones.
    void refreshRegistrations();

    // For those who speak SIP beside the calls (busy-lamp fields): the telephone's own user agent, and the account of a
    // line.
    sip::UserAgent& userAgent();
    std::optional<sip::Account> accountOfLine(int lineNumber) const;

    // --- what there is
    void addObserver(CallObserver& observer);
    void removeObserver(CallObserver& observer);
    std::vector<CallSnapshot> calls() const;  // in the order in which they came
    std::optional<CallSnapshot> call(int callID) const;
    // recordLine: the line number, or the virtual line of an appearance.
    std::vector<CallSnapshot> callsOnLine(int recordLine) const;
    std::optional<CallSnapshot> callOnLineInState(int recordLine, sfiCallState state) const;
    // The oldest call that is offered or rings on a line.
    std::optional<CallSnapshot> alertingCallOnLine(int recordLine) const;
    // The call that speaks now; nothing: none does.
    std::optional<CallSnapshot> activeCall() const;
    std::optional<CallSnapshot> lastHeldCall() const;
    bool isRegistered(int lineNumber) const;
    // A call id that is free, for calls that a key makes: 1001 upwards, never 10000 to 10500.
    int freeCallID();

    // --- calls. An active call is put on hold before another one becomes active.
    sfiResult make(int recordLine, int appearance, int callID, std::string const& destination,
                   CallPurpose purpose = CallPurpose::kOrdinary);
    sfiResult ring(int callID);  // 180; a success for a call that rings already
    sfiResult answer(int callID);
    sfiResult refuse(int callID, sfiRefuseCall reason);
    sfiResult deflect(int callID, std::string const& destination);
    // Ends, cancels or refuses, whatever the state asks for.
    sfiResult clear(int callID, CSTAEventCause cause = CSTAEventCauseNormalClearing);
    // feature: which one an event of failure names. A call that is held already is a success.
    sfiResult hold(int callID, sfiFeature feature = sfiFeatureHold);
    sfiResult retrieve(int callID);
    void setHeldByHand(int callID, bool manual);
    // The active call is held and the held one retrieved; of the line first, else of the telephone.
    sfiResult alternate(int recordLine);
    sfiResult blindTransfer(int callID, std::string const& destination);
    // Connects the party of that call with the party of the telephone's other call.
    sfiResult attendedTransfer(int callID);
    // Joins that call and the telephone's other one; both then are in state Conference.
    sfiResult conference(int callID);
    sfiResult sendDigits(int callID, std::string const& digits);
    sfiResult changeSecurity(int callID, bool secure);

    // --- pick-up
    sfiResult pickup(int recordLine, int appearance, int callID, PickupTarget const& target);
    // Asks the number for its dialogs, then as pickup(); without one that rings there: featureFailed and Failed.
    sfiResult directedPickup(int recordLine, int appearance, int callID, std::string const& number);
    sfiResult groupPickup(int recordLine, int appearance, int callID);

    // --- call-back (call completion)
    sfiResult callBackOnNoReply(int callID);
    sfiResult callBackOnBusy(int callID);
    // By call, or for call id 0 by target; an empty target means every one.
    sfiResult cancelCallBacks(int callID, std::string const& target, sfiCancelCallBackType type, bool displayOutcome);

    // --- the telephone
    void setMicrophoneMute(bool mute);
    bool microphoneMute() const;
    // Whether a second call on a busy line is announced as associated with the first.
    void setAssociatedCalls(bool associated);
    // Message waiting of a line by its number or address; the first line's for an empty one.
    std::optional<sfiMessageWaitingRecord> messageWaiting(std::string const& phoneNumber) const;
    // featureFailed for the line's current call; line 0: for the active one.
    void featureFailed(int recordLine, sfiFeature feature, sfiFeatureFailure failure);

    // --- the call server
    // A CSTA body by INFO (application/csta+xml): in the line's dialog with the server where it has a call, else
    // outside of any. The answer comes as b2buaCSTAResponse. An empty line: the first one.
    sfiResult sendCsta(std::string const& lineURI, std::string const& body);
    // Asks the server to begin or end what it does for the line; the outcome comes as serverFeatureStatusChange.
    sfiResult serverFeatures(std::string const& lineURI, bool initialize);
    // Tells the server the state of the line's agent, where there is a server.
    void tellAgentState(std::string const& lineURI, std::string const& state);

    // --- audio
    // The tap hears the call until it is removed or the call is over. False: there is no such call.
    bool addTap(int callID, AudioTap& tap);
    void removeTap(int callID, AudioTap& tap);

    struct Impl;

private:
    std::unique_ptr<Impl> impl_;
};

}  // namespace telephone
