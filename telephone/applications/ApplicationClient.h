// The application's end of the socket, for `telephone request` and `telephone watch`. One thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "telephone/applications/ApplicationProtocol.h"
#include "telephone/base/Refusal.h"
#include "telephone/framework/FileDescriptor.h"

namespace telephone {

class ApplicationClient
{
public:
    // Refused as connectTo.
    [[nodiscard]] static Outcome<ApplicationClient> connect(std::string const& path);

    // Sends one request. Refused if the telephone has ended.
    [[nodiscard]] Outcome<> send(std::string_view request);
    // The next message. Nothing: the telephone has ended, or the descriptor `stop` became readable. Refused for a
    // message that no telephone sends.
    [[nodiscard]] Outcome<std::optional<ApplicationMessage>> receive(int stop = -1);

private:
    explicit ApplicationClient(FileDescriptor socket)
        : socket_(std::move(socket))
    {}
    // Waits for bytes. False: the telephone has ended, or `stop` became readable.
    bool read(int stop);

    FileDescriptor socket_;
    std::string input_;
};

}  // namespace telephone
