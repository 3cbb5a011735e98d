#include "telephone/http/HttpSite.h"

#include <httplib.h>
#include <spdlog/fmt/fmt.h>

#include "telephone/panel/PanelFiles.h"

namespace telephone {

namespace {

// What a page may load: its own files and the program's answers, nothing else; no other page may show it in a frame.
constexpr char const* kPagePolicy =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self'; base-uri 'none'; "
    "form-action 'none'; frame-ancestors 'none'";

void answerPageFile(HttpExchange& exchange, std::string_view name)
{
    PanelFile const* const file = findPanelFile(name);
    if (file == nullptr) {
        return answerError(exchange.response, 404, fmt::format("the panel has no file \"{}\"", name));
    }
    exchange.response.set_header("Content-Security-Policy", kPagePolicy);
    exchange.response.set_content(file->content.data(), file->content.size(), std::string(file->type));
}

}  // namespace

bool isAt(Route const& route, std::string_view path)
{
    std::size_t const parameter = route.path.find('{');
    return parameter == std::string_view::npos
               ? path == route.path
               : path.size() > parameter && path.substr(0, parameter) == route.path.substr(0, parameter) &&
                     path.find('/', parameter) == std::string_view::npos;
}

std::string_view lastNameOf(HttpExchange const& exchange)
{
    std::string_view const path = exchange.request.path;
    return path.substr(path.rfind('/') + 1);
}

void answerJson(httplib::Response& response, Json const& value)
{
    response.set_content(lineOf(value) + "\n", kJsonType);
}

void answerError(httplib::Response& response, int status, std::string_view reason)
{
    response.status = status;
    answerJson(response, {{"error", reason}});
}

void listAddresses(HttpExchange& exchange)
{
    std::string text = "The telephone over HTTP. Every request needs the token.\n\n";
    for (Route const& each : exchange.site.routes) {
        text += fmt::format("{:<5} {:<14} {}\n", each.method, each.path, each.meaning);
    }
    exchange.response.set_content(text, "text/plain; charset=utf-8");
}

void answerPage(HttpExchange& exchange, std::string_view file)
{
    if (!exchange.request.has_param("token")) {
        return answerPageFile(exchange, file);
    }
    exchange.response.set_header("Set-Cookie", exchange.site.cookie);
    exchange.response.set_redirect(exchange.request.path, 303);
}

void servePageFile(HttpExchange& exchange)
{
    answerPageFile(exchange, lastNameOf(exchange));
}

}  // namespace telephone
