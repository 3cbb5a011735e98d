#include "applications/ApplicationConnection.h"

#include <sys/socket.h>

#include <array>
#include <cerrno>

#include "applications/ApplicationProtocol.h"
#include "framework/Channel.h"
#include "framework/Log.h"
#include "framework/RequestRunner.h"

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
    if (count > 0)
        take({buffer.data(), static_cast<std::size_t>(count)});
    else if (count == 0)
        end();
    else if (errno != EAGAIN && errno != EINTR)
        over_ = true;
    send();
}

void ApplicationConnection::take(std::string_view bytes)
{
    while (!bytes.empty()) {
        auto const end = bytes.find(kMessageEnd);
        bool const complete = end != std::string_view::npos;
        std::string_view const piece = bytes.substr(0, end);
        bytes.remove_prefix(complete ? end + 1 : bytes.size());
        if (!skipping_ && input_.size() + piece.size() > kLongestRequest) {
            skipping_ = true;
            input_ = {};
            appendError(output_, "the request is longer than " + std::to_string(kLongestRequest) + " bytes; skipped");
        }
        if (!skipping_)
            input_ += piece;
        if (!complete)
            continue;
        if (!skipping_)
            handle(input_);
        skipping_ = false;
        input_.clear();
    }
}

void ApplicationConnection::handle(std::string const& request)
{
    RequestRunner::Outcome const outcome = runner_.run(*channel_, request);
    if (outcome.answer)
        appendAnswer(output_, *outcome.answer);
    if (outcome.finished)
        appendFinished(output_);
}

void ApplicationConnection::end()
{
    ended_ = true;
    if (!input_.empty())
        appendError(output_, "the last request has no end (a NUL byte); not handled");
    input_.clear();
}

void ApplicationConnection::send()
{
    while (!over_) {
        collectEvents();
        if (output_.empty())
            return;
        std::size_t const before = waiting();
        write();
        if (waiting() == before || !output_.empty())
            return;
    }
}

void ApplicationConnection::collectEvents()
{
    while (waiting() < kMostOutput) {
        auto const events = channel_->events().take(kEventsAtOnce);
        if (events.empty())
            return;
        for (NumberedEvent const& event : events)
            appendEvent(output_, event.number, event.text);
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
