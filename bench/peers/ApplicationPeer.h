// A minimal application at a telephone's socket: sends requests and receives messages. One thread.
#pragma once

#include <string>
#include <string_view>

class ApplicationPeer
{
public:
    // Throws std::runtime_error if nothing listens there.
    explicit ApplicationPeer(std::string const& path);
    ~ApplicationPeer();
    ApplicationPeer(ApplicationPeer const&) = delete;
    ApplicationPeer& operator=(ApplicationPeer const&) = delete;

    // Sends a request and its terminator.
    void send(std::string_view request);
    // The next message without its terminator, valid until the next call. Throws when the telephone is gone.
    std::string_view next();
    // The next message with this beginning; others are skipped.
    std::string_view nextBeginning(std::string_view beginning);
    // Sends a request and waits until it is finished. Returns the message with its answer, empty for a request without
    // one.
    std::string request(std::string_view text);

private:
    int socket_;
    std::string input_;
    std::size_t taken_ = 0;
};

// The text between the tags of an element; empty if the element is missing.
std::string_view elementOf(std::string_view message, std::string_view tag);
