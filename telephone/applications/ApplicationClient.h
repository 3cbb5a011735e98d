// The other end of the application socket: what `telephone request` and `telephone watch` speak with. One thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "telephone/applications/ApplicationProtocol.h"
#include "telephone/framework/FileDescriptor.h"

namespace telephone {

class ApplicationClient
{
public:
    explicit ApplicationClient(std::string const& path);  // throws std::runtime_error, see connectTo

    // Sends one request. Throws std::runtime_error when the telephone has gone.
    void send(std::string_view request);
    // The next message. Nothing: the telephone has ended, or `stop`, where one is given, became readable. Throws
    // std::runtime_error on a message that no telephone sends.
    std::optional<ApplicationMessage> receive(int stop = -1);

private:
    // Waits for bytes; false as receive.
    bool read(int stop);

    FileDescriptor socket_;
    std::string input_;
};

}  // namespace telephone
