#include "telephone/http/HttpServer.h"

#include <algorithm>
#include <future>
#include <thread>
#include <utility>

#include <httplib.h>
#include <spdlog/fmt/fmt.h>

#include "telephone/configuration/HostPort.h"
#include "telephone/framework/Log.h"
#include "telephone/http/AccessToken.h"
#include "telephone/http/ConnectionThreads.h"
#include "telephone/http/HttpGuard.h"
#include "telephone/http/HttpRoutes.h"
#include "telephone/http/HttpSockets.h"
#include "telephone/time/VirtualTime.h"

namespace telephone {

namespace {

constexpr char const* kHttpComponent = "http";
constexpr std::size_t kLongestBody = std::size_t{4} * 1024 * 1024;
constexpr std::size_t kRequestThreads = 32;  // beside those of the streams
constexpr std::chrono::seconds kReadTimeout{5};

}  // namespace

struct HttpServer::Parts
{
    Parts(Settings const& settings, std::unique_ptr<HttpSite> offered, std::unique_ptr<httplib::Server> made,
          AccessToken drawn, AccessToken kept, int boundPort)
        : site(std::move(offered))
        , token(std::move(drawn))
        , browsers(std::move(kept))
        , port(boundPort)
        , guard(hostPortOf(settings.http.address)->host, port, !settings.http.certificate.empty(), token, browsers)
        , server(std::move(made))
    {
        site->cookie = guard.cookie();
        setLimits(settings.stallLimit);
        setHandlers();
    }

    void setLimits(std::chrono::milliseconds stallLimit) const
    {
        server->set_keep_alive_max_count(1);  // so that an idle connection has no thread
        server->set_read_timeout(kReadTimeout);
        server->set_write_timeout(stallLimit);
        server->set_payload_max_length(kLongestBody);
        server->set_default_headers({{"Cache-Control", "no-store"},
                                     {"Referrer-Policy", "no-referrer"},  // the address has the token
                                     {"X-Content-Type-Options", "nosniff"}});
    }

    void setHandlers()
    {
        server->set_pre_routing_handler(
            [this](auto const& request, auto& response) { return admit(request, response); });
        server->Get(".*", [this](auto const& request, auto& response) { answer(request, {}, response); });
        server->Post(".*", [this](auto const& request, auto& response, auto const& content) {
            readAndAnswer(request, content, response);
        });
        server->set_error_handler([](httplib::Request const&, httplib::Response& response) {
            if (response.body.empty()) {
                answerError(response, response.status, "the request is not valid HTTP, or too long");
            }
        });
        server->set_exception_handler(
            [](auto const&, auto& response, std::exception_ptr const& error) { reportFailure(response, error); });
    }

    static void reportFailure(httplib::Response& response, std::exception_ptr const& error)
    {
        try {
            std::rethrow_exception(error);
        } catch (std::exception const& failure) {
            log(kLogFailure, kHttpComponent, "a request failed: {}", failure.what());
        }
        answerError(response, 500, "the request failed; the telephone's log says why");
    }

    // Refuses what no route takes, before its body is read.
    httplib::Server::HandlerResponse admit(httplib::Request const& request, httplib::Response& response) const
    {
        auto const refusal = refusalOf(request, response);
        if (!refusal) {
            return httplib::Server::HandlerResponse::Unhandled;
        }
        log(kLogWarning, kHttpComponent, "{} from {} is refused: {}", request.method, request.remote_addr,
            refusal->reason);
        answerError(response, refusal->status, refusal->reason);
        return httplib::Server::HandlerResponse::Handled;
    }

    std::optional<HttpRefusal> refusalOf(httplib::Request const& request, httplib::Response& response) const
    {
        if (auto refused = guard.check(request)) {
            if (refused->status == 401) {
                response.set_header("WWW-Authenticate", "Bearer");
            }
            return refused;
        }
        auto const* const route = find(request.path);
        if (route == nullptr) {
            return HttpRefusal{404, "there is no such address; GET / lists them"};
        }
        if (route->method != request.method) {
            response.set_header("Allow", std::string(route->method));
            return HttpRefusal{405, fmt::format("{} takes {} only", route->path, route->method)};
        }
        if (request.method == "POST" && !request.has_header("Content-Length") &&
            !request.has_header("Transfer-Encoding")) {
            return HttpRefusal{411, "the request has no body: send one with a Content-Length"};
        }
        if (request.is_multipart_form_data()) {
            return HttpRefusal{415, "a form is not understood: send text or JSON"};
        }
        return std::nullopt;
    }

