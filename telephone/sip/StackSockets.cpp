// Replacements for the stack's functions for sockets, which the stack itself calls: in virtual time everything goes
// through the network in memory. In real time they hand on to the stack's own.
#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <map>
#include <string>

#include "telephone/sip/MemoryNetwork.h"
#include "telephone/sip/Stack.h"
#include "telephone/sip/StackFunction.h"
#include "telephone/time/VirtualTime.h"

namespace telephone::sip {

namespace {

constexpr std::size_t kLongestDatagram = 65507;  // of IPv4

// Objects of the stack have a reference count and begin zeroed.
template <typename Object>
Object* makeObject(void (*destroy)(void*))
{
    return static_cast<Object*>(mem_zalloc(sizeof(Object), destroy));
}

struct DatagramSocket
{
    sa local;
    udp_recv_h* received;
    void* argument;
};

struct Listener
{
    sa local;
    tcp_conn_h* called;
    void* argument;
    std::uint64_t caller;  // the connection that is being offered; 0: none
};

struct Connection
{
    std::uint64_t id;
    std::uint64_t other;  // the connection at the other end; 0: none
    sa local;
    sa peer;
    tcp_estab_h* established;
    tcp_recv_h* received;
    tcp_close_h* closed;
    void* argument;
};

// Everything that is open.
struct Sockets
{
    std::map<SocketAddress, DatagramSocket*> datagrams;
    std::map<SocketAddress, Listener*> listeners;
    std::map<std::uint64_t, Connection*> connections;
    std::uint64_t lastConnection = 0;
};

Sockets& sockets()
{
    static auto& all = *new Sockets;  // never destroyed, as the network
    return all;
}

// The address to bind: with a port of the network's choice where none is wanted. EADDRINUSE: taken.
template <typename Socket>
int bindIn(std::map<SocketAddress, Socket*>& taken, sa& local)
{
    while (sa_port(&local) == 0) {
        sa_set_port(&local, memoryNetwork().freePort());
        sa_set_port(&local, taken.contains(SocketAddress(local)) ? 0 : sa_port(&local));
    }
    return taken.contains(SocketAddress(local)) ? EADDRINUSE : 0;
}

template <typename Socket>
Socket* findIn(std::map<SocketAddress, Socket*> const& all, sa const& address)
{
    auto const found = all.find(SocketAddress(address));
    return found == all.end() ? nullptr : found->second;
}

template <typename Socket>
void removeFrom(std::map<SocketAddress, Socket*>& all, Socket* socket)
{
    if (findIn(all, socket->local) == socket) {
        all.erase(SocketAddress(socket->local));
    }
}

std::string bytesOf(mbuf const& buffer)
{
    return {reinterpret_cast<char const*>(mbuf_buf(&buffer)), mbuf_get_left(&buffer)};
}

// Calls with a buffer that has these bytes, while `object` cannot end.
template <typename Call>
void passBytes(void* object, std::string const& bytes, Call const& call)
{
    mem_ref(object);
    mbuf* const buffer = mbuf_alloc(bytes.size() + 1);
    (void)mbuf_write_mem(buffer, reinterpret_cast<std::uint8_t const*>(bytes.data()), bytes.size());
    mbuf_set_pos(buffer, 0);
    call(buffer);
    mem_deref(buffer);
    mem_deref(object);
}

// --- datagrams

int openDatagramSocket(udp_sock** made, sa local, udp_recv_h* received, void* argument)
{
    if (int const error = bindIn(sockets().datagrams, local)) {
        return error;
    }
    auto* const socket = makeObject<DatagramSocket>(
        [](void* object) { removeFrom(sockets().datagrams, static_cast<DatagramSocket*>(object)); });
    *socket = {local, received, argument};
    sockets().datagrams[SocketAddress(local)] = socket;
    *made = reinterpret_cast<udp_sock*>(socket);
    return 0;
}

int sendDatagram(DatagramSocket const& from, sa const& to, mbuf const& buffer)
{
    if (mbuf_get_left(&buffer) > kLongestDatagram) {
        return EMSGSIZE;
    }
    std::string const sent = bytesOf(buffer);
    memoryNetwork().sendDatagram(from.local, to, sent, [from = from.local, to, bytes = sent] {
        DatagramSocket* const socket = findIn(sockets().datagrams, to);
        if (socket != nullptr && socket->received != nullptr) {
            passBytes(socket, bytes, [&](mbuf* copy) { socket->received(&from, copy, socket->argument); });
        }
    });
    return 0;
}

// --- connections

Connection* findConnection(std::uint64_t id)
{
    auto const found = sockets().connections.find(id);
    return found == sockets().connections.end() ? nullptr : found->second;
}

// Tells the other end, which then has no partner any more.
void endConnection(std::uint64_t id, sa const& from, sa const& to, int error)
{
    memoryNetwork().send(from, to, [id, error] {
        if (Connection* const connection = findConnection(id)) {
            connection->other = 0;
            connection->closed(error, connection->argument);
        }
    });
}

void destroyConnection(void* object)
{
    auto* const connection = static_cast<Connection*>(object);
    sockets().connections.erase(connection->id);
    if (connection->other != 0) {
        endConnection(connection->other, connection->local, connection->peer, 0);
    }
}

Connection* makeConnection(Connection const& values)
{
    auto* const connection = makeObject<Connection>(destroyConnection);
    *connection = values;
    connection->id = ++sockets().lastConnection;
    sockets().connections[connection->id] = connection;
    return connection;
}

void establish(Connection const& connection)
{
    memoryNetwork().send(connection.peer, connection.local, [id = connection.id] {
        Connection* const found = findConnection(id);
        if (found != nullptr && found->other != 0) {
            found->established(found->argument);
        }
    });
}

void offer(std::uint64_t caller)
{
    Connection* const connection = findConnection(caller);
    if (connection == nullptr) {
        return;
    }
    if (Listener* const listener = findIn(sockets().listeners, connection->peer)) {
        listener->caller = caller;
        sa const from = connection->local;
        listener->called(&from, listener->argument);
        listener->caller = 0;
    }
    // Not accepted, or nobody listens.
    Connection* const still = findConnection(caller);
    if (still != nullptr && still->other == 0) {
        still->closed(ECONNREFUSED, still->argument);
    }
}

int acceptConnection(tcp_conn** made, Listener const& listener, Connection values)
{
    Connection* const caller = findConnection(listener.caller);
    if (caller == nullptr) {
        return EINVAL;
    }
    values.local = listener.local;
    values.peer = caller->local;
    values.other = caller->id;
    Connection* const connection = makeConnection(values);
    caller->other = connection->id;
    establish(*connection);
    establish(*caller);
    *made = reinterpret_cast<tcp_conn*>(connection);
    return 0;
}

int sendOver(Connection const& connection, mbuf const& buffer)
{
    if (connection.other == 0) {
        return ENOTCONN;
    }
    memoryNetwork().send(connection.local, connection.peer, [other = connection.other, bytes = bytesOf(buffer)] {
        if (Connection* const receiver = findConnection(other)) {
            passBytes(receiver, bytes, [&](mbuf* copy) { receiver->received(copy, receiver->argument); });
        }
    });
    return 0;
}

}  // namespace

bool isInMemory(sa const& address)
{
    return findIn(sockets().datagrams, address) != nullptr || findIn(sockets().listeners, address) != nullptr;
}

}  // namespace telephone::sip

