// The telephone over HTTP, or HTTPS with a certificate, for programs and pages on this machine: requests, commands, the
// state, and events as a stream. A thread works for each connection, so no reader delays another.
//
//     auto server = HttpServer::open({configuration.http, socket + ".token", socket + ".browsers"}, services);
//     std::cout << (*server)->address();   // "http://127.0.0.1:8080/?token=..."
#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "telephone/access/Session.h"
#include "telephone/base/Refusal.h"
#include "telephone/configuration/Configuration.h"

namespace telephone {

struct HttpSite;

class HttpServer
{
public:
    struct Settings
    {
        HttpConfiguration http;  // with an address
        std::string tokenFile;
        std::string browserFile;  // of the browsers' token; it stays for the next start
        int mostStreams = 64;
        std::chrono::milliseconds silence{15000};    // of a stream, until a comment is sent
        std::chrono::milliseconds stallLimit{5000};  // a reader that takes nothing for so long is disconnected
    };

    // Refused if the address is in use, or the certificate, its key or the file of the token cannot be used.
    [[nodiscard]] static Outcome<std::unique_ptr<HttpServer>> open(Settings const& settings,
                                                                   SessionServices const& services);
    // The same for another site than a telephone's.
    [[nodiscard]] static Outcome<std::unique_ptr<HttpServer>> open(Settings const& settings,
                                                                   std::unique_ptr<HttpSite> site);
    // Ends the streams and all other connections.
    ~HttpServer();
    HttpServer(HttpServer const&) = delete;
    HttpServer& operator=(HttpServer const&) = delete;

    // With the token.
    [[nodiscard]] std::string address() const;
    // Of the page, with the token; it admits the browser that opens it.
    [[nodiscard]] std::string panelAddress() const;
    [[nodiscard]] int port() const;

private:
    struct Parts;

    explicit HttpServer(std::unique_ptr<Parts> parts);

    std::unique_ptr<Parts> parts_;
};

}  // namespace telephone
