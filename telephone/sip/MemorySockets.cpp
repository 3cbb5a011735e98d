#include "telephone/sip/MemorySockets.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <map>
#include <string>

#include "telephone/sip/MemoryNetwork.h"

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
    ConnectionHandlers to;
};

// The objects behind the stack's types.
DatagramSocket const& own(udp_sock const& socket)
{
    return reinterpret_cast<DatagramSocket const&>(socket);
}

Listener const& own(tcp_sock const& listener)
{
    return reinterpret_cast<Listener const&>(listener);
}

Connection const& own(tcp_conn const& connection)
{
    return reinterpret_cast<Connection const&>(connection);
}

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
    Ref<void> kept;
    kept.share(object);
    Ref<mbuf> buffer;
    (void)fill(buffer, bytes);
    call(buffer.get());
}

}  // namespace

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

int getLocal(udp_sock const& socket, sa& local)
{
    local = own(socket).local;
    return 0;
}

void setReceiver(udp_sock& socket, udp_recv_h* received, void* argument)
{
    auto& changed = reinterpret_cast<DatagramSocket&>(socket);
    changed.received = received;
    changed.argument = argument;
}

int sendDatagram(udp_sock const& from, sa const& to, mbuf const& buffer)
{
    if (mbuf_get_left(&buffer) > kLongestDatagram) {
        return EMSGSIZE;
    }
    std::string const sent = bytesOf(buffer);
    memoryNetwork().sendDatagram(own(from).local, to, sent, [from = own(from).local, to, bytes = sent] {
        DatagramSocket* const socket = findIn(sockets().datagrams, to);
        if (socket != nullptr && socket->received != nullptr) {
            passBytes(socket, bytes, [&](mbuf* copy) { socket->received(&from, copy, socket->argument); });
        }
    });
    return 0;
}

// --- connections

namespace {

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
            connection->to.closed(error, connection->to.argument);
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
        if (Connection* const found = findConnection(id)) {
            found->to.established(found->to.argument);
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
        still->to.closed(ECONNREFUSED, still->to.argument);
    }
}

}  // namespace

int openListener(tcp_sock** made, sa local, tcp_conn_h* called, void* argument)
{
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

int getLocal(tcp_sock const& listener, sa& local)
{
    local = own(listener).local;
    return 0;
}

int acceptConnection(tcp_conn** made, tcp_sock const& listener, ConnectionHandlers const& handlers)
{
    Connection* const caller = findConnection(own(listener).caller);
    if (caller == nullptr) {
        return EINVAL;
    }
    Connection* const connection = makeConnection({0, caller->id, own(listener).local, caller->local, handlers});
    caller->other = connection->id;
    establish(*connection);
    establish(*caller);
    *made = reinterpret_cast<tcp_conn*>(connection);
    return 0;
}

int openConnection(tcp_conn** made, sa const& peer, ConnectionHandlers const& handlers)
{
    sa local = peer;  // both ends are in this process
    sa_set_port(&local, memoryNetwork().freePort());
    Connection* const connection = makeConnection({0, 0, local, peer, handlers});
    memoryNetwork().send(local, peer, [id = connection->id] { offer(id); });
    *made = reinterpret_cast<tcp_conn*>(connection);
    return 0;
}

int getLocal(tcp_conn const& connection, sa& local)
{
    local = own(connection).local;
    return 0;
}

sa const& peerOf(tcp_conn const& connection)
{
    return own(connection).peer;
}

std::function<bool()> livenessOf(tcp_conn const& connection)
{
    return [id = own(connection).id] { return findConnection(id) != nullptr; };
}

int sendOver(tcp_conn const& connection, mbuf const& buffer)
{
    Connection const& sender = own(connection);
    if (sender.other == 0) {
        return ENOTCONN;
    }
    memoryNetwork().send(sender.local, sender.peer, [other = sender.other, bytes = bytesOf(buffer)] {
        if (Connection* const receiver = findConnection(other)) {
            passBytes(receiver, bytes, [&](mbuf* copy) { receiver->to.received(copy, receiver->to.argument); });
        }
    });
    return 0;
}

bool isInMemory(sa const& address)
{
    return findIn(sockets().datagrams, address) != nullptr || findIn(sockets().listeners, address) != nullptr;
}

}  // namespace telephone::sip
