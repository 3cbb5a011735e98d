// Writes one recording to its file, on a queue, so that nobody waits for the disk. TrafficRecording owns it, and
// sessions and the event dispatcher call it, on any thread.
//
// When a line cannot be written, the reason is logged once, and nothing more is written.
#pragma once

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "telephone/base/Refusal.h"
#include "telephone/framework/WorkQueue.h"

namespace telephone {

class EventHistory;

class RecordingWriter
{
public:
    // Makes the file, in place of one of that name. The events after the number will be written. The history outlives
    // the writer. Refused if the file cannot be opened.
    [[nodiscard]] static Outcome<std::shared_ptr<RecordingWriter>>
    open(std::string const& file, EventHistory const& history, std::uint64_t after);

    // The line is made on the queue.
    void write(std::function<std::string()> line);
    // The events up to a number, as far as they have been delivered.
    void writeEvents(std::uint64_t latest);
    // Returns when everything is written: the reason, if something is missing.
    [[nodiscard]] std::optional<Refusal> finish();

private:
    struct CloseFile
    {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    using File = std::unique_ptr<std::FILE, CloseFile>;

    RecordingWriter(std::string name, File file, EventHistory const& history, std::uint64_t after);

    [[nodiscard]] Refusal incomplete(std::string_view reason) const;
    void post(WorkQueue::Work work);
    // --- on the queue
    void put(std::string const& line);
    void putEvents(std::uint64_t latest);
    void fail(std::string_view reason);

    std::string const name_;
    File const file_;
    EventHistory const& history_;
    std::uint64_t written_;           // number of the latest event
    std::optional<Refusal> failure_;  // why nothing is written any more
    std::atomic<bool> isBehind_{false};
    WorkQueue queue_;  // last: its work uses the others
};

}  // namespace telephone
