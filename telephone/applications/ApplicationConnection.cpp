#include "telephone/applications/ApplicationConnection.h"

#include <algorithm>
#include <array>
#include <cerrno>

#include <sys/socket.h>

#include "telephone/applications/ApplicationProtocol.h"
#include "telephone/framework/Log.h"

namespace telephone {

namespace {

constexpr int kPortionsPerSecond = 10;
constexpr std::int64_t kMicrosecondsPerSecond = 1'000'000;

}  // namespace

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

std::size_t ApplicationConnection::permitted() const
{
    int const rate = session_->readingRate();
    if (rate == 0) {
        return waiting();
    }
    auto const portion = static_cast<std::size_t>(std::max(rate / kPortionsPerSecond, 1));
    return SteadyClock::now() < nextWrite_ ? 0 : std::min(waiting(), portion);
}

std::optional<SteadyClock::time_point> ApplicationConnection::resumes() const
{
    bool const waits = !output_.empty() && SteadyClock::now() < nextWrite_;
    return waits ? std::optional(nextWrite_) : std::nullopt;
}

void ApplicationConnection::write()
{
    std::size_t const most = permitted();
    if (most == 0) {
        return;
    }
    ssize_t const count = ::send(socket_.get(), output_.data() + written_, most, MSG_DONTWAIT | MSG_NOSIGNAL);
    if (count < 0) {
        over_ = errno != EAGAIN && errno != EINTR;
        return;
    }
    written_ += static_cast<std::size_t>(count);
    if (int const rate = session_->readingRate(); rate > 0) {
        nextWrite_ = SteadyClock::now() + std::chrono::microseconds(kMicrosecondsPerSecond * count / rate);
    }
    if (written_ == output_.size()) {
        output_.clear();
        written_ = 0;
    }
}

}  // namespace telephone
