// Reads the state of the telephone from its parts. Telephone owns the one reader; any thread calls it. It takes the
// phone lock, so that calls and lines are of one moment; settings, lamps, plugs and recordings have locks of their own,
// and may be newer than the event number by an event that is still to come.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "telephone/protocol/TelephoneState.h"

namespace telephone {

class CallEngine;
class CallRecorder;
class Lines;
class PhysicalInterface;
class Settings;
class SettingsCallPolicy;
class TelephoneLine;
struct CallSnapshot;

class StateReader
{
public:
    // They outlive the reader.
    struct Parts
    {
        CallEngine& engine;
        Lines& lines;
        SettingsCallPolicy const& policy;
        CallRecorder const& recorder;
        PhysicalInterface& physical;
        Settings const& settings;
    };
    // What only the whole telephone knows.
    struct Whole
    {
        std::string start;   // id of this start
        std::string domain;  // of the telephone's own numbers
        std::string store;   // file of the settings; empty: in memory
        std::function<std::uint64_t()> latestEvent;
        std::function<bool()> isReady;
    };

    StateReader(Parts const& parts, Whole whole);

    [[nodiscard]] TelephoneState read() const;

private:
    // --- lock held
    std::vector<LineStatus> lines() const;
    LineStatus statusOf(TelephoneLine& line) const;
    std::vector<ForwardingState> forwardingOf(int lineNumber) const;
    std::optional<MessageCountState> messagesOf(TelephoneLine const& line) const;
    std::string registrationOf(TelephoneLine const& line) const;
    std::vector<CallStatus> calls() const;
    CallStatus statusOf(CallSnapshot const& call) const;
    // The other parties in the conference of a call.
    std::vector<PartyState> conferenceOf(CallSnapshot const& call) const;

    std::vector<KeyState> keys() const;

    Parts const parts_;
    Whole const whole_;
};

}  // namespace telephone
