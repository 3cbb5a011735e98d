#include "telephone/program/WaysIn.h"

#include "telephone/Telephone.h"
#include "telephone/applications/SocketPath.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/StopSignal.h"

namespace telephone {

namespace {

using Server = std::unique_ptr<ApplicationServer>;

// Null: another telephone has the socket, and this one does not need it.
Outcome<Server> openSocket(CommandLine const& line, Configuration const& configuration, Telephone& telephone,
                           StopSignal const& stop)
{
    ApplicationSocketConfiguration const& wanted = configuration.applications;
    auto server = openApplicationSocket(wanted, sessionsOf(telephone.sessions([&stop] { stop.raise(); })));
    // A script needs no socket, so another telephone at the default path does not prevent it.
    bool const plays = line.action == Action::kPlay || line.action == Action::kTour || line.action == Action::kReplay;
    bool const isTaken = !server && server.error().kind == RefusalKind::kAlreadyExists;
    if (isTaken && plays && wanted.path.empty()) {
        log(kLogInfo, "telephone", "no application socket: {}", server.error().reason);
        return Server();
    }
    return server;
}

}  // namespace

Outcome<std::unique_ptr<ApplicationServer>> openApplicationSocket(ApplicationSocketConfiguration const& wanted,
                                                                  SessionFactory sessions)
{
    auto const path = wanted.path.empty() ? standardSocketPath() : wanted.path;
    return path.and_then([&](std::string const& socket) {
        ApplicationServer::Settings const settings{socket, static_cast<std::size_t>(wanted.maximumApplications),
                                                   static_cast<std::size_t>(wanted.queuedMessages)};
        return ApplicationServer::open(settings, std::move(sessions));
    });
}

Outcome<WaysIn> openWaysIn(CommandLine const& line, Configuration const& configuration, Telephone& telephone,
                           StopSignal const& stop)
{
    return openSocket(line, configuration, telephone, stop).and_then([&](Server socket) -> Outcome<WaysIn> {
        if (configuration.http.address.empty()) {
            return WaysIn{std::move(socket), nullptr};
        }
        if (socket == nullptr) {
            log(kLogInfo, "telephone", "no HTTP: its token is kept beside the application socket");
            return WaysIn{};
        }
        HttpServer::Settings const settings{configuration.http, socket->path() + ".token",
                                            socket->path() + ".browsers"};
        return HttpServer::open(settings, telephone.sessions([&stop] { stop.raise(); }))
            .map([&socket](std::unique_ptr<HttpServer> http) {
                return WaysIn{std::move(socket), std::move(http)};
            });
    });
}

}  // namespace telephone
