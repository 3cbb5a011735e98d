// One event to many applications of a running telephone:
//   bench_subscribers SOCKET APPLICATIONS STOPPED ROUNDS
// A request switches do-not-disturb, and its event goes to every subscribed application. STOPPED further applications
// subscribe and never read. Prints one JSON object: microseconds (median of the rounds) until every reader has the
// event.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "bench/peers/ApplicationPeer.h"

namespace {

using Clock = std::chrono::steady_clock;
using Peers = std::vector<std::unique_ptr<ApplicationPeer>>;

Peers subscribe(std::string const& socket, int count)
{
    Peers peers;
    for (int i = 0; i < count; ++i) {
        peers.push_back(std::make_unique<ApplicationPeer>(socket));
        peers.back()->request("<Method>Subscribe</Method>");
    }
    return peers;
}

double runRound(ApplicationPeer& requester, Peers const& readers, bool on)
{
    auto const start = Clock::now();
    requester.send("<Method>SetDoNotDisturb</Method><Line>1</Line><doNotDisturbOn>" + std::to_string(on ? 1 : 0) +
                   "</doNotDisturbOn>");
    for (auto const& reader : readers) {
        reader->nextBeginning("event");
    }
    auto const time = std::chrono::duration<double, std::micro>(Clock::now() - start).count();
    requester.nextBeginning("finished");
    return time;
}

}  // namespace

int main(int argc, char** argv)
try {
    if (argc != 5) {
        std::fprintf(stderr, "usage: bench_subscribers SOCKET APPLICATIONS STOPPED ROUNDS\n");
        return 2;
    }
    std::string const socket = argv[1];
    ApplicationPeer requester(socket);
    auto const stopped = subscribe(socket, std::stoi(argv[3]));
    auto const readers = subscribe(socket, std::stoi(argv[2]));
    std::vector<double> times(static_cast<std::size_t>(std::stoi(argv[4])));
    bool on = false;
    for (auto& time : times) {
        on = !on;
        time = runRound(requester, readers, on);
    }
    std::nth_element(times.begin(), times.begin() + static_cast<long>(times.size() / 2), times.end());
    std::printf("{\"event_us\": %.1f}\n", times[times.size() / 2]);
    return 0;
} catch (std::exception const& problem) {
    std::fprintf(stderr, "bench_subscribers: %s\n", problem.what());
    return 1;
}
