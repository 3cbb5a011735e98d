// Sends any bytes to the SIP port of a running user agent, which rings, answers and ends calls meanwhile. After every
// input it must still answer an OPTIONS request. Runs of messages are separated by the byte 1; in them @TAG@ becomes
// the To tag that the user agent gave last, and @PORT@ the port that the messages come from.
//
// Nothing leaves the machine: packets to addresses other than loopback are dropped here.
#include <array>
#include <cerrno>
#include <deque>
#include <memory>
#include <mutex>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "FuzzInput.h"
#include "telephone/sip/EventLoop.h"
#include "telephone/sip/UserAgent.h"

namespace {
bool isLoopback(sockaddr const* address)
{
    if (address == nullptr || address->sa_family == AF_UNIX) {
        return true;
    }
    if (address->sa_family != AF_INET) {
        return false;
    }
    auto const* const v4 = reinterpret_cast<sockaddr_in const*>(address);
    return (ntohl(v4->sin_addr.s_addr) >> 24U) == 127U;
}
}  // namespace

// These replace the functions of the C library.
extern "C" ssize_t sendto(int socket, void const* data, size_t size, int flags, sockaddr const* to, socklen_t length)
{
    if (!isLoopback(to)) {
        return static_cast<ssize_t>(size);
    }
    return syscall(SYS_sendto, socket, data, size, flags, to, length);
}

extern "C" int connect(int socket, sockaddr const* to, socklen_t length)
{
    if (!isLoopback(to)) {
        errno = ENETUNREACH;
        return -1;
    }
    return static_cast<int>(syscall(SYS_connect, socket, to, length));
}

namespace {
using namespace telephone::sip;

constexpr std::size_t kMostCalls = 8;
constexpr std::size_t kMostMessages = 8;
constexpr int kPatienceMilliseconds = 5000;

class Phone final : public UserAgentObserver, public SessionObserver
{
public:
    Phone()
    {
        loop.start();
        UserAgentConfig config;
        config.closingTime = std::chrono::milliseconds(0);
        agent = std::make_unique<UserAgent>(loop, config, *this);
    }

    using SessionObserver::onTransferRequested;
    using UserAgentObserver::onTransferRequested;
    bool knowsUser(std::string const& user) override { return user != "nobody"; }
    void onIncomingCall(std::unique_ptr<Session> session) override
    {
        session->setObserver(this);
        switch (++count % 4) {
        case 0:
            session->reject(486, "Busy Here");
            break;
        case 1:
            (void)session->ring();
            break;
        default:
            (void)session->answer();
        }
        calls.push_back(std::move(session));
        if (calls.size() > kMostCalls) {
            calls.pop_front();
        }
    }
    void onTransferRequested(Session& /*session*/, std::unique_ptr<Transfer> transfer) override
    {
        transfers.push_back(std::move(transfer));
        if (transfers.size() > kMostCalls) {
            transfers.pop_front();
        }
    }
    void onSubscribe(std::unique_ptr<Notifier> notifier) override
    {
        notifiers.push_back(std::move(notifier));
        if (notifiers.size() > kMostCalls) {
            notifiers.pop_front();
        }
    }

    EventLoop loop;
    std::unique_ptr<UserAgent> agent;
    std::deque<std::unique_ptr<Session>> calls;
    std::deque<std::unique_ptr<Transfer>> transfers;
    std::deque<std::unique_ptr<Notifier>> notifiers;
    unsigned count = 0;
};

class Peer
{
public:
    explicit Peer(std::uint16_t port)
        : socket_(socket(AF_INET, SOCK_DGRAM, 0))
    {
        sockaddr_in own = loopback(0);
        socklen_t length = sizeof(own);
        require(bind(socket_, reinterpret_cast<sockaddr*>(&own), length) == 0, "no socket");
        getsockname(socket_, reinterpret_cast<sockaddr*>(&own), &length);
        port_ = std::to_string(ntohs(own.sin_port));
        phone_ = loopback(port);
    }

    void send(std::string text)
    {
        replaceAll(text, "@TAG@", tag_);
        replaceAll(text, "@PORT@", port_);
        sendto(socket_, text.data(), text.size(), 0, reinterpret_cast<sockaddr*>(&phone_), sizeof(phone_));
    }
    // Waits for the answer to a request of its own; what comes before it is read for the tag.
    void requireAnswer()
    {
        auto const id = "alive-" + std::to_string(++asked_);
        send("OPTIONS sip:4711@127.0.0.1 SIP/2.0\r\nVia: SIP/2.0/UDP 127.0.0.1:@PORT@;branch=z9hG4bK" + id +
             ";rport\r\nMax-Forwards: 70\r\nFrom: <sip:peer@127.0.0.1>;tag=peer\r\nTo: <sip:4711@127.0.0.1>\r\n"
             "Call-ID: " +
             id + "@127.0.0.1\r\nCSeq: 1 OPTIONS\r\nContent-Length: 0\r\n\r\n");
        std::array<char, 65536> buffer;
        while (becomesReadable()) {
            auto const count = recv(socket_, buffer.data(), buffer.size(), 0);
            std::string_view const answer(buffer.data(), count > 0 ? static_cast<std::size_t>(count) : 0);
            if (answer.find("\r\nCall-ID: " + id) != std::string_view::npos) {
                return;
            }
            learnTag(answer);
        }
        complain("the user agent does not answer any more");
    }

private:
    // False: nothing came for kPatienceMilliseconds. The alarm of libFuzzer interrupts the wait, which then starts
    // anew.
    bool becomesReadable() const
    {
        pollfd wait{socket_, POLLIN, 0};
        int ready = 0;
        do {
            ready = poll(&wait, 1, kPatienceMilliseconds);
        } while (ready < 0 && errno == EINTR);
        return ready == 1;
    }
    static sockaddr_in loopback(std::uint16_t port)
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(port);
        return address;
    }
    static void replaceAll(std::string& text, std::string const& what, std::string const& by)
    {
        for (auto place = text.find(what); place != std::string::npos; place = text.find(what, place + by.size())) {
            text.replace(place, what.size(), by);
        }
    }
    void learnTag(std::string_view answer)
    {
        auto const to = answer.find("\r\nTo:");
        auto const tag = answer.find(";tag=", to);
        auto const end = answer.find("\r\n", tag);
        if (to != std::string_view::npos && tag != std::string_view::npos && end != std::string_view::npos) {
            tag_ = std::string(answer.substr(tag + 5, end - tag - 5));
        }
    }

    int const socket_;
    std::string port_;
    sockaddr_in phone_{};
    std::string tag_ = "none";
    int asked_ = 0;
};
}  // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static Phone phone;
    static Peer peer(phone.agent->udpPort());
    std::string_view rest(reinterpret_cast<char const*>(data), size);
    for (std::size_t i = 0; i < kMostMessages && !rest.empty(); ++i) {
        auto const end = rest.find('\1');
        peer.send(std::string(rest.substr(0, end)));
        rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
        peer.requireAnswer();
    }
    std::lock_guard const hold(phone.loop);
    phone.calls.clear();
    phone.transfers.clear();
    phone.notifiers.clear();
    return 0;
}
