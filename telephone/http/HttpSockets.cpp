#include "telephone/http/HttpSockets.h"

#include <filesystem>
#include <string>
#include <system_error>

#include <httplib.h>
#include <spdlog/fmt/fmt.h>
#include <sys/socket.h>

namespace telephone {

namespace {

constexpr int kSendBuffer = 256 * 1024;  // bytes, of one connection
constexpr int kWaitingConnections = 128;

int portOf(int socket)
{
    sockaddr_storage address{};
    socklen_t length = sizeof(address);
    if (getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        return 0;
    }
    if (address.ss_family == AF_INET) {
        return ntohs(reinterpret_cast<sockaddr_in const&>(address).sin_port);
    }
    return address.ss_family == AF_INET6 ? ntohs(reinterpret_cast<sockaddr_in6 const&>(address).sin6_port) : 0;
}

bool useCertificate(SSL_CTX& context, HttpConfiguration const& http)
{
    return SSL_CTX_set_min_proto_version(&context, TLS1_2_VERSION) == 1 &&
           SSL_CTX_use_certificate_chain_file(&context, http.certificate.c_str()) == 1 &&
           SSL_CTX_use_PrivateKey_file(&context, http.key.c_str(), SSL_FILETYPE_PEM) == 1;
}

}  // namespace

Outcome<std::unique_ptr<httplib::Server>> makeHttpServer(HttpConfiguration const& http)
{
    if (http.certificate.empty()) {
        return std::make_unique<httplib::Server>();
    }
    auto server =
        std::make_unique<httplib::SSLServer>([&http](SSL_CTX& context) { return useCertificate(context, http); });
    if (!server->is_valid()) {
        return refuse(RefusalKind::kUnavailable,
                      fmt::format("the certificate {} and the key {} cannot be used: both must be PEM files that fit "
                                  "each other",
                                  http.certificate, http.key));
    }
    return server;
}

int listenForHttp(httplib::Server& server, HostPort const& place)
{
    int listener = -1;
    // In place of the library's own options, which let several programs share the port.
    server.set_socket_options([&listener](int socket) {
        int const yes = 1;
        setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof(yes));
        setsockopt(socket, SOL_SOCKET, SO_SNDBUF, &kSendBuffer, sizeof(kSendBuffer));  // connections inherit it
        listener = socket;
    });
    bool const isBound =
        place.port == 0 ? server.bind_to_any_port(place.host) > 0 : server.bind_to_port(place.host, place.port);
    // The library keeps five at most waiting; further ones would be slow to connect.
    return isBound && ::listen(listener, kWaitingConnections) == 0 ? portOf(listener) : 0;
}

void endConnections(int port)
{
    std::error_code unknown;
    for (auto const& entry : std::filesystem::directory_iterator("/proc/self/fd", unknown)) {
        int const descriptor = std::stoi(entry.path().filename());
        if (portOf(descriptor) == port) {
            ::shutdown(descriptor, SHUT_RDWR);
        }
    }
}

}  // namespace telephone
