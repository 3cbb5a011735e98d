// The public client (clients/cpp) as the telephone's own programs use it: with the telephone's waits and refusals.
//
//     auto client = connectTo(path);
//     auto reply = ask(*client, "<Method>GetServiceState</Method>");   // "sfiSuccess,sfiServiceInService"
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "TelephoneClient.h"
#include "telephone/base/Refusal.h"
#include "telephone/time/SteadyClock.h"

namespace telephone {

// A connection to the telephone at a path. A refusal says how to start one.
[[nodiscard]] Outcome<telephone_client::Connection> connectTo(std::string const& path);

// Sends a request or a command and waits for the reply. Refused with the telephone's sentence if it refuses the
// message, and if it ends or `stop` becomes readable before it has replied. Events that come meanwhile are lost.
[[nodiscard]] Outcome<telephone_client::Reply> ask(telephone_client::Connection& client, std::string_view text,
                                                   int stop = -1);

// Sends a request or a command. Refused if the telephone has ended.
[[nodiscard]] Outcome<> send(telephone_client::Connection& client, std::string_view text);
// The reply to the first of those that were sent and have none yet. Refused as ask, and when the deadline comes first;
// no later reply can be told apart from it then.
[[nodiscard]] Outcome<telephone_client::Reply> replyOf(telephone_client::Connection& client, int stop = -1,
                                                       SteadyClock::time_point deadline = kNoDeadline);
// The next message. Nothing: the telephone has ended, or the descriptor `stop` became readable. Refused for a message
// that no telephone sends.
[[nodiscard]] Outcome<std::optional<telephone_client::Message>> receive(telephone_client::Connection& client,
                                                                        int stop = -1);

}  // namespace telephone
