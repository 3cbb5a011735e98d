#include "telephone/sip/StackFunctions.h"

#include <stdexcept>
#include <string>

#include "telephone/sip/ClientDigest.h"
#include "telephone/sip/ConnectionLimits.h"
#include "telephone/sip/ConnectionOptions.h"
#include "telephone/sip/ContinuedDialog.h"
#include "telephone/sip/DialogHeaders.h"
#include "telephone/sip/ForeignRequests.h"
#include "telephone/sip/LocalAddresses.h"
#include "telephone/sip/MemorySockets.h"
#include "telephone/sip/ServerRequest.h"
#include "telephone/sip/StackTimers.h"
#include "telephone/sip/TlsTransport.h"
#include "telephone/time/VirtualTime.h"

using namespace telephone::sip;
using telephone::isVirtual;

namespace telephone::sip {

namespace {

using AnyFunction = void (*)();

struct ReplacedFunction
{
    char const* name;
    AnyFunction called;
    AnyFunction ours;
};

// Volatile: to the compiler, two functions never have the same address.
ReplacedFunction const volatile kReplacedFunctions[] = {
#define STACK_FUNCTION(name) {#name, reinterpret_cast<AnyFunction>(name), reinterpret_cast<AnyFunction>(our_##name)},
#include "telephone/sip/StackFunctions.def"
#undef STACK_FUNCTION
};

}  // namespace

void checkStackFunctions()
{
    for (auto const& function : kReplacedFunctions) {
        AnyFunction const called = function.called;
        if (called != function.ours) {
            throw std::runtime_error(std::string("the SIP stack's function ") + function.name + " is not replaced");
        }
    }
}

}  // namespace telephone::sip

// --- random numbers, of which the stack makes tags, branches, Call-IDs and nonces: in virtual time from the seed

std::uint32_t our_rand_u32()
{
    return isVirtual() ? static_cast<std::uint32_t>(telephone::randomNumber()) : stack_rand_u32();
}

void our_rand_bytes(std::uint8_t* bytes, std::size_t size)
{
    if (!isVirtual()) {
        return stack_rand_bytes(bytes, size);
    }
    for (std::size_t i = 0; i < size; ++i) {
        bytes[i] = static_cast<std::uint8_t>(telephone::randomNumber());
    }
}

// --- authentication of our own requests: never the stack's, and an object of the one is none of the other

int our_sip_auth_alloc(sip_auth** made, sip_auth_h* handler, void* argument, bool owned)
{
    return made && handler ? makeAuthentication(made, handler, argument, owned) : EINVAL;
}

int our_sip_auth_authenticate(sip_auth* authentication, sip_msg const* response)
{
    return authentication && response ? takeChallenges(*authentication, *response) : EINVAL;
}

int our_sip_auth_encode(mbuf* buffer, sip_auth* authentication, char const* method, char const* uri)
{
    return buffer && authentication && method && uri ? writeCredentials(*buffer, *authentication, method, uri) : EINVAL;
}

void our_sip_auth_reset(sip_auth* authentication)
{
    if (authentication) {
        forgetChallenges(*authentication);
    }
}

// --- timers

std::uint64_t our_tmr_jiffies()
{
    return stackMilliseconds();
}

std::uint64_t our_tmr_next_timeout(list* /*timers*/)
{
    return untilFirstExpiry();
}

void our_tmr_poll(list* /*timers*/)
{
    expireTimers();
}

void our_tmr_start(tmr* timer, std::uint64_t delay, tmr_h* handler, void* argument)
{
    if (timer != nullptr) {
        startTimer(*timer, delay, handler, argument);
    }
}

// --- sockets: in virtual time through the network in memory; in real time connections have options

int our_udp_listen(udp_sock** made, sa const* local, udp_recv_h* received, void* argument)
{
    return isVirtual() ? openDatagramSocket(made, *local, received, argument)
                       : listenWhereverPossible(made, *local, received, argument);
}

int our_udp_local_get(udp_sock const* socket, sa* local)
{
    return isVirtual() ? getLocal(*socket, *local) : stack_udp_local_get(socket, local);
}

void our_udp_handler_set(udp_sock* socket, udp_recv_h* received, void* argument)
{
    isVirtual() ? setReceiver(*socket, received, argument) : stack_udp_handler_set(socket, received, argument);
}

int our_udp_send(udp_sock* socket, sa const* to, mbuf* buffer)
{
    return isVirtual() ? sendDatagram(*socket, *to, *buffer) : stack_udp_send(socket, to, buffer);
}

int our_tcp_listen(tcp_sock** made, sa const* local, tcp_conn_h* called, void* argument)
{
    return isVirtual() ? openListener(made, *local, called, argument) : stack_tcp_listen(made, local, called, argument);
}

int our_tcp_sock_local_get(tcp_sock const* socket, sa* local)
{
    return isVirtual() ? getLocal(*socket, *local) : stack_tcp_sock_local_get(socket, local);
}

int our_tcp_accept(tcp_conn** made, tcp_sock* socket, tcp_estab_h* established, tcp_recv_h* received,
                   tcp_close_h* closed, void* argument)
{
    int error = isVirtual() ? acceptConnection(made, *socket, {established, received, closed, argument})
                            : stack_tcp_accept(made, socket, established, received, closed, argument);
    if (!error) {
        error = admitConnection(*made);
    }
    return error || isVirtual() ? error : setConnectionOptions(**made);
}

