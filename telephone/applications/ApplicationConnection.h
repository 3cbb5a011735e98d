// One connected application, with the requests not handled yet and the messages not sent yet. ApplicationServer owns it
// and uses it on its own thread only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <sys/epoll.h>

#include "telephone/access/ClientSession.h"
#include "telephone/framework/FileDescriptor.h"
#include "telephone/time/SteadyClock.h"

namespace telephone {

class ApplicationConnection
{
public:
    ApplicationConnection(FileDescriptor socket, std::unique_ptr<ClientSession> session);

    // Reads once, handles every complete request and sends all answers with one write.
    void receive();
    // Sends events and other waiting messages, as far as the socket takes them.
    void send();

    // Whether to close the connection: it failed, or the application ended its side and everything was sent.
    [[nodiscard]] bool isOver() const { return over_ || (ended_ && output_.empty()); }
    // False while the application does not read its answers.
    [[nodiscard]] bool wantsToReceive() const { return !ended_ && !isFull(); }
    [[nodiscard]] bool wantsToSend() const { return !output_.empty() && !resumes(); }
    // When it sends again what the fault of a slow application keeps back; nothing: it keeps nothing back.
    [[nodiscard]] std::optional<SteadyClock::time_point> resumes() const;
    // Notes the events for which the socket is polled; false if they are unchanged.
    bool changeInterest(std::uint32_t interest) { return std::exchange(interest_, interest) != interest; }
    [[nodiscard]] int descriptor() const { return socket_.get(); }
    [[nodiscard]] ClientSession const& session() const { return *session_; }

private:
    static constexpr std::size_t kReadSize = std::size_t{64} * 1024;
    static constexpr std::size_t kMostOutput = std::size_t{1024} * 1024;
    static constexpr std::size_t kEventsAtOnce = 256;

    [[nodiscard]] std::size_t waiting() const { return output_.size() - written_; }
    [[nodiscard]] bool isFull() const { return waiting() >= kMostOutput; }
    // Handles complete requests until too many answers wait.
    void handleRequests();
    // Starts to skip a request that is too long.
    void checkLength(std::size_t length);
    void collectEvents();
    void write();
    // Bytes that may be sent now.
    [[nodiscard]] std::size_t permitted() const;

    FileDescriptor socket_;
    std::unique_ptr<ClientSession> session_;
    MessageSink const sink_;    // appends to the output
    std::string input_;         // received and not handled yet
    std::size_t searched_ = 0;  // bytes of the input known not to end the next request
    bool skipping_ = false;     // inside a request that is too long
    std::string output_;
    std::size_t written_ = 0;  // bytes of the output
    SteadyClock::time_point nextWrite_;
    bool ended_ = false;  // the application has ended its side
    bool over_ = false;
    std::uint32_t interest_ = EPOLLIN;
};

}  // namespace telephone
