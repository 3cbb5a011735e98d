// bench_encrypted_calls CALLS SECONDS: so many simultaneous calls between two user agents of this process, first plain
// and then encrypted; all of them speak and hear. Writes the processor time and what was lost.
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <vector>

#include <sys/resource.h>

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
            sum.forged += each.forged;
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

bool measure(sip::EventLoop& loop, char const* name, sip::Encryption encryption, int calls, int seconds)
{
    Peer called(loop, encryption);
    Peer caller(loop, encryption);
    if (!connect(loop, caller, called, calls)) {
        std::fprintf(stderr, "%s: only %d of %d calls are connected\n", name, caller.established, calls);
        return false;
    }
    double const before = processorSeconds();
    auto const heardBefore = caller.voice.heard + called.voice.heard;
    sleepFor(std::chrono::seconds(seconds));
    double const used = processorSeconds() - before;
    auto const heard = caller.voice.heard + called.voice.heard - heardBefore;
    auto const here = caller.statistics();
    auto const there = called.statistics();
    std::printf("%-9s %4d calls (%4d encrypted): %5.1f %% of a core, %llu frames heard, %llu lost, %llu forged\n", name,
                calls, caller.encrypted, 100 * used / seconds, static_cast<unsigned long long>(heard),
                static_cast<unsigned long long>(here.lost + there.lost),
                static_cast<unsigned long long>(here.forged + there.forged));
    return true;
}

}  // namespace

int main(int count, char** arguments)
{
    int const calls = count > 1 ? std::atoi(arguments[1]) : 200;
    int const seconds = count > 2 ? std::atoi(arguments[2]) : 10;
    if (calls < 1 || seconds < 1) {
        std::fprintf(stderr, "usage: bench_encrypted_calls CALLS SECONDS\n");
        return 2;
    }
    sip::EventLoop loop;
    loop.start();
    bool const measured = measure(loop, "plain", sip::Encryption::kNone, calls, seconds) &&
                          measure(loop, "encrypted", sip::Encryption::kRequired, calls, seconds);
    loop.stop();
    return measured ? 0 : 1;
}
