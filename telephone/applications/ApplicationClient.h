// The application's end of the socket, for the programs that use a running telephone. One thread.
//
//     auto client = ApplicationClient::connect(path);
//     auto reply = client->ask("<Method>GetServiceState</Method>");   // "sfiSuccess,sfiServiceInService"
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "telephone/applications/ApplicationProtocol.h"
#include "telephone/base/Refusal.h"
#include "telephone/framework/FileDescriptor.h"
#include "telephone/time/SteadyClock.h"

namespace telephone {

// The whole reply to a request or a command.
struct ApplicationReply
{
    std::optional<std::string> text;   // the answer or the result; nothing: a request that has no answer
    std::vector<std::string> reasons;  // with `reasons on`
};

class ApplicationClient
{
public:
    // Refused as connectTo.
    [[nodiscard]] static Outcome<ApplicationClient> connect(std::string const& path);

    // Sends a request or a command and waits for the reply. Refused with the telephone's sentence if it refuses the
    // message, and if it ends or `stop` becomes readable before it has replied. Events that come meanwhile are lost.
    [[nodiscard]] Outcome<ApplicationReply> ask(std::string_view text, int stop = -1);

    // Sends a request or a command. Refused if the telephone has ended.
    [[nodiscard]] Outcome<> send(std::string_view text);
    // The reply to the first of those that were sent and have none yet. Refused as ask, and when the deadline comes
    // first; no later reply can be told apart from it then.
    [[nodiscard]] Outcome<ApplicationReply> reply(int stop = -1, SteadyClock::time_point deadline = kNoDeadline);
    // The next message. Nothing: the telephone has ended, or the descriptor `stop` became readable. Refused for a
    // message that no telephone sends, and when the deadline comes first.
    [[nodiscard]] Outcome<std::optional<ApplicationMessage>> receive(int stop = -1,
                                                                     SteadyClock::time_point deadline = kNoDeadline);

private:
    explicit ApplicationClient(FileDescriptor socket)
        : socket_(std::move(socket))
    {}
    // Waits for bytes. False: the telephone has ended, or `stop` became readable. Refused when the deadline comes
    // first.
    [[nodiscard]] Outcome<bool> read(int stop, SteadyClock::time_point deadline);

    FileDescriptor socket_;
    std::string input_;
};

}  // namespace telephone
