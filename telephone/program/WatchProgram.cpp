// The command watch.
#include <cstdio>
#include <iostream>

#include <nlohmann/json.hpp>

#include "telephone/access/Words.h"
#include "telephone/applications/TelephoneConnection.h"
#include "telephone/framework/StopSignal.h"
#include "telephone/program/ClientConnection.h"
#include "telephone/program/Output.h"
#include "telephone/program/Programs.h"

namespace telephone {

namespace {

// The parties in the telephone's own domain are numbers.
Outcome<Transcript> transcriptFor(CommandLine const& line, telephone_client::Connection& client, StopSignal const& stop)
{
    return ask(client, "hello", stop.descriptor()).map([&line](telephone_client::Reply const& reply) {
        return openTranscript(line, nlohmann::json::parse(*reply.text).at("domain"));
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

// What comes after the command events; nothing for what a later version of the telephone may send besides.
std::optional<MessageKind> shownKind(telephone_client::Message::Kind kind)
{
    using Kind = telephone_client::Message::Kind;
    switch (kind) {
    case Kind::kEvent:
        return MessageKind::kEvent;
    case Kind::kGap:
        return MessageKind::kGap;
    case Kind::kState:
        return MessageKind::kState;
    case Kind::kAnswer:
    case Kind::kReason:
    case Kind::kFinished:
    case Kind::kResult:
    case Kind::kError:
    case Kind::kUnknown:
        break;
    }
    return std::nullopt;
}

// Prints until a signal ends this program, or standard output is closed.
Outcome<int> printEvents(telephone_client::Connection& client, StopSignal const& stop, Transcript& transcript)
{
    while (std::ferror(stdout) == 0) {
        auto const message = receive(client, stop.descriptor());
        if (!message) {
            return tl::unexpected(message.error());
        }
        if (!*message) {
            return stop.isRaised() ? Outcome<int>(0) : refuse(RefusalKind::kUnavailable, "the telephone has ended");
        }
        auto const& [kind, number, time, text] = **message;
        if (auto const shown = shownKind(kind)) {
            transcript.fitTo(terminalWidth());
            transcript.write({*shown, text, number, time.value_or(telephone_client::Moment())});
        }
    }
    return 0;
}

}  // namespace

Outcome<int> runWatch(CommandLine const& line, StopSignal const& stop)
{
    return connectToTelephone(line).and_then([&](telephone_client::Connection client) {
        return transcriptFor(line, client, stop).and_then([&](Transcript transcript) {
            return ask(client, eventsCommand(line), stop.descriptor()).and_then([&](telephone_client::Reply const&) {
                std::cerr << "watching" << std::endl;
                return printEvents(client, stop, transcript);
            });
        });
    });
}

}  // namespace telephone
