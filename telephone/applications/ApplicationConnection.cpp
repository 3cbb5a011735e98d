#include "telephone/applications/ApplicationConnection.h"

#include <array>
#include <cerrno>

#include <sys/socket.h>

#include "telephone/applications/ApplicationProtocol.h"
#include "telephone/framework/Log.h"

namespace telephone {

ApplicationConnection::ApplicationConnection(FileDescriptor socket, std::unique_ptr<ClientSession> session)
    : socket_(std::move(socket))
    , session_(std::move(session))
    , sink_([this](Message const& message) { appendMessage(output_, message); })
{}

void ApplicationConnection::receive()
{
    std::array<char, kReadSize> buffer;
    ssize_t const count = recv(socket_.get(), buffer.data(), buffer.size(), MSG_DONTWAIT);
    if (count > 0) {
        input_.append(buffer.data(), static_cast<std::size_t>(count));
    } else if (count == 0) {
        ended_ = true;
    } else if (errno != EAGAIN && errno != EINTR) {
        over_ = true;
    }
    send();
}

void ApplicationConnection::handleRequests()
{
    std::size_t handled = 0;
    std::size_t end = 0;
    while (!isFull() && (end = input_.find(kMessageEnd, searched_)) != std::string::npos) {
        checkLength(end - handled);
        if (!skipping_) {
            // The NUL behind the message is part of the input.
            session_->handle(std::string_view(input_).substr(handled, end - handled), sink_);
        }
        skipping_ = false;
        handled = searched_ = end + 1;
    }
    input_.erase(0, handled);
    searched_ = 0;
    if (isFull()) {
        return;
    }
    checkLength(input_.size());
    if (ended_ && !input_.empty() && !skipping_) {
        sink_({MessageKind::kError, "the last request has no end (a NUL byte); not handled"});
    }
    if (ended_ || skipping_) {
        input_.clear();
    }
    searched_ = input_.size();
}

void ApplicationConnection::checkLength(std::size_t length)
{
    if (skipping_ || length <= kLongestRequest) {
        return;
    }
    skipping_ = true;
    sink_({MessageKind::kError, "the request is longer than " + std::to_string(kLongestRequest) + " bytes; skipped"});
}

void ApplicationConnection::send()
{
    while (!over_) {
        handleRequests();
        collectEvents();
        if (output_.empty()) {
            return;
        }
        write();
        if (!output_.empty()) {
            return;
        }
    }
}

void ApplicationConnection::collectEvents()
{
    while (!isFull() && session_->takeEvents(kEventsAtOnce, sink_)) {
    }
}

void ApplicationConnection::write()
{
    ssize_t const count = ::send(socket_.get(), output_.data() + written_, waiting(), MSG_DONTWAIT | MSG_NOSIGNAL);
    if (count < 0) {
        over_ = errno != EAGAIN && errno != EINTR;
        return;
    }
    written_ += static_cast<std::size_t>(count);
    if (written_ == output_.size()) {
        output_.clear();
        written_ = 0;
    }
}

}  // namespace telephone
