// The commands request, watch, store and exchange, which start no telephone.
#include <iostream>

#include "telephone/CallServer.h"
#include "telephone/access/RequestShorthand.h"
#include "telephone/applications/ApplicationClient.h"
#include "telephone/applications/SocketPath.h"
#include "telephone/exchange/Exchange.h"
#include "telephone/framework/StopSignal.h"
#include "telephone/management/StoreCommand.h"
#include "telephone/program/Programs.h"
#include "telephone/program/StartConfiguration.h"
#include "telephone/sip/EventLoop.h"

namespace telephone {

namespace {

Outcome<ApplicationClient> connect(CommandLine const& line)
{
    return startConfiguration(line)
        .and_then([](Configuration const& configuration) {
            std::string const& path = configuration.applications.path;
            return path.empty() ? standardSocketPath() : path;
        })
        .and_then([](std::string const& path) { return ApplicationClient::connect(path); });
}

Outcome<std::string> requestOf(Words const& words)
{
    return isRequestText(words.front()) ? joinWords(words) : requestText(words);
}

tl::unexpected<Refusal> ended(char const* reason)
{
    return refuse(RefusalKind::kUnavailable, reason);
}

// Prints the messages that follow a request, up to its end.
Outcome<int> printReply(ApplicationClient& client, StopSignal const& stop)
{
    bool failed = false;
    while (true) {
        auto const message = client.receive(stop.descriptor());
        if (!message) {
            return tl::unexpected(message.error());
        }
        if (!*message) {
            return ended("the telephone has ended before it answered");
        }
        auto const& [kind, number, text] = **message;
        if (kind == MessageKind::kFinished) {
            return failed ? 1 : 0;
        }
        if (kind == MessageKind::kAnswer) {
            std::cout << text << std::endl;
        }
        if (kind == MessageKind::kError) {
            return ended(text.c_str());
        }
        failed = failed || text.starts_with("sfiFailure");
    }
}

Outcome<int> printEvents(ApplicationClient& client, StopSignal const& stop)
{
    while (true) {
        auto const message = client.receive(stop.descriptor());
        if (!message) {
            return tl::unexpected(message.error());
        }
        if (!*message) {
            return stop.isRaised() ? Outcome<int>(0) : ended("the telephone has ended");
        }
        auto const& [kind, number, text] = **message;
        if (kind == MessageKind::kError || text == "sfiFailure") {
            return refuse(RefusalKind::kUnavailable, "the telephone refuses a subscription to its events: " + text);
        }
        if (kind == MessageKind::kEvent) {
            std::cout << number << " " << text << std::endl;
        }
        if (kind == MessageKind::kAnswer) {
            std::cerr << "watching" << std::endl;
        }
        if (!std::cout) {
            return 0;
        }
    }
}

}  // namespace

Outcome<int> runRequest(CommandLine const& line, StopSignal const& stop)
{
    return requestOf(line.words).and_then([&](std::string const& request) {
        return connect(line).and_then([&](ApplicationClient client) {
            return client.send(request).and_then([&] { return printReply(client, stop); });
        });
    });
}

Outcome<int> runWatch(CommandLine const& line, StopSignal const& stop)
{
    return connect(line).and_then([&](ApplicationClient client) {
        return client.send("<Method>Subscribe</Method>").and_then([&] { return printEvents(client, stop); });
    });
}

Outcome<int> runStore(CommandLine const& line)
{
    return startConfiguration(line).map([&line](Configuration const& configuration) {
        return runStoreCommand(line.words, configuration, std::cout, std::cerr);
    });
}

Outcome<int> runExchange(CommandLine const& line, StopSignal const& stop)
{
    auto configuration = startConfiguration(line);
    if (!configuration) {
        return tl::unexpected(configuration.error());
    }
    if (line.port != 0) {
        configuration->exchange.port = line.port;
    }
    sip::EventLoop loop;
    loop.start();
    exchange::Exchange const exchange(loop, exchangeConfigOf(configuration->exchange));
    std::cout << "the exchange is sip:" << exchange.hostPort() << std::endl;
    for (exchange::NumberRow const& row : exchange::kNumbers) {
        std::cout << "  " << row.number << " " << row.behaviour.does << std::endl;
    }
    stop.wait();
    return 0;
}

}  // namespace telephone
