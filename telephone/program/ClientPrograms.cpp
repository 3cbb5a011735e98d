// The commands do and request, for a running telephone.
#include <iostream>

#include "telephone/access/RequestShorthand.h"
#include "telephone/applications/TelephoneConnection.h"
#include "telephone/framework/StopSignal.h"
#include "telephone/program/ClientConnection.h"
#include "telephone/program/Programs.h"
#include "telephone/protocol/MessageText.h"

namespace telephone {

namespace {

Outcome<std::string> requestOf(Words const& words)
{
    return isRequestText(words.front()) ? joinWords(words) : requestText(words);
}

// Says all lines but the last, which prepare the connection, then prints the reply to the last one.
Outcome<int> say(CommandLine const& line, StopSignal const& stop, std::vector<std::string> const& texts)
{
    auto client = connectToTelephone(line);
    if (!client) {
        return tl::unexpected(client.error());
    }
    Outcome<telephone_client::Reply> reply;
    for (std::string const& each : texts) {
        reply = ask(*client, each, stop.descriptor());
        if (!reply) {
            return tl::unexpected(reply.error());
        }
    }
    for (std::string const& reason : reply->reasons) {
        std::cerr << reason << std::endl;
    }
    std::string const text = reply->text.value_or("");
    if (!text.empty()) {
        std::cout << text << std::endl;
    }
    return reportsFailure(text) ? 1 : 0;
}

}  // namespace

Outcome<int> runDo(CommandLine const& line, StopSignal const& stop)
{
    return say(line, stop, {quoteWords(line.words)});
}

Outcome<int> runRequest(CommandLine const& line, StopSignal const& stop)
{
    return requestOf(line.words).and_then([&](std::string const& request) {
        return say(line, stop, {"reasons on", line.lenient ? "strict off" : "strict on", request});
    });
}

}  // namespace telephone
