// One application at a telephone's socket, as bare as it can be: requests go out, messages come in. One thread.
#pragma once

#include <string>
#include <string_view>

class ApplicationPeer
{
public:
    // Throws std::runtime_error where nobody listens.
    explicit ApplicationPeer(std::string const& path);
    ~ApplicationPeer();
    ApplicationPeer(ApplicationPeer const&) = delete;
    ApplicationPeer& operator=(ApplicationPeer const&) = delete;

    // Sends a request with its end.
    void send(std::string_view request);
    // The next message without its end, good until the next one is asked for. Throws when the telephone has gone.
    std::string_view next();
    // The next message that begins so; others are passed over.
    std::string_view nextBeginning(std::string_view beginning);
    // Sends a request and waits until it is finished; the message with its answer is returned, or the empty text.
    std::string request(std::string_view text);

private:
    int socket_;
    std::string input_;
    std::size_t taken_ = 0;
};

// What stands between the tags of an element; empty where it is not there.
std::string_view elementOf(std::string_view message, std::string_view tag);
