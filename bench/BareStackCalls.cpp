// The same calls by the SIP stack alone, without telephone and service: the upper limit.
//   bench_bare_calls HOST PORT WINDOW CALLS
// WINDOW calls are under way at once; each is cleared when it is answered, and the next one is made. Prints one JSON
// object: calls per second, and the number of failed calls.
extern "C" {
#include <re/re.h>
}

#include <chrono>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

void check(int error, char const* what)
{
    if (error != 0) {
        throw std::runtime_error(std::string("the stack can't ") + what + ": " + std::to_string(error));
    }
}

class BareCaller;

// One of the calls under way.
struct Slot
{
    BareCaller* caller = nullptr;
    sipsess* session = nullptr;
    sdp_session* description = nullptr;
};

class BareCaller
{
public:
    BareCaller(std::string target, int window, int calls)
        : target_(std::move(target))
        , calls_(calls)
        , slots_(static_cast<std::size_t>(window))
    {
        sa address;
        check(sa_set_str(&address, "127.0.0.1", 0), "use the loopback address");
        check(sip_alloc(&sip_, nullptr, 1024, 1024, 1024, "bench", nullptr, nullptr), "start");
        check(sip_transp_add(sip_, SIP_TRANSP_UDP, &address), "listen");
        check(sipsess_listen(
                  &sessions_, sip_, 1024, [](sip_msg const*, void*) {}, nullptr),
              "take sessions");
        address_ = address;
    }

    void run()
    {
        for (auto& slot : slots_) {
            slot.caller = this;
            make(slot);
        }
        check(re_main(nullptr), "run");
    }

    // A cleared session waits for nothing but the response to its BYE.
    void end()
    {
        for (auto& slot : slots_) {
            drop(slot);
        }
        mem_deref(sessions_);
        sip_close(sip_, true);
        mem_deref(sip_);
    }
    int failed() const { return failed_; }

private:
    void make(Slot& slot)
    {
        if (made_ == calls_) {
            return;
        }
        ++made_;
        auto* const offer = describe(slot);
        check(sipsess_connect(&slot.session, sessions_, target_.c_str(), nullptr, "sip:bench@127.0.0.1", "bench",
                              nullptr, 0, "application/sdp", offer, nullptr, nullptr, false, onOffer, onAnswer, nullptr,
                              onEstablished, nullptr, nullptr, onClosed, &slot, nullptr),
              "make a call");
        mem_deref(offer);
    }

    mbuf* describe(Slot& slot)
    {
        constexpr std::uint16_t kPort = 40000;  // receives nothing
        sdp_media* audio = nullptr;
        mbuf* offer = nullptr;
        check(sdp_session_alloc(&slot.description, &address_), "describe a session");
        check(sdp_media_add(&audio, slot.description, "audio", kPort, "RTP/AVP"), "describe audio");
        check(sdp_format_add(nullptr, audio, false, "0", "PCMU", 8000, 1, nullptr, nullptr, nullptr, false, nullptr),
              "describe a codec");
        check(sdp_format_add(nullptr, audio, false, "8", "PCMA", 8000, 1, nullptr, nullptr, nullptr, false, nullptr),
              "describe a codec");
        check(sdp_encode(&offer, slot.description, true), "write an offer");
        return offer;
    }

    static void drop(Slot& slot)
    {
        slot.session = static_cast<sipsess*>(mem_deref(slot.session));
        slot.description = static_cast<sdp_session*>(mem_deref(slot.description));
    }

    void over(Slot& slot, bool answered)
    {
        failed_ += answered ? 0 : 1;
        drop(slot);
        if (++over_ == calls_) {
            re_cancel();
            return;
        }
        make(slot);
    }

    static int onOffer(mbuf** /*answer*/, sip_msg const* /*message*/, void* /*slot*/) { return EPROTO; }
    static int onAnswer(sip_msg const* message, void* object)
    {
        return sdp_decode(static_cast<Slot*>(object)->description, message->mb, false);
    }
    static void onEstablished(sip_msg const* /*message*/, void* object)
    {
        auto& slot = *static_cast<Slot*>(object);
        slot.caller->over(slot, true);
    }
    static void onClosed(int /*error*/, sip_msg const* /*message*/, void* object)
    {
        auto& slot = *static_cast<Slot*>(object);
        slot.caller->over(slot, false);
    }

    std::string const target_;
    int const calls_;
    std::vector<Slot> slots_;
    sa address_{};
    sip* sip_ = nullptr;
    sipsess_sock* sessions_ = nullptr;
    int made_ = 0;
    int over_ = 0;
    int failed_ = 0;
};

}  // namespace

int main(int argc, char** argv)
try {
    if (argc != 5) {
        std::fprintf(stderr, "usage: bench_bare_calls HOST PORT WINDOW CALLS\n");
        return 2;
    }
    check(libre_init(), "start");
    int const calls = std::stoi(argv[4]);
    BareCaller caller(std::string("sip:service@") + argv[1] + ":" + argv[2], std::stoi(argv[3]), calls);
    auto const start = Clock::now();
    caller.run();
    auto const seconds = std::chrono::duration<double>(Clock::now() - start).count();
    std::printf("{\"calls_per_second\": %.1f, \"failed\": %d}\n", calls / seconds, caller.failed());
    std::fflush(stdout);
    caller.end();
    libre_close();
    return 0;
} catch (std::exception const& problem) {
    std::fprintf(stderr, "bench_bare_calls: %s\n", problem.what());
    return 1;
}
