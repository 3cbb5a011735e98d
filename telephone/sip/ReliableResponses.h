// The responses of one incoming call before its answer that the caller acknowledges with PRACK (RFC 3262). Each is
// repeated until its PRACK comes, and the next one waits for that. Owned by its session; used under the lock.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <string>

#include "telephone/base/Refusal.h"
#include "telephone/sip/Message.h"
#include "telephone/sip/Timer.h"

namespace telephone::sip {

class EventLoop;

// The name of the extension in Supported and Require.
constexpr char const* kReliableExtension = "100rel";

struct EarlyResponse
{
    int status = 0;
    std::string reason;
    Headers headers;
    std::string description;  // SDP; empty: none
};

class ReliableResponses
{
public:
    struct Actions
    {
        std::function<Outcome<>(EarlyResponse const&)> send;
        std::function<void()> unacknowledged;  // no PRACK has come for 32 seconds (64 * T1)
    };

    ReliableResponses(EventLoop& loop, Actions actions);

    // Sends a response, or keeps it until those before it are acknowledged.
    [[nodiscard]] Outcome<> send(EarlyResponse response);
    // Whether that RAck header acknowledges the response under way, which is then repeated no more. inviteNumber: CSeq
    // of the INVITE.
    [[nodiscard]] bool acknowledge(std::string const& rack, std::uint32_t inviteNumber);
    // After acknowledge(), and the answer to PRACK.
    void sendNext();
    // Whether a description is on its way that the caller has not acknowledged.
    bool isDescribing() const { return waiting_ && !responses_.front().description.empty(); }
    // Repeats and sends nothing more.
    void stop();

private:
    [[nodiscard]] Outcome<> begin();
    void repeat();

    Actions actions_;
    std::deque<EarlyResponse> responses_;  // the first one is under way
    bool waiting_ = false;                 // for the PRACK of the first
    std::uint32_t number_;                 // RSeq of the one under way
    std::chrono::milliseconds pause_{0};
    std::chrono::milliseconds waited_{0};
    Timer timer_;
};

}  // namespace telephone::sip
