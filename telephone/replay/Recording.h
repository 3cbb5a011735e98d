// A recording of what crossed between a telephone and its applications, as docs/replay.md describes the file: each
// request and command with its replies, and each event. Plain values.
#pragma once

#include <chrono>
#include <cstdint>
#include <istream>
#include <string>
#include <variant>
#include <vector>

#include "telephone/access/Message.h"
#include "telephone/access/TrafficRecorder.h"
#include "telephone/base/Refusal.h"

namespace telephone {

// Of the form of the file; higher when what reads it may have to change.
constexpr int kRecordingVersion = 1;

struct RecordedReply
{
    MessageKind kind;  // answer, reason, finished, result or error
    std::string text;
};

struct RecordedInput
{
    std::string session = {};
    InputKind kind = InputKind::kRequest;
    std::string text = {};
    bool strict = false;  // as Session::Options
    bool reasons = false;
    std::vector<RecordedReply> replies = {};
};

struct RecordedEvent
{
    std::uint64_t number = 0;
    std::string text;
};

struct RecordedEntry
{
    int line = 0;  // of the file
    std::chrono::system_clock::time_point time;
    std::variant<RecordedInput, RecordedEvent> what;
};

struct Recording
{
    std::string name;  // of the file
    std::chrono::system_clock::time_point begin;
    std::chrono::system_clock::time_point end;  // of the last line, if the file does not say
    std::string state;                          // of the telephone at the beginning, as JSON
    std::string start;                          // id of its start
    std::string domain;                         // of its own numbers; empty: not known
    bool ready = true;                          // false: its start is in the recording
    std::vector<RecordedEntry> entries;
};

// Reads a recording. Refused for the first line that is wrong: "tour.recording:3: ...".
[[nodiscard]] Outcome<Recording> readRecording(std::istream& file, std::string const& name);

}  // namespace telephone
