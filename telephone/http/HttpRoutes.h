// The addresses of the telephone over HTTP: one table, from which requests are answered and the OpenAPI page is made.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <span>
#include <string>
#include <utility>

#include "telephone/access/Session.h"
#include "telephone/http/EventStream.h"
#include "telephone/http/HttpSite.h"

namespace telephone {

[[nodiscard]] std::span<Route const> telephoneRoutes();

// A telephone with its panel.
struct HttpAccess : HttpSite
{
    HttpAccess(SessionServices of, int mostStreams, std::chrono::milliseconds silence)
        : HttpSite(telephoneRoutes(), "/panel")
        , services(std::move(of))
        , streams{mostStreams, silence}
    {}
    void end() override { streams.end.signal(); }

    std::string nextName() { return "http-" + std::to_string(++sessions); }

    SessionServices const services;
    StreamLimits streams;
    std::atomic<std::uint64_t> sessions{0};  // opened so far
};

}  // namespace telephone
