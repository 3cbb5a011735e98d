// A telephone of one test: a call engine with two plain lines, settable rules and recorded events. All telephones of
// the process share one event loop.
#pragma once

#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "EventRecorder.h"
#include "TestLines.h"
#include "TestTime.h"
#include "telephone/calls/CallEngine.h"
#include "telephone/sip/EventLoop.h"

namespace telephone::test {

// Runs from the first use to the end of all tests.
sip::EventLoop& eventLoop();

class EnginePhone final : private CallPolicy
{
public:
    struct Options
    {
        std::vector<std::string> lines{"4711"};
        std::string registrar;  // host:port; empty: peer to peer
        std::string password = "secret";
        std::uint32_t expires = 300;  // seconds
        std::chrono::milliseconds answerTimeout{1000};
        sip::Transport transport = sip::Transport::kUdp;
        bool shared = false;  // the lines, with other telephones
        bool isPrivate = false;
        EngineConfiguration engine;

        Options()
        {
            engine.audio.source = "silence";
            engine.messageWaiting = false;
        }
    };

    // A telephone of one line, peer to peer.
    static Options optionsOf(std::string const& line);

    explicit EnginePhone(Options options);
    ~EnginePhone() override;

    CallEngine& engine() { return *engine_; }
    EventRecorder& events() { return events_; }
    // Address at which a line can be called directly.
    std::string uri(std::string const& line = {}) const;
    // Whether a call is offered or ringing here.
    bool alerts() const;
    // Checks that the next events are exactly these.
    void expect(std::vector<std::string> const& lines);

    std::map<sfiForwardingType, ForwardingRule> rules;  // under the phone lock
    std::atomic<int> rings{0};
    std::atomic<bool> forwardsAtServer{false};
    std::atomic<bool> doNotDisturbOn{false};

private:
    bool forwardsHere() const override { return !forwardsAtServer; }
    ForwardingRule forwarding(int lineNumber, sfiForwardingType type) const override;
    int ringsBeforeNoReply(int) const override { return rings; }
    bool doNotDisturb(int) const override { return doNotDisturbOn; }

    Options options_;
    TestLines lines_;
    EventRecorder events_;
    std::unique_ptr<CallEngine> engine_;
};

// The kind of a refusal; nothing for a success.
inline std::optional<RefusalKind> kindOf(Outcome<> const& outcome)
{
    return outcome ? std::nullopt : std::optional(outcome.error().kind);
}

}  // namespace telephone::test
