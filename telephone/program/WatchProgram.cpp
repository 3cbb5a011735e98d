// The command watch.
#include <functional>
#include <iostream>

#include <nlohmann/json.hpp>
#include <unistd.h>

#include "telephone/access/Words.h"
#include "telephone/display/ReadableLines.h"
#include "telephone/framework/StopSignal.h"
#include "telephone/program/ClientConnection.h"
#include "telephone/program/Programs.h"
#include "telephone/protocol/EventJson.h"

namespace telephone {

namespace {

// One message as one line; empty: it is not printed.
using Writer = std::function<std::string(ApplicationMessage const&)>;

std::string kindOf(ApplicationMessage const& message)
{
    return std::string(kMessageKindNames.at(static_cast<std::size_t>(message.kind)));
}

std::string rawLine(ApplicationMessage const& message)
{
    bool const isEvent = message.kind == MessageKind::kEvent;
    return (isEvent ? std::to_string(message.number) : kindOf(message)) + " " + message.text;
}

// A gap and a state are JSON already.
std::string jsonLine(ApplicationMessage const& message)
{
    bool const isEvent = message.kind == MessageKind::kEvent;
    return isEvent ? eventJson(message.number, message.time, message.text)
                   : "{\"" + kindOf(message) + "\":" + message.text + "}";
}

Writer readableWriter(std::string domain)
{
    bool const onTerminal = isatty(STDOUT_FILENO) == 1;
    ReadableLines lines({.ownDomain = std::move(domain), .colour = onTerminal});
    return [lines](ApplicationMessage const& message) mutable {
        if (message.kind == MessageKind::kEvent) {
            return lines.event(message.number, message.time, message.text);
        }
        if (message.kind == MessageKind::kGap) {
            auto const gap = nlohmann::json::parse(message.text);
            return lines.gap(std::chrono::system_clock::now(), gap.at("first"), gap.at("last"));
        }
        return std::string();
    };
}

Outcome<Writer> writerFor(CommandLine const& line, ApplicationClient& client, StopSignal const& stop)
{
    if (line.raw || line.json) {
        return Writer(line.raw ? rawLine : jsonLine);
    }
    return client.ask("hello", stop.descriptor()).map([](ApplicationReply const& reply) {
        return readableWriter(nlohmann::json::parse(*reply.text).at("domain"));
    });
}

std::string eventsCommand(CommandLine const& line)
{
    Words words{"events"};
    auto const add = [&words](char const* keyword, std::string const& value) {
        if (!value.empty()) {
            words.insert(words.end(), {keyword, value});
        }
    };
    add("after", line.after ? std::to_string(*line.after) : "");
    add("only", line.events);
    add("line", line.lines);
    return quoteWords(words);
}

// Prints until a signal ends this program, or standard output is closed.
Outcome<int> printEvents(ApplicationClient& client, StopSignal const& stop, Writer const& write)
{
    while (std::cout) {
        auto const message = client.receive(stop.descriptor());
        if (!message) {
            return tl::unexpected(message.error());
        }
        if (!*message) {
            return stop.isRaised() ? Outcome<int>(0) : refuse(RefusalKind::kUnavailable, "the telephone has ended");
        }
        if (std::string const text = write(**message); !text.empty()) {
            std::cout << text << std::endl;
        }
    }
    return 0;
}

}  // namespace

Outcome<int> runWatch(CommandLine const& line, StopSignal const& stop)
{
    return connectToTelephone(line).and_then([&](ApplicationClient client) {
        return writerFor(line, client, stop).and_then([&](Writer const& write) {
            return client.ask(eventsCommand(line), stop.descriptor()).and_then([&](ApplicationReply const&) {
                std::cerr << "watching" << std::endl;
                return printEvents(client, stop, write);
            });
        });
    });
}

}  // namespace telephone