using namespace telephone::sip;
using telephone::isVirtual;

int udp_listen(udp_sock** made, sa const* local, udp_recv_h* received, void* argument)
{
    static auto* const next = stackFunction<decltype(udp_listen)>("udp_listen");
    return isVirtual() ? openDatagramSocket(made, *local, received, argument) : next(made, local, received, argument);
}

int udp_local_get(udp_sock const* socket, sa* local)
{
    static auto* const next = stackFunction<decltype(udp_local_get)>("udp_local_get");
    if (!isVirtual()) {
        return next(socket, local);
    }
    *local = reinterpret_cast<DatagramSocket const*>(socket)->local;
    return 0;
}

void udp_handler_set(udp_sock* socket, udp_recv_h* received, void* argument)
{
    static auto* const next = stackFunction<decltype(udp_handler_set)>("udp_handler_set");
    if (!isVirtual()) {
        return next(socket, received, argument);
    }
    auto* const own = reinterpret_cast<DatagramSocket*>(socket);
    own->received = received;
    own->argument = argument;
}

int udp_send(udp_sock* socket, sa const* to, mbuf* buffer)
{
    static auto* const next = stackFunction<decltype(udp_send)>("udp_send");
    return isVirtual() ? sendDatagram(*reinterpret_cast<DatagramSocket*>(socket), *to, *buffer)
                       : next(socket, to, buffer);
}

