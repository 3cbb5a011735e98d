// One person or program that uses the telephone: sends requests and commands, receives events. Each console, script,
// application connection and HTTP request has a session, which does everything but the transport.
//
// One thread uses a session; `wake` alone is called on another. Events come in one of two ways: by the request
// Subscribe, as the framework delivers them to every application, numbered for this session alone; or by the command
// `events`, numbered across the telephone, so that none is lost when the application was away. Once `events` was used,
// those of Subscribe are no longer passed on.
#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "telephone/access/ClientSession.h"
#include "telephone/access/EventSubscription.h"
#include "telephone/access/Invariants.h"
#include "telephone/access/Message.h"
#include "telephone/access/TrafficRecorder.h"
#include "telephone/access/Words.h"
#include "telephone/framework/RequestRunner.h"
#include "telephone/time/SteadyClock.h"

namespace telephone {

class Channel;
class ProtocolDescription;
class TelephoneContext;
class TelephoneControls;
struct Command;

// What the sessions of a telephone share. All of it outlives them.
struct SessionServices
{
    TelephoneContext& context;
    RequestRunner& requests;
    EventHistory& history;
    TelephoneControls& telephone;
    ProtocolDescription const& description;
    std::function<void()> end;            // the command quit
    TrafficRecorder* recorder = nullptr;  // null: nothing can be recorded
    // A fault: an application reads no more bytes a second than this; 0: as fast as it does. Null: always 0.
    std::atomic<int> const* readingRate = nullptr;
};

// Makes sessions of a telephone.
SessionFactory sessionsOf(SessionServices services);

class Session : public ClientSession
{
public:
    struct Options
    {
        bool strict = false;   // requests are checked before they reach the service
        bool reasons = false;  // answers are explained
        // Messages are shown with their tags. Nothing: there is no choice here. Whoever writes them honours it.
        std::optional<bool> raw = {};
        // Where relative paths of fixtures start; empty: in the working folder.
        std::string folder = {};
    };

    // The name is unique at every moment; it is the name of the session's channel. `wake` is called on any thread after
    // events came; it must not block. `queuedEvents` limits those of Subscribe.
    Session(std::string name, SessionServices services, std::size_t queuedEvents, std::function<void()> wake);
    ~Session() override;
    Session(Session const&) = delete;
    Session& operator=(Session const&) = delete;

    void handle(std::string_view text, MessageSink const& sink) override;
    // The same for a line that was split into words already.
    void handle(Words const& words, MessageSink const& sink);
    bool takeEvents(std::size_t most, MessageSink const& sink) override;
    [[nodiscard]] std::uint64_t dropped() const override;
    [[nodiscard]] int readingRate() const override;
    [[nodiscard]] std::string const& name() const override { return label_; }

    [[nodiscard]] Options& options() { return options_; }
    [[nodiscard]] SessionServices const& services() const { return services_; }

    // Runs a request on behalf of this session. Its reply is neither shown nor recorded.
    [[nodiscard]] RequestRunner::Reply run(std::string const& request);

    // --- commands
    // Identifies the telephone, as JSON. The name, if given, replaces that of the session in the log; refused if it is
    // longer than 40 bytes.
    [[nodiscard]] Outcome<std::string> hello(std::optional<std::string> const& name);
    void follow(EventSelection selection);
    void unfollow();
    // Moves virtual time; the result of the command follows every event until then. Refused in real time.
    [[nodiscard]] Outcome<> advance(SteadyClock::duration duration);
    // Refused with everything that does not hold (Invariants).
    [[nodiscard]] Outcome<> check();

private:
    using Work = std::function<void(MessageSink const& sink)>;

    [[nodiscard]] bool isRecorded() const;
    // Runs the work, and records the input and the replies that the work passes to its sink.
    void runRecorded(InputKind kind, std::string_view text, MessageSink const& sink, Work const& work);
    void handleRequest(std::string_view text, MessageSink const& sink);
    void runRequest(std::string_view text, MessageSink const& sink);
    // A line that is not a request, or not a correct one.
    void runWords(Words const& words, MessageSink const& sink);
    void sendReasons(std::string_view request, RequestRunner::Reply const& reply, MessageSink const& sink) const;
    // Logs a request with an unknown method, which the service answers like any failure.
    void noteUnknown(std::string_view request) const;
    void wake();

    SessionServices const services_;
    std::function<void()> const wake_;
    std::string label_;
    Options options_;
    std::shared_ptr<Channel> const channel_;
    Invariants invariants_;
    bool usesHistory_ = false;
    bool sendsEventsFirst_ = false;  // before the result of the command under way
    std::optional<EventSubscription> subscription_;
    EventHistory::ListenerId listener_ = 0;
    std::atomic<bool> woken_{false};  // and has not taken events since
};

}  // namespace telephone
