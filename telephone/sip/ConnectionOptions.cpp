#include "telephone/sip/ConnectionOptions.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace telephone::sip {

namespace {

constexpr unsigned kMostSilence = 30'000;  // milliseconds

}  // namespace

int setConnectionOptions(tcp_conn const& connection)
{
    int const descriptor = tcp_conn_fd(&connection);
    int const on = 1;
    (void)setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    (void)setsockopt(descriptor, IPPROTO_TCP, TCP_USER_TIMEOUT, &kMostSilence, sizeof kMostSilence);
    return 0;
}

}  // namespace telephone::sip
