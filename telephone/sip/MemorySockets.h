// The stack's sockets in virtual time: everything goes through the network in memory (MemoryNetwork.h). Each function
// does the work of one of the stack (StackFunctions.cpp), with objects of its own behind the stack's opaque types; a
// result is 0 or an error number as the stack's. Used under the loop's lock.
#pragma once

#include <functional>

#include "telephone/sip/Stack.h"

namespace telephone::sip {

int openDatagramSocket(udp_sock** made, sa local, udp_recv_h* received, void* argument);
int getLocal(udp_sock const& socket, sa& local);
void setReceiver(udp_sock& socket, udp_recv_h* received, void* argument);
int sendDatagram(udp_sock const& from, sa const& to, mbuf const& buffer);

// Whom a connection tells what happens to it.
struct ConnectionHandlers
{
    tcp_estab_h* established;
    tcp_recv_h* received;
    tcp_close_h* closed;
    void* argument;
};

int openListener(tcp_sock** made, sa local, tcp_conn_h* called, void* argument);
int getLocal(tcp_sock const& listener, sa& local);
// The connection that is being offered to the listener.
int acceptConnection(tcp_conn** made, tcp_sock const& listener, ConnectionHandlers const& handlers);
int openConnection(tcp_conn** made, sa const& peer, ConnectionHandlers const& handlers);
int getLocal(tcp_conn const& connection, sa& local);
sa const& peerOf(tcp_conn const& connection);
// Tells whether the connection still exists, also once it does not.
std::function<bool()> livenessOf(tcp_conn const& connection);
int sendOver(tcp_conn const& connection, mbuf const& buffer);

}  // namespace telephone::sip
