// request, watch, store and exchange: the commands that are no telephone themselves.
#include <iostream>

#include <poll.h>

#include "telephone/applications/ApplicationClient.h"
#include "telephone/applications/SocketPath.h"
#include "telephone/base/Names.h"
#include "telephone/console/CommandError.h"
#include "telephone/console/RequestText.h"
#include "telephone/exchange/Exchange.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/StopSignal.h"
#include "telephone/management/StoreCommand.h"
#include "telephone/program/Programs.h"
#include "telephone/program/StartConfiguration.h"
#include "telephone/sip/EventLoop.h"

namespace telephone {

namespace {

std::string socketOf(CommandLine const& line)
{
    std::string const path = startConfiguration(line).applications.path;
    return path.empty() ? standardSocketPath() : path;
}

std::string requestOf(Words const& words)
{
    if (isRequestText(words.front())) {
        return joinWords(words);
    }
    if (findRequest(words.front()) == nullptr) {
        throw CommandError("no request " + words.front() + suggestion(words.front(), requestNames()));
    }
    return requestText(words);
}

}  // namespace

int runRequest(CommandLine const& line, StopSignal const& stop)
{
    std::string const request = requestOf(line.words);
    ApplicationClient client(socketOf(line));
    client.send(request);
    bool failed = false;
    while (auto const message = client.receive(stop.descriptor())) {
        if (message->kind == ApplicationMessageKind::kFinished) {
            return failed ? 1 : 0;
        }
        if (message->kind == ApplicationMessageKind::kAnswer) {
            std::cout << message->text << std::endl;
        }
        if (message->kind == ApplicationMessageKind::kError) {
            throw std::runtime_error(message->text);
        }
        failed = failed || message->text.starts_with("sfiFailure");
    }
    std::cerr << "telephone: the telephone has ended before it answered" << std::endl;
    return 1;
}

int runWatch(CommandLine const& line, StopSignal const& stop)
{
    ApplicationClient client(socketOf(line));
    client.send("<Method>Subscribe</Method>");
    while (auto const message = client.receive(stop.descriptor())) {
        if (message->kind == ApplicationMessageKind::kError || message->text == "sfiFailure") {
            throw std::runtime_error("the telephone does not tell its events: " + message->text);
        }
        if (message->kind == ApplicationMessageKind::kEvent) {
            std::cout << message->number << " " << message->text << std::endl;
        }
        if (message->kind == ApplicationMessageKind::kAnswer) {
            std::cerr << "watching" << std::endl;
        }
        if (!std::cout) {
            return 0;
        }
    }
    if (stop.isRaised()) {
        return 0;
    }
    std::cerr << "telephone: the telephone has ended" << std::endl;
    return 1;
}

int runStore(CommandLine const& line)
{
    return StoreCommand(startConfiguration(line), std::cout, std::cerr).run(line.words);
}

int runExchange(CommandLine const& line, StopSignal const& stop)
{
    Configuration const configuration = startConfiguration(line);
    sip::EventLoop loop;
    loop.start();
    exchange::ExchangeConfig config;
    config.port = static_cast<std::uint16_t>(line.port != 0 ? line.port : configuration.exchange.port);
    config.realm = configuration.exchange.realm;
    config.anyPassword = configuration.exchange.password;
    config.log = [](sip::LogLevel level, std::string const& text) {
        logLine(level < sip::LogLevel::kWarning ? kLogTrace : kLogWarning, "exchange", text);
    };
    exchange::Exchange const exchange(loop, std::move(config));
    std::cout << "the exchange is sip:" << exchange.hostPort() << std::endl;
    for (exchange::NumberRow const& row : exchange::kNumbers) {
        std::cout << "  " << row.number << " " << row.behaviour.does << std::endl;
    }
    constexpr int kForever = -1;
    pollfd waited{stop.descriptor(), POLLIN, 0};
    while (poll(&waited, 1, kForever) < 0) {
    }
    return 0;
}

}  // namespace telephone