    void readAndAnswer(httplib::Request const& request, httplib::ContentReader const& content,
                       httplib::Response& response)
    {
        std::string body;
        bool const isWhole = content([&body](char const* data, std::size_t length) {
            body.append(data, std::min(length, kLongestBody + 1 - body.size()));
            return body.size() <= kLongestBody;
        });
        if (response.status == 413 || body.size() > kLongestBody) {
            return answerError(response, 413, fmt::format("the body is longer than {} bytes", kLongestBody));
        }
        if (!isWhole) {
            return answerError(response, 400, "the body is not complete");
        }
        answer(request, body, response);
    }

    void answer(httplib::Request const& request, std::string const& body, httplib::Response& response)
    {
        Visit const visit;  // the library's threads are not the telephone's
        HttpExchange exchange{*site, request, body, response};
        find(request.path)->handler(exchange);
    }

    Route const* find(std::string_view path) const
    {
        auto const all = site->routes;
        auto const found = std::find_if(all.begin(), all.end(), [path](Route const& each) { return isAt(each, path); });
        return found == all.end() ? nullptr : &*found;
    }

    void listen(int mostStreams)
    {
        std::promise<void> started;
        server->new_task_queue = [&] {
            auto* const threads = new ConnectionThreads(static_cast<std::size_t>(mostStreams) + kRequestThreads,
                                                        [port = port] { endConnections(port); });
            started.set_value();
            return threads;
        };
        thread = std::thread([this] { server->listen_after_bind(); });
        started.get_future().wait();
    }

    std::unique_ptr<HttpSite> const site;
    AccessToken const token;
    AccessToken const browsers;
    int const port;
    HttpGuard const guard;
    std::unique_ptr<httplib::Server> const server;
    std::thread thread;
};

Outcome<std::unique_ptr<HttpServer>> HttpServer::open(Settings const& settings, SessionServices const& services)
{
    return open(settings, std::make_unique<HttpAccess>(services, settings.mostStreams, settings.silence));
}

Outcome<std::unique_ptr<HttpServer>> HttpServer::open(Settings const& settings, std::unique_ptr<HttpSite> site)
{
    auto const place = hostPortOf(settings.http.address);
    if (!place) {
        return refuse(RefusalKind::kBadInput, fmt::format("\"{}\" is not host:port", settings.http.address));
    }
    auto server = makeHttpServer(settings.http);
    if (!server) {
        return tl::unexpected(server.error());
    }
    int const port = listenForHttp(**server, *place);
    if (port == 0) {
        return refuse(RefusalKind::kUnavailable,
                      fmt::format("cannot listen at {} for HTTP: another program uses the port, or the address is not "
                                  "one of this machine",
                                  settings.http.address));
    }
    auto browsers = AccessToken::keep(settings.browserFile);
    if (!browsers) {
        return tl::unexpected(browsers.error());
    }
    return AccessToken::create(settings.tokenFile).map([&](AccessToken token) {
        auto parts = std::make_unique<Parts>(settings, std::move(site), std::move(*server), std::move(token),
                                             std::move(*browsers), port);
        parts->listen(settings.mostStreams);
        log(kLogInfo, kHttpComponent, "listening at {}", parts->guard.origin());
        return std::unique_ptr<HttpServer>(new HttpServer(std::move(parts)));
    });
}

HttpServer::HttpServer(std::unique_ptr<Parts> parts)
    : parts_(std::move(parts))
{}

HttpServer::~HttpServer()
{
    parts_->site->end();
    Absence const absence;  // so that requests under way can end
    parts_->server->stop();
    parts_->thread.join();
}

std::string HttpServer::address() const
{
    return parts_->guard.origin() + "/?token=" + parts_->token.text();
}

std::string HttpServer::panelAddress() const
{
    return parts_->guard.origin() + std::string(parts_->site->pagePath) + "?token=" + parts_->token.text();
}

int HttpServer::port() const
{
    return parts_->port;
}

}  // namespace telephone
