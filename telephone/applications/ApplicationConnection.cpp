#include "telephone/applications/ApplicationConnection.h"

#include <array>
#include <cerrno>

#include <sys/socket.h>

#include "telephone/applications/ApplicationProtocol.h"
#include "telephone/framework/Channel.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/RequestRunner.h"

namespace telephone {

ApplicationConnection::ApplicationConnection(FileDescriptor socket, std::shared_ptr<Channel> channel,
                                             RequestRunner& runner)
    : socket_(std::move(socket))
    , channel_(std::move(channel))
    , runner_(runner)
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
    std::size_t end = 0;
    while (!isFull() && (end = input_.find(kMessageEnd, searched_)) != std::string::npos) {
        if (!skipping_) {
            checkLength(end - handled_);
        }
        if (!skipping_) {
            handle(std::string_view(input_).substr(handled_, end - handled_));
        }
        skipping_ = false;
        handled_ = searched_ = end + 1;
    }
    input_.erase(0, handled_);
    handled_ = 0;
    if (isFull()) {
        searched_ = 0;
        return;
    }
    searched_ = input_.size();
    checkLength(input_.size());
    if (skipping_) {
        input_.clear();
    }
    searched_ = input_.size();
    if (ended_) {
        refuseRest();
    }
}

void ApplicationConnection::checkLength(std::size_t length)
{
    if (skipping_ || length <= kLongestRequest) {
        return;
    }
    skipping_ = true;
    appendError(output_, "the request is longer than " + std::to_string(kLongestRequest) + " bytes; skipped");
}

void ApplicationConnection::handle(std::string_view request)
{
    RequestRunner::Reply const reply = runner_.run(*channel_, request);
    if (reply.answer) {
        appendAnswer(output_, *reply.answer);
    }
    if (reply.finished) {
        appendFinished(output_);
    }
}

void ApplicationConnection::refuseRest()
{
    if (!input_.empty()) {
        appendError(output_, "the last request has no end (a NUL byte); not handled");
    }
    input_.clear();
    searched_ = 0;
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
    while (!isFull()) {
        auto const events = channel_->events().take(kEventsAtOnce);
        if (events.empty()) {
            return;
        }
        for (NumberedEvent const& event : events) {
            appendEvent(output_, event.number, event.text);
        }
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
