// The telephone at one moment, as plain values, and as the JSON object that "state" answers. States are the words of
// the protocol's enumerations. The telephone fills it in (StateReader); the console's tables and the reasons of
// requests are made from it, too.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace telephone {

struct PartyState
{
    std::string address;  // SIP address or number; empty: not known
    std::string name;     // as the far end claims; may be empty
};

struct ForwardingState
{
    int type = 0;      // a value of ForwardingType
    std::string name;  // its word: "busy, external"
    bool active = false;
    std::string destination;
};

// What the telephone has counted of the audio of a call. Durations in milliseconds.
struct AudioState
{
    std::uint64_t sent = 0;  // packets
    std::uint64_t received = 0;
    std::uint64_t lost = 0;
    std::uint64_t foreign = 0;   // dropped: from another address than the far end's
    std::uint64_t forged = 0;    // dropped: not encrypted with the far end's key
    std::uint64_t replayed = 0;  // dropped: copies of encrypted packets
    double jitter = 0;
    // As the far end reports; nothing: it has not yet.
    std::optional<std::uint64_t> farLost;
    std::optional<double> farJitter;
    std::optional<double> roundTrip;
};

struct CallStatus
{
    int id = 0;
    std::string line;     // the line itself, "4711", also for a call on an appearance
    std::string place;    // as events name it: the line, or its appearance, "4711#2"
    int appearance = 0;   // 0: a line without appearances
    std::string state;    // a word of CallState
    int stateNumber = 0;  // its value
    bool over = false;    // listed only because a call-back can still be set on it
    std::string reason;   // a word of Reason; "normal" until the call has ended otherwise
    bool incoming = false;
    PartyState party;                             // the far end
    std::vector<PartyState> conference;           // the other parties in its conference
    std::chrono::system_clock::time_point since;  // in this state
    std::chrono::system_clock::time_point began;
    bool heldHere = false;  // by this telephone, or the hold is under way
    bool heldByFarEnd = false;
    bool heldForConsultation = false;
    bool inConference = false;
    bool secure = false;
    std::optional<AudioState> audio;  // nothing: the call has no session, or none any more
    bool recording = false;
    bool callBackPossible = false;
};

struct MessageCountState
{
    bool waiting = false;
    bool counted = false;  // false: the mailbox does not say how many
    int unread = 0;
    int read = 0;
};

struct LineStatus
{
    std::string id;
    std::string user;          // of its SIP address, by which requests may name the line too
    int number = 0;            // of the line, or the virtual number of an appearance
    std::string registration;  // "registered", "not registered", "peer to peer"
    std::string state;         // a word: "idle", "ringing", "held", ...
    bool primary = false;
    bool selected = false;  // seized: the next digits dial on it
    bool doNotDisturb = false;
    std::vector<ForwardingState> forwarding;    // rules with a destination or in force
    std::string agent;                          // a word of AgentState
    bool rings = true;                          // false: its calls are silent
    int ringDelay = 0;                          // seconds, as configured
    std::optional<MessageCountState> messages;  // nothing: the mailbox has not reported yet, or there is none
    std::vector<LineStatus> appearances;        // only id, number, state and selected are meant
};

struct LampState
{
    std::string mode = "off";     // "off", "steady", "flashing", "fluttering"
    std::string colour = "none";  // "red", "green", "amber"
};

struct KeyState
{
    int number = 0;  // 0: a lamp outside the keys
    std::string function;
    std::string target;  // line, number or toggle
    std::string label;
    bool showsOnly = false;  // pressing it does nothing
    LampState lamp;
};

struct TelephoneState
{
    std::string start;        // id of this start of the telephone
    std::uint64_t event = 0;  // every event up to this one is contained
    std::chrono::system_clock::time_point time;
    bool keyset = true;   // false: a telephone of one line, which requests need not name
    std::string domain;   // of the telephone's own numbers, "127.0.0.1:5060"
    bool ready = false;   // activated, and the first registrations have been waited for
    std::string service;  // a word of ServiceState
    std::vector<LineStatus> lines;
    std::vector<CallStatus> calls;     // the latest begun last, after those that are over
    std::vector<KeyState> keys;        // with the two lamps outside the keys, last
    bool hookUp = false;               // the handset is lifted
    std::vector<std::string> plugged;  // of "headset", "handset", "line"
    bool muted = false;
    bool locked = false;
    bool barred = false;        // outgoing calls are: the setting dial-restriction-mode is 4
    std::string store;          // file of the settings; empty: in memory
    bool storeWritable = true;  // false: the last write failed
};

// {"start":"k3f9","event":17,"time":"2026-03-01T12:00:00.000Z",...,"lines":[...],"calls":[...],...} on one line;
// docs/state.schema.json describes it. Every member is always there: null means that there is none, or that it is not
// known. Times are in UTC.
std::string stateJson(TelephoneState const& state);

}  // namespace telephone
