// A request of the stack to a URI that names its server: waits for the server's address, and goes to the next server
// when one refuses the connection, fails the handshake, answers 503 or stays silent for kLongestSilence. Each attempt
// is a request of the stack of its own, with the same Call-ID and CSeq and a branch of its own (RFC 3263 section 4.3).
//
// The replaced functions of the stack make these, so that everything that sends a request goes this way; to whoever
// holds one it is a sip_request. It lives until its last response, or until its holder drops it. Under the loop's lock.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "telephone/sip/MemoryNetwork.h"
#include "telephone/sip/Servers.h"
#include "telephone/sip/Stack.h"

namespace telephone::sip {

// Somebody waits at the telephone. An answer of the far end's server, if only 100, takes a round trip; after this time
// the request has been sent four times over UDP.
constexpr std::chrono::milliseconds kLongestSilence{3800};

// What the stack's function sip_request is called with, except for the route.
struct StackRequest
{
    struct sip_request** holder;
    ::sip* stack;
    bool stateful;
    std::string method;
    std::string uri;
    mbuf* message;
    std::size_t sortKey;
    sip_send_h* sending;
    sip_resp_h* answered;
    void* argument;
};

// The destination of a route whose host is a name; nothing for an address, and for a stack without servers.
std::optional<Destination> destinationOf(::sip const* stack, uri const& route);

// 0, or an error of errno or of failureOf().
int sendToServers(StackRequest const& request, Destination const& destination);

// False: the request is not one of these.
bool cancelServerRequest(struct sip_request* request);

// A connection of that stack has ended. The stack tells nobody: requests sent over it that still
// wait for a response go to the next server, once the stack has finished what it is doing.
void noteConnectionEnded(::sip const* stack, SocketAddress const& peer);

// From now on requests of that stack to names go to these servers; null: they end, and none follow.
void setServers(::sip* stack, Servers* servers);

}  // namespace telephone::sip