void our_tcp_reject(tcp_sock* socket)
{
    if (!isVirtual()) {
        stack_tcp_reject(socket);
    }
}

int our_tcp_connect(tcp_conn** made, sa const* peer, tcp_estab_h* established, tcp_recv_h* received,
                    tcp_close_h* closed, void* argument)
{
    if (isVirtual()) {
        return openConnection(made, *peer, {established, received, closed, argument});
    }
    int const error = stack_tcp_connect(made, peer, established, received, closed, argument);
    return error ? error : setConnectionOptions(**made);
}

int our_tcp_conn_local_get(tcp_conn const* connection, sa* local)
{
    return isVirtual() ? getLocal(*connection, *local) : stack_tcp_conn_local_get(connection, local);
}

int our_tcp_send(tcp_conn* connection, mbuf* buffer)
{
    return isVirtual() ? sendOver(*connection, *buffer) : stack_tcp_send(connection, buffer);
}

// --- dialogs: a call that is sent again stays in its own; and the headers of re-INVITEs and of the answers to them,
// which the stack does not let a session add

int our_sip_dialog_alloc(sip_dialog** made, char const* uri, char const* toUri, char const* fromName,
                         char const* fromUri, char const* routes[], std::uint32_t routeCount)
{
    return made && ContinuedDialog::take(made)
               ? 0
               : stack_sip_dialog_alloc(made, uri, toUri, fromName, fromUri, routes, routeCount);
}

int our_sip_dialog_encode(mbuf* buffer, sip_dialog* dialog, std::uint32_t cseq, char const* method)
{
    int const error = stack_sip_dialog_encode(buffer, dialog, cseq, method);
    bool const isInvite = error == 0 && std::string_view(method) == "INVITE";
    return isInvite ? mbuf_write_str(buffer, DialogHeaders::ofInvite(dialog).c_str()) : error;
}

static int answerWith(sipsess* session, sip_msg const* request, std::uint16_t status, char const* reason,
                      mbuf* description, char const* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    int const error = stack_sipsess_reply_2xx(session, request, status, reason, description, format, &arguments);
    va_end(arguments);
    return error;
}

int our_sipsess_reply_2xx(sipsess* session, sip_msg const* request, std::uint16_t status, char const* reason,
                          mbuf* description, char const* format, va_list* arguments)
{
    if (format != nullptr) {
        return stack_sipsess_reply_2xx(session, request, status, reason, description, format, arguments);
    }
    return answerWith(session, request, status, reason, description, "%s",
                      DialogHeaders::ofAnswer(sipsess_dialog(session)).c_str());
}

// --- messages: requests that the stack's parser would drop get an answer

int our_sip_msg_decode(sip_msg** message, mbuf* buffer)
{
    int const error = stack_sip_msg_decode(message, buffer);
    auto const strangeness = error == EBADMSG ? makeReadable(*buffer) : std::nullopt;
    if (!strangeness) {
        return error;
    }
    int const again = stack_sip_msg_decode(message, buffer);
    if (again == 0) {
        mark(**message, *strangeness);
    }
    return again;
}

// --- requests: those to a name go to its servers in turn

int our_sip_request(struct sip_request** made, sip* stack, bool stateful, char const* method, int methodLength,
                    char const* uri, int uriLength, struct uri const* route, mbuf* message, size_t sortKey,
                    sip_send_h* sending, sip_resp_h* answered, void* argument)
{
    SendableRoute const sendable(*route);
    auto const destination = destinationOf(stack, *sendable.get());
    if (!destination) {
        return stack_sip_request(made, stack, stateful, method, methodLength, uri, uriLength, sendable.get(), message,
                                 sortKey, sending, answered, argument);
    }
    auto const textOf = [](char const* text, int length) {
        return length < 0 ? std::string(text) : std::string(text, static_cast<std::size_t>(length));
    };
    return sendToServers({made, stack, stateful, textOf(method, methodLength), textOf(uri, uriLength), message, sortKey,
                          sending, answered, argument},
                         *destination);
}

void our_sip_request_cancel(struct sip_request* request)
{
    if (!cancelServerRequest(request)) {
        stack_sip_request_cancel(request);
    }
}

// --- TLS: whom a connection is for, and whether it may carry a message

int our_sip_transp_send(sip_connqent** queued, sip* stack, void* connection, sip_transp transport, sa const* to,
                        mbuf* message, void (*done)(int error, void* argument), void* argument)
{
    auto const send = [=](sa const& place) {
        return stack_sip_transp_send(queued, stack, connection, transport, &place, message, done, argument);
    };
    return transport == SIP_TRANSP_TLS ? sendOverTls(stack, *to, *message, connection != nullptr, send) : send(*to);
}

int our_tls_start_tcp(tls_conn** made, tls* context, tcp_conn* socket, int layer)
{
    int const error = stack_tls_start_tcp(made, context, socket, layer);
    return error ? error : TlsTransport::begin(*context, **made, *socket);
}