int tcp_listen(tcp_sock** made, sa const* wanted, tcp_conn_h* called, void* argument)
{
    static auto* const next = stackFunction<decltype(tcp_listen)>("tcp_listen");
    if (!isVirtual()) {
        return next(made, wanted, called, argument);
    }
    sa local = *wanted;
    if (int const error = bindIn(sockets().listeners, local)) {
        return error;
    }
    auto* const listener =
        makeObject<Listener>([](void* object) { removeFrom(sockets().listeners, static_cast<Listener*>(object)); });
    *listener = {local, called, argument, 0};
    sockets().listeners[SocketAddress(local)] = listener;
    *made = reinterpret_cast<tcp_sock*>(listener);
    return 0;
}

int tcp_sock_local_get(tcp_sock const* socket, sa* local)
{
    static auto* const next = stackFunction<decltype(tcp_sock_local_get)>("tcp_sock_local_get");
    if (!isVirtual()) {
        return next(socket, local);
    }
    *local = reinterpret_cast<Listener const*>(socket)->local;
    return 0;
}

int tcp_accept(tcp_conn** made, tcp_sock* socket, tcp_estab_h* established, tcp_recv_h* received, tcp_close_h* closed,
               void* argument)
{
    static auto* const next = stackFunction<decltype(tcp_accept)>("tcp_accept");
    if (!isVirtual()) {
        return next(made, socket, established, received, closed, argument);
    }
    return acceptConnection(made, *reinterpret_cast<Listener*>(socket),
                            {0, 0, {}, {}, established, received, closed, argument});
}

void tcp_reject(tcp_sock* socket)
{
    static auto* const next = stackFunction<decltype(tcp_reject)>("tcp_reject");
    if (!isVirtual()) {
        next(socket);
    }
}

int tcp_connect(tcp_conn** made, sa const* peer, tcp_estab_h* established, tcp_recv_h* received, tcp_close_h* closed,
                void* argument)
{
    static auto* const next = stackFunction<decltype(tcp_connect)>("tcp_connect");
    if (!isVirtual()) {
        return next(made, peer, established, received, closed, argument);
    }
    sa local = *peer;  // both ends are in this process
    sa_set_port(&local, memoryNetwork().freePort());
    Connection* const connection = makeConnection({0, 0, local, *peer, established, received, closed, argument});
    memoryNetwork().send(local, *peer, [id = connection->id] { offer(id); });
    *made = reinterpret_cast<tcp_conn*>(connection);
    return 0;
}

int tcp_conn_local_get(tcp_conn const* connection, sa* local)
{
    static auto* const next = stackFunction<decltype(tcp_conn_local_get)>("tcp_conn_local_get");
    if (!isVirtual()) {
        return next(connection, local);
    }
    *local = reinterpret_cast<Connection const*>(connection)->local;
    return 0;
}

int tcp_send(tcp_conn* connection, mbuf* buffer)
{
    static auto* const next = stackFunction<decltype(tcp_send)>("tcp_send");
    return isVirtual() ? sendOver(*reinterpret_cast<Connection*>(connection), *buffer) : next(connection, buffer);
}
