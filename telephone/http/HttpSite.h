// What a server offers: a table of addresses with their handlers, and what these share. Each program that serves HTTP
// has a site of its own, with its page for a browser; the server, the guard and what is common to all pages are one.
// HttpServer owns the site; its handlers run on the threads of the connections.
#pragma once

#include <array>
#include <span>
#include <string>
#include <string_view>

#include "telephone/protocol/JsonText.h"

namespace httplib {
struct Request;
struct Response;
}  // namespace httplib

namespace telephone {

struct HttpSite;

// One request, which the guard has admitted.
struct HttpExchange
{
    HttpSite& site;
    httplib::Request const& request;
    std::string const& body;
    httplib::Response& response;
};

struct RouteParameter
{
    std::string_view place;  // "query", "header" or "path"
    std::string_view name;
    std::string_view type;  // "string" or "integer"; empty: it has no value
    std::string_view meaning;
};

// What a body contains.
struct RouteContent
{
    std::string_view type;    // "application/json"
    std::string_view schema;  // its name in the OpenAPI page
};

struct Route
{
    std::string_view method;
    std::string_view path;
    std::string_view meaning;
    std::span<RouteParameter const> parameters;
    std::span<RouteContent const> takes;
    std::span<RouteContent const> answers;
    void (*handler)(HttpExchange&);
};

struct HttpSite
{
    // `page` is the path of the page for a browser.
    HttpSite(std::span<Route const> offered, std::string_view page)
        : routes(offered)
        , pagePath(page)
    {}
    virtual ~HttpSite() = default;
    HttpSite(HttpSite const&) = delete;
    HttpSite& operator=(HttpSite const&) = delete;

    // Ends answers that would go on.
    virtual void end() {}

    std::span<Route const> const routes;
    std::string_view const pagePath;
    std::string cookie{};  // admits a browser; set before the first request
};

// Whether a route answers at a path: its own, or one with another last name in the place of a parameter,
// "/panel/{file}".
bool isAt(Route const& route, std::string_view path);

// The name in the place of the parameter.
std::string_view lastNameOf(HttpExchange const& exchange);

constexpr char const* kJsonType = "application/json";

void answerJson(httplib::Response& response, Json const& value);

// {"error":"..."} with a status.
void answerError(httplib::Response& response, int status, std::string_view reason);

// --- handlers that every site has

// The list of its addresses.
void listAddresses(HttpExchange& exchange);

// A page of the panel. With the token in the address it sets the cookie and leads to the address without it, which may
// be seen and kept.
void answerPage(HttpExchange& exchange, std::string_view file);

// What the pages consist of.
void servePageFile(HttpExchange& exchange);
inline constexpr std::array kPageFile{RouteParameter{"path", "file", "string", "its name"}};
inline constexpr std::array kPageFiles{RouteContent{"text/javascript", "Text"}, RouteContent{"text/css", "Text"},
                                       RouteContent{"image/svg+xml", "Text"}};

}  // namespace telephone
