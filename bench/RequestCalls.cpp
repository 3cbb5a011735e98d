// Calls set up and cleared by text request, as fast as the telephone makes them:
//   bench_calls SOCKET DESTINATION LINES CALLS
// Each of the lines 1 to LINES carries one call at a time; it is cleared as soon as it is answered, and the next one is
// made as soon as it is over. Prints one JSON object: calls per second, and the number of calls that were not answered.
#include <chrono>
#include <cstdio>
#include <string>

#include "bench/peers/ApplicationPeer.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::string_view kConnected = "6";
constexpr std::string_view kOver[] = {"0", "13", "14"};  // idle, busy, failed

std::string element(char const* tag, std::string_view value)
{
    return "<" + std::string(tag) + ">" + std::string(value) + "</" + tag + ">";
}

class Caller
{
public:
    Caller(std::string const& socket, std::string destination, int calls)
        : peer_(socket)
        , destination_(std::move(destination))
        , calls_(calls)
    {
        peer_.request("<Method>Subscribe</Method>");
    }

    void run(int lines)
    {
        for (int line = 1; line <= lines; ++line) {
            make(std::to_string(line));
        }
        while (over_ < calls_) {
            take(peer_.next());
        }
    }
    int answered() const { return answered_; }

private:
    // A call's identifier is the number of its line.
    void make(std::string_view line)
    {
        if (made_ == calls_) {
            return;
        }
        ++made_;
        peer_.send("<Method>OutgoingCallMakeRequest</Method>" + element("Line", line) + element("CallID", line) +
                   element("Destination", destination_));
    }

    void take(std::string_view message)
    {
        if (message.find("CallStateChangeEvent") == std::string_view::npos) {
            return;
        }
        std::string const line(elementOf(message, "CallID"));
        auto const state = elementOf(message, "CallState");
        if (state == kConnected) {
            ++answered_;
            peer_.send("<Method>CallClearRequest</Method>" + element("Line", line) + element("CallID", line) +
                       element("Cause", "0"));
        }
        for (auto const over : kOver) {
            if (state == over) {
                ++over_;
                make(line);
            }
        }
    }

    ApplicationPeer peer_;
    std::string const destination_;
    int const calls_;
    int made_ = 0;
    int answered_ = 0;
    int over_ = 0;
};

}  // namespace

int main(int argc, char** argv)
try {
    if (argc != 5) {
        std::fprintf(stderr, "usage: bench_calls SOCKET DESTINATION LINES CALLS\n");
        return 2;
    }
    int const calls = std::stoi(argv[4]);
    Caller caller(argv[1], argv[2], calls);
    auto const start = Clock::now();
    caller.run(std::stoi(argv[3]));
    auto const seconds = std::chrono::duration<double>(Clock::now() - start).count();
    std::printf("{\"calls_per_second\": %.1f, \"failed\": %d}\n", calls / seconds, calls - caller.answered());
    return 0;
} catch (std::exception const& problem) {
    std::fprintf(stderr, "bench_calls: %s\n", problem.what());
    return 1;
}
