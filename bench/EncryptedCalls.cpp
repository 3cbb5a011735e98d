// bench_encrypted_calls CALLS SECONDS: so many simultaneous calls between two user agents of this process, first plain
// and then encrypted; all of them speak and hear. Writes, as JSON, the processor time of both ends in percent of a
// core, the frames heard and the packets lost, how many calls were encrypted, and what memory both ends of all calls
// took.
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <sys/resource.h>

#include "bench/ResidentMemory.h"
#include "telephone/sip/EventLoop.h"
#include "telephone/sip/UserAgent.h"
#include "telephone/time/Waiting.h"

using namespace telephone;

namespace {

class Voice final : public sip::AudioSource, public sip::AudioSink
{
public:
    bool readFrame(sip::AudioFrame& frame) override
    {
        frame.fill(1000);
        return true;
    }
    void skipFrames(std::uint64_t) override {}
    void writeFrame(sip::AudioFrame const&) override { ++heard; }

    std::uint64_t heard = 0;
};

class Peer final : public sip::UserAgentObserver, public sip::SessionObserver
{
public:
    Peer(sip::EventLoop& loop, sip::Encryption encryption)
        : loop_(loop)
    {
        sip::UserAgentConfig config;
        config.encryption = encryption;
        config.keysWithoutTls = true;
        std::lock_guard const lock(loop_);
        agent = std::make_unique<sip::UserAgent>(loop_, config, *this);
    }
    ~Peer() override
    {
        std::lock_guard const lock(loop_);
        sessions.clear();
        agent.reset();
    }

    void call(Peer const& other)
    {
        sip::CallRequest request;
        request.account.user = "1";
        request.account.domain = agent->hostPort();
        request.target = "sip:2@" + other.agent->hostPort();
        std::lock_guard const lock(loop_);
        if (auto session = agent->call(request, *this)) {
            sessions.push_back(std::move(*session));
        }
    }
    sip::AudioStatistics statistics() const
    {
        std::lock_guard const lock(loop_);
        sip::AudioStatistics sum;
        for (auto const& session : sessions) {
            auto const each = session->audio().statistics();
            sum.sent += each.sent;
            sum.received += each.received;
            sum.lost += each.lost;
            encrypted += session->audio().isEncrypted() ? 1 : 0;
        }
        return sum;
    }

    std::unique_ptr<sip::UserAgent> agent;
    std::vector<std::unique_ptr<sip::Session>> sessions;
    Voice voice;
    int established = 0;
    mutable int encrypted = 0;

private:
    void onIncomingCall(std::unique_ptr<sip::Session> session) override
    {
        session->setObserver(this);
        (void)session->answer();
        sessions.push_back(std::move(session));
    }
    void onEstablished(sip::Session& session) override
    {
        session.audio().setSource(&voice);
        session.audio().setSink(&voice);
        ++established;
    }

    sip::EventLoop& loop_;
};

double processorSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    auto const seconds = [](timeval const& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

std::uint64_t heardBy(sip::EventLoop& loop, Peer const& one, Peer const& other)
{
    std::lock_guard const lock(loop);
    return one.voice.heard + other.voice.heard;
}

bool connect(sip::EventLoop& loop, Peer& caller, Peer& called, int calls)
{
    for (int i = 0; i < calls; ++i) {
        caller.call(called);
        sleepFor(std::chrono::milliseconds(5));
    }
    for (int waited = 0; waited < 100; ++waited) {
        sleepFor(std::chrono::milliseconds(100));
        std::lock_guard const lock(loop);
        if (caller.established == calls && called.established == calls) {
            return true;
        }
    }
    return false;
}

bool measure(sip::EventLoop& loop, sip::Encryption encryption, int calls, int seconds)
{
    long const memoryBefore = residentKilobytes();
    Peer called(loop, encryption);
    Peer caller(loop, encryption);
    if (!connect(loop, caller, called, calls)) {
        std::fprintf(stderr, "bench_encrypted_calls: only %d of %d calls are connected\n", caller.established, calls);
        return false;
    }
    double const before = processorSeconds();
    auto const heardBefore = heardBy(loop, caller, called);
    sleepFor(std::chrono::seconds(seconds));
    double const used = processorSeconds() - before;
    auto const heard = heardBy(loop, caller, called) - heardBefore;
    auto const here = caller.statistics();
    auto const there = called.statistics();
    std::printf("{\"percent\": %.2f, \"heard\": %llu, \"lost\": %llu, \"encrypted\": %d, \"kb\": %ld}\n",
                100 * used / seconds, static_cast<unsigned long long>(heard),
                static_cast<unsigned long long>(here.lost + there.lost), caller.encrypted,
                residentKilobytes() - memoryBefore);
    return true;
}

}  // namespace

int main(int count, char** arguments)
{
    int const calls = count == 4 ? std::atoi(arguments[1]) : 0;
    int const seconds = count == 4 ? std::atoi(arguments[2]) : 0;
    std::string const kind = count == 4 ? arguments[3] : "";
    if (calls < 1 || seconds < 1 || (kind != "plain" && kind != "encrypted")) {
        std::fprintf(stderr, "usage: bench_encrypted_calls CALLS SECONDS plain|encrypted\n");
        return 2;
    }
    sip::EventLoop loop;
    loop.start();
    auto const encryption = kind == "plain" ? sip::Encryption::kNone : sip::Encryption::kRequired;
    bool const measured = measure(loop, encryption, calls, seconds);
    loop.stop();
    return measured ? 0 : 1;
}
