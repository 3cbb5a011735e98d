// Writes what crosses between the telephone and those who use it to a file: requests and commands with their replies,
// and events. Sessions pass on what they handle; the commands `record FILE` and `record off` switch it.
// TrafficRecording implements it. Any thread.
#pragma once

#include <string>
#include <string_view>

#include "telephone/access/Message.h"
#include "telephone/base/Refusal.h"

namespace telephone {

enum class InputKind
{
    kRequest,  // in full
    kCommand,  // or a text that is neither
};

// What a session was asked to handle.
struct SessionInput
{
    std::string_view session;  // its name, which replies repeat
    InputKind kind;
    std::string_view text;
    bool strict = false;  // as Session::Options
    bool reasons = false;
};

class TrafficRecorder
{
public:
    virtual ~TrafficRecorder() = default;

    // Begins a file, in place of one of that name. Refused while another one is being written, and if it cannot be
    // opened. A later failure is logged once, and ends the recording.
    [[nodiscard]] virtual Outcome<> start(std::string const& file) = 0;
    // Returns when the file is complete. Refused if there is no recording, or if it has failed.
    [[nodiscard]] virtual Outcome<> stop() = 0;

    [[nodiscard]] virtual bool isOn() const = 0;
    // Before the input is handled.
    virtual void input(SessionInput const& input) = 0;
    // A reply to the latest input of the session.
    virtual void reply(std::string_view session, Message const& message) = 0;
};

}  // namespace telephone
