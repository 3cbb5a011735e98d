// The lines of a recording as they are written, one JSON object each. docs/recording.schema.json describes them. Pure
// functions.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "telephone/access/Message.h"
#include "telephone/access/TrafficRecorder.h"
#include "telephone/protocol/TelephoneState.h"

namespace telephone {

using RecordingTime = std::chrono::system_clock::time_point;

// The members by which a line is recognised, beside the kinds of replies and "event".
inline constexpr char const* kRecordingMember = "recording";
inline constexpr char const* kRequestMember = "request";
inline constexpr char const* kCommandMember = "command";
inline constexpr char const* kEndMember = "end";

std::string recordingHeader(TelephoneState const& state);
std::string recordingLine(RecordingTime time, SessionInput const& input);
std::string recordingLine(RecordingTime time, std::string_view session, Message const& reply);
std::string recordingEnd(RecordingTime time);

}  // namespace telephone
