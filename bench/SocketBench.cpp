// Round trips between two processes on one processor, all over the same kind of socket:
//   bench_socket echo               a child sends every byte straight back: the floor
//   bench_socket application PATH   the application socket of a running telephone
//   bench_socket bus ADDRESS        a bus service in a child, called through a running bus daemon
// Prints one JSON object: microseconds per round trip (median), and round trips per second with 64 under way.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <sched.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <systemd/sd-bus.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kProcessor = 0;
constexpr int kRoundTrips = 20000;
constexpr int kUnderWay = 64;

// The request sent in every case; the telephone answers it without touching a call.
std::string const kRequest = std::string("<Method>GetServiceState</Method>") + '\0';

void pinToOneProcessor()
{
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(kProcessor, &set);
    if (sched_setaffinity(0, sizeof set, &set) != 0) {
        throw std::runtime_error("can't pin this process to a processor");
    }
}

void writeAll(int socket, std::string_view bytes)
{
    while (!bytes.empty()) {
        auto const written = ::write(socket, bytes.data(), bytes.size());
        if (written <= 0) {
            throw std::runtime_error("the other side is gone");
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

// A connection on which each message sent brings a fixed number of messages back.
struct Peer
{
    int socket;
    int messagesForEach;
    pid_t child;
};

// Reads once; returns the number of messages completed by it.
int readMessages(int socket)
{
    char buffer[65536];
    auto const count = ::read(socket, buffer, sizeof buffer);
    if (count <= 0) {
        throw std::runtime_error("the other side is gone");
    }
    return static_cast<int>(std::count(buffer, buffer + count, '\0'));
}

double medianRoundTrip(Peer const& peer)
{
    std::vector<double> times;
    times.reserve(kRoundTrips);
    for (int i = 0; i < kRoundTrips; ++i) {
        auto const start = Clock::now();
        writeAll(peer.socket, kRequest);
        for (int seen = 0; seen < peer.messagesForEach;) {
            seen += readMessages(peer.socket);
        }
        times.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
    }
    std::nth_element(times.begin(), times.begin() + kRoundTrips / 2, times.end());
    return times[kRoundTrips / 2];
}

double rateWithManyUnderWay(Peer const& peer)
{
    std::string many;
    for (int i = 0; i < kUnderWay; ++i) {
        many += kRequest;
    }
    auto const start = Clock::now();
    writeAll(peer.socket, many);
    int sent = kUnderWay;
    long seen = 0;
    while (seen < static_cast<long>(kRoundTrips) * peer.messagesForEach) {
        seen += readMessages(peer.socket);
        auto const answered = static_cast<int>(seen / peer.messagesForEach);
        auto const more = std::min(answered + kUnderWay, kRoundTrips) - sent;
        writeAll(peer.socket, std::string_view(many).substr(0, static_cast<std::size_t>(more) * kRequest.size()));
        sent += more;
    }
    return kRoundTrips / std::chrono::duration<double>(Clock::now() - start).count();
}

[[noreturn]] void echoForEver(int socket)
{
    char buffer[65536];
    for (;;) {
        auto const count = ::read(socket, buffer, sizeof buffer);
        if (count <= 0) {
            _exit(0);
        }
        writeAll(socket, {buffer, static_cast<std::size_t>(count)});
    }
}

Peer startEcho()
{
    int sockets[2];
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, sockets) != 0) {
        throw std::runtime_error("no socket pair");
    }
    auto const child = ::fork();
    if (child == 0) {
        ::close(sockets[0]);
        echoForEver(sockets[1]);
    }
    ::close(sockets[1]);
    return {sockets[0], 1, child};
}

Peer connectApplication(char const* path)
{
    auto const socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path, sizeof address.sun_path - 1);
    if (::connect(socket, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
        throw std::runtime_error(std::string("nobody listens on ") + path);
    }
    return {socket, 2, 0};  // the answer, and the end of the request
}

int answerHold(sd_bus_message* message, void* /*unused*/, sd_bus_error* /*error*/)
{
    char const* line = nullptr;
    int callId = 0;
    int reason = 0;
    int manual = 0;
    sd_bus_message_read(message, "siib", &line, &callId, &reason, &manual);
    return sd_bus_reply_method_return(message, "s", "sfiSuccess");
}

sd_bus* connectBus(char const* address)
{
    sd_bus* bus = nullptr;
    sd_bus_new(&bus);
    sd_bus_set_address(bus, address);
    sd_bus_set_bus_client(bus, 1);
    if (sd_bus_start(bus) < 0) {
        throw std::runtime_error(std::string("no bus at ") + address);
    }
    return bus;
}

constexpr char const* kBusName = "org.example.Telephone";
constexpr char const* kBusPath = "/org/example/Telephone";

[[noreturn]] void serveBus(char const* address, int ready)
{
    static sd_bus_vtable const table[] = {
        SD_BUS_VTABLE_START(0),
        SD_BUS_METHOD("HoldCall", "siib", "s", answerHold, SD_BUS_VTABLE_UNPRIVILEGED),
        SD_BUS_VTABLE_END,
    };
    auto* const bus = connectBus(address);
    sd_bus_add_object_vtable(bus, nullptr, kBusPath, kBusName, table, nullptr);
    sd_bus_request_name(bus, kBusName, 0);
    writeAll(ready, "r");
    for (;;) {
        if (sd_bus_process(bus, nullptr) == 0) {
            sd_bus_wait(bus, UINT64_MAX);
        }
    }
}

double medianBusCall(sd_bus* bus)
{
    std::vector<double> times;
    for (int i = 0; i < kRoundTrips / 4; ++i) {
        auto const start = Clock::now();
        sd_bus_message* reply = nullptr;
        if (sd_bus_call_method(bus, kBusName, kBusPath, kBusName, "HoldCall", nullptr, &reply, "siib", "4711", 17, 5,
                               1) < 0) {
            throw std::runtime_error("the bus refused the call");
        }
        sd_bus_message_unref(reply);
        times.push_back(std::chrono::duration<double, std::micro>(Clock::now() - start).count());
    }
    std::nth_element(times.begin(), times.begin() + static_cast<long>(times.size() / 2), times.end());
    return times[times.size() / 2];
}

int runBus(char const* address)
{
    int ready[2];
    if (::pipe(ready) != 0) {
        throw std::runtime_error("no pipe");
    }
    auto const child = ::fork();
    if (child == 0) {
        serveBus(address, ready[1]);
    }
    char byte = 0;
    if (::read(ready[0], &byte, 1) != 1) {
        throw std::runtime_error("the bus service did not start");
    }
    std::printf("{\"round_trip_us\": %.3f}\n", medianBusCall(connectBus(address)));
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    return 0;
}

int runSocket(Peer const& peer)
{
    auto const roundTrip = medianRoundTrip(peer);
    auto const rate = rateWithManyUnderWay(peer);
    std::printf("{\"round_trip_us\": %.3f, \"rate_64\": %.0f}\n", roundTrip, rate);
    ::close(peer.socket);
    if (peer.child != 0) {
        ::waitpid(peer.child, nullptr, 0);
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv)
try {
    std::string const what = argc > 1 ? argv[1] : "";
    pinToOneProcessor();
    if (what == "echo") {
        return runSocket(startEcho());
    }
    if (what == "application" && argc > 2) {
        return runSocket(connectApplication(argv[2]));
    }
    if (what == "bus" && argc > 2) {
        return runBus(argv[2]);
    }
    std::fprintf(stderr, "usage: bench_socket echo | application PATH | bus ADDRESS\n");
    return 2;
} catch (std::exception const& problem) {
    std::fprintf(stderr, "bench_socket: %s\n", problem.what());
    return 1;
}
