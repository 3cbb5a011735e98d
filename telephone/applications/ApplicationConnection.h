// One application at the socket: what it sent and has not been handled, what it is sent and has not read. Owned by the
// ApplicationServer and used on its thread alone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include <sys/epoll.h>

#include "telephone/framework/FileDescriptor.h"

namespace telephone {

class Channel;
class RequestRunner;

class ApplicationConnection
{
public:
    ApplicationConnection(FileDescriptor socket, std::shared_ptr<Channel> channel, RequestRunner& runner);

    // Takes what one read brings, handles every request that is complete, and answers them all with one write.
    void receive();
    // Writes events and what else waits, as far as the application takes it.
    void send();

    // It has gone, or has ended its side and got everything: to be closed.
    [[nodiscard]] bool isOver() const { return over_ || (ended_ && output_.empty()); }
    // An application that does not read its answers is not asked for more requests.
    [[nodiscard]] bool wantsToReceive() const { return !ended_ && !isFull(); }
    [[nodiscard]] bool wantsToSend() const { return !output_.empty(); }
    // Notes what the socket is polled for; false where it is that already.
    bool changeInterest(std::uint32_t interest) { return std::exchange(interest_, interest) != interest; }
    [[nodiscard]] int descriptor() const { return socket_.get(); }
    [[nodiscard]] std::shared_ptr<Channel> const& channel() const { return channel_; }

private:
    static constexpr std::size_t kReadSize = std::size_t{64} * 1024;
    static constexpr std::size_t kMostOutput = std::size_t{1024} * 1024;
    static constexpr std::size_t kEventsAtOnce = 256;

    [[nodiscard]] std::size_t waiting() const { return output_.size() - written_; }
    [[nodiscard]] bool isFull() const { return waiting() >= kMostOutput; }
    // Handles the requests that are complete, until the answers are more than should wait.
    void handleRequests();
    // The request is part of the input, its end included.
    void handle(std::string_view request);
    void checkLength(std::size_t length);
    void refuseRest();
    void collectEvents();
    void write();

    FileDescriptor socket_;
    std::shared_ptr<Channel> channel_;
    RequestRunner& runner_;
    std::string input_;         // what was received and not handled
    std::size_t handled_ = 0;   // bytes of the input
    std::size_t searched_ = 0;  // bytes of the input that hold no end of the next request
    bool skipping_ = false;     // inside a request that is too long
    std::string output_;
    std::size_t written_ = 0;  // of the output
    bool ended_ = false;       // the application sends no more
    bool over_ = false;
    std::uint32_t interest_ = EPOLLIN;
};

}  // namespace telephone
