// The command watch.
#include <cstdio>
#include <iostream>

#include <nlohmann/json.hpp>

#include "telephone/access/Words.h"
#include "telephone/framework/StopSignal.h"
#include "telephone/program/ClientConnection.h"
#include "telephone/program/Output.h"
#include "telephone/program/Programs.h"

namespace telephone {

namespace {

// The parties in the telephone's own domain are numbers.
Outcome<Transcript> transcriptFor(CommandLine const& line, ApplicationClient& client, StopSignal const& stop)
{
    return client.ask("hello", stop.descriptor()).map([&line](ApplicationReply const& reply) {
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

// Prints until a signal ends this program, or standard output is closed.
Outcome<int> printEvents(ApplicationClient& client, StopSignal const& stop, Transcript& transcript)
{
    while (std::ferror(stdout) == 0) {
        auto const message = client.receive(stop.descriptor());
        if (!message) {
            return tl::unexpected(message.error());
        }
        if (!*message) {
            return stop.isRaised() ? Outcome<int>(0) : refuse(RefusalKind::kUnavailable, "the telephone has ended");
        }
        auto const& [kind, number, time, text] = **message;
        transcript.fitTo(terminalWidth());
        transcript.write({kind, text, number, time});
    }
    return 0;
}

}  // namespace

Outcome<int> runWatch(CommandLine const& line, StopSignal const& stop)
{
    return connectToTelephone(line).and_then([&](ApplicationClient client) {
        return transcriptFor(line, client, stop).and_then([&](Transcript transcript) {
            return client.ask(eventsCommand(line), stop.descriptor()).and_then([&](ApplicationReply const&) {
                std::cerr << "watching" << std::endl;
                return printEvents(client, stop, transcript);
            });
        });
    });
}

}  // namespace telephone
