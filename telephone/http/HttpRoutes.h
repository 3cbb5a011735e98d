// The addresses of the telephone over HTTP: one table, from which requests are answered and the OpenAPI page is made.
#pragma once

#include <atomic>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "telephone/access/Session.h"
#include "telephone/http/EventStream.h"

namespace httplib {
struct Request;
struct Response;
}  // namespace httplib

namespace telephone {

// What the handlers of all requests share. HttpServer owns it; any thread.
struct HttpAccess
{
    SessionServices const services;
    StreamLimits streams;
    std::string cookie{};                    // admits a browser; set before the first request
    std::atomic<std::uint64_t> sessions{0};  // opened so far

    std::string nextName() { return "http-" + std::to_string(++sessions); }
};

// One request, which the guard has admitted.
struct HttpExchange
{
    HttpAccess& access;
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

std::span<Route const> routes();

// Whether a route answers at a path: its own, or one with another last name in the place of a parameter,
// "/panel/{file}".
bool isAt(Route const& route, std::string_view path);

// {"error":"..."} with a status.
void answerError(httplib::Response& response, int status, std::string_view reason);

}  // namespace telephone
