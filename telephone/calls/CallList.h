// The telephone's calls, in the order in which they began: makes them, finds them, and keeps ended ones alive until the
// running callback has returned. Owned by CallEngine.
//
// Operations on snapshots and ids may be called from any thread and take the phone lock; those on Call objects are
// called with the lock held.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "telephone/base/Refusal.h"
#include "telephone/calls/AudioTap.h"
#include "telephone/calls/Call.h"
#include "telephone/calls/CallObservers.h"
#include "telephone/calls/CallSnapshot.h"
#include "telephone/calls/HeardMix.h"
#include "telephone/media/AudioSources.h"
#include "telephone/media/WavWriter.h"
#include "telephone/sip/Timer.h"

namespace telephone {

struct EngineConfiguration;

class CallList
{
public:
    // Throws std::runtime_error when a sound file cannot be read or written.
    CallList(Call::Surroundings const& surroundings, EngineConfiguration const& configuration,
             CallObservers const& observers);
    ~CallList();

    // --- any thread
    std::vector<CallSnapshot> calls() const;
    std::optional<CallSnapshot> call(int callID) const;
    // The call in conversation.
    std::optional<CallSnapshot> activeCall() const;
    // A free call id for a call that no application has numbered: 1001 upwards, without those of Bluetooth devices
    // (10000 to 10500).
    int freeCallID();
    // Ends, cancels or refuses the call, as its state requires.
    [[nodiscard]] Outcome<> clear(int callID, CSTAEventCause cause = CSTAEventCauseNormalClearing);
    // The tap hears the call until it is removed or the call ends. False: there is no such call.
    bool addTap(int callID, AudioTap& tap);
    void removeTap(int callID, AudioTap& tap);
    void setMicrophoneMute(bool mute);
    bool microphoneMute() const;

    // Performs an operation on a call under the phone lock. kNotFound: there is no such call.
    [[nodiscard]] Outcome<> with(int callID, std::function<Outcome<>(Call&)> const& operation) const;

    // --- lock held
    std::vector<std::unique_ptr<Call>> const& all() const { return calls_; }
    Call* find(int callID) const;
    // Connected, and not held by this telephone.
    std::vector<Call*> speaking(Call const* besides = nullptr) const;
    // The calls in the conference, and the others in that of this call.
    std::vector<Call*> inConference() const;
    std::vector<Call*> othersInConference(Call const& call) const;
    // The first call on a line; null: none.
    Call* firstOnLine(int lineNumber) const;
    bool isFull() const { return calls_.size() >= maximum_; }
    std::size_t maximum() const { return maximum_; }
    // Makes a call that is not in the list yet; its maker adds it once it has begun.
    std::unique_ptr<Call> make(int callID, LineAddress const& line, bool incoming) const;
    Call& add(std::unique_ptr<Call> call);
    // Takes an ended call out of the list.
    void remove(Call const& call);
    void endAll();

private:
    Call::Surroundings const& surroundings_;
    CallObservers const& observers_;
    std::size_t const maximum_;
    AudioSources sources_;
    std::unique_ptr<WavWriter> heardFile_;  // null: what is heard is not written
    HeardMix heard_;
    std::vector<std::unique_ptr<Call>> calls_;
    std::vector<std::unique_ptr<Call>> ended_;  // until the running callback has returned
    sip::Timer burial_;
    sip::Timer quiet_;  // since the last call ended
    int lastCallID_;
    bool muted_ = false;
};

// The refusal of an operation on a call that does not exist.
tl::unexpected<Refusal> noSuchCall(int callID);

}  // namespace telephone
