// One open stream of server-sent events. Its connection's thread owns and runs it; events and the end of the server
// wake it.
#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "telephone/access/Session.h"
#include "telephone/display/DisplayOptions.h"
#include "telephone/framework/WakeUp.h"
#include "telephone/http/StepQueue.h"

namespace httplib {
class DataSink;
}

namespace telephone {

// What all streams share.
struct StreamLimits
{
    int const most;                           // streams at once
    std::chrono::milliseconds const silence;  // the longest time without a line
    std::atomic<int> open{0};
    WakeUp end{};  // signalled when the server ends
};

class EventStream
{
public:
    // Refused while the most streams are open.
    [[nodiscard]] static Outcome<std::shared_ptr<EventStream>> open(std::string name, SessionServices const& services,
                                                                    StreamLimits& limits);
    ~EventStream() = default;
    EventStream(EventStream const&) = delete;
    EventStream& operator=(EventStream const&) = delete;

    // Selects the events as the command `events` does. A stream that resumes begins with them, any other with hello.
    // Refused as the command.
    [[nodiscard]] Outcome<> select(Words const& events, bool resumes);

    // Whether each event also says what happened in the words of the console. Before the first write.
    void addWords(bool wanted);

    // Whether the steps of the trace that belong to calls come, too. Before the first write.
    void addSteps(bool wanted);

    // Waits for events, at most a second, and writes those that came. False: the reader has gone, or has not read for
    // too long.
    bool write(httplib::DataSink& sink);

private:
    // Its place among the open streams.
    struct Place
    {
        StreamLimits& limits;
        ~Place() { --limits.open; }
    };

    EventStream(std::string name, SessionServices const& services, StreamLimits& limits);

    [[nodiscard]] bool waitForEvents() const;  // false: the server ends
    [[nodiscard]] std::string linesOf(Message const& message) const;
    [[nodiscard]] std::string dataOf(Message const& message) const;

    Place const place_;
    WakeUp came_;
    Session session_;
    std::string beginning_;  // not yet written
    bool hasMore_ = false;
    std::optional<DisplayOptions> words_;  // nothing: none are wanted
    std::unique_ptr<StepQueue> steps_;     // null: none are wanted
    std::chrono::steady_clock::time_point written_ = std::chrono::steady_clock::now();
};

}  // namespace telephone
