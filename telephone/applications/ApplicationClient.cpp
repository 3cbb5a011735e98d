#include "telephone/applications/ApplicationClient.h"

#include <array>
#include <cerrno>
#include <cstddef>

#include <poll.h>
#include <sys/socket.h>

#include "telephone/applications/SocketPath.h"
#include "telephone/time/Waiting.h"

namespace telephone {

namespace {

// Adds a message to the reply that it belongs to. True: it was the last one.
bool takeReply(ApplicationMessage& message, ApplicationReply& reply)
{
    switch (message.kind) {
    case MessageKind::kAnswer:
        reply.text = std::move(message.text);
        return false;
    case MessageKind::kReason:
        reply.reasons.push_back(std::move(message.text));
        return false;
    case MessageKind::kResult:
        reply.text = std::move(message.text);
        return true;
    case MessageKind::kFinished:
        return true;
    case MessageKind::kError:
    case MessageKind::kRequest:
    case MessageKind::kEvent:
    case MessageKind::kGap:
    case MessageKind::kState:
        break;
    }
    return false;
}

}  // namespace

Outcome<ApplicationClient> ApplicationClient::connect(std::string const& path)
{
    return connectTo(path).map([](FileDescriptor socket) { return ApplicationClient(std::move(socket)); });
}

Outcome<ApplicationReply> ApplicationClient::ask(std::string_view text, int stop)
{
    return send(text).and_then([&] { return reply(stop); });
}

Outcome<ApplicationReply> ApplicationClient::reply(int stop, SteadyClock::time_point deadline)
{
    ApplicationReply reply;
    while (true) {
        auto message = receive(stop, deadline);
        if (!message) {
            return tl::unexpected(message.error());
        }
        if (!*message) {
            return refuse(RefusalKind::kUnavailable, "the telephone has ended before it answered");
        }
        if ((*message)->kind == MessageKind::kError) {
            return refuse(RefusalKind::kBadInput, (*message)->text);
        }
        if (takeReply(**message, reply)) {
            return reply;
        }
    }
}

Outcome<> ApplicationClient::send(std::string_view text)
{
    std::string const message = std::string(text) + kMessageEnd;
    std::size_t sent = 0;
    while (sent < message.size()) {
        ssize_t const count = ::send(socket_.get(), message.data() + sent, message.size() - sent, MSG_NOSIGNAL);
        if (count < 0 && errno != EINTR) {
            return refuse(RefusalKind::kUnavailable, "the telephone has ended");
        }
        sent += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    return {};
}

Outcome<std::optional<ApplicationMessage>> ApplicationClient::receive(int stop, SteadyClock::time_point deadline)
{
    std::size_t end = 0;
    while ((end = input_.find(kMessageEnd)) == std::string::npos) {
        auto const isRead = read(stop, deadline);
        if (!isRead) {
            return tl::unexpected(isRead.error());
        }
        if (!*isRead) {
            return std::nullopt;
        }
    }
    std::string const text = input_.substr(0, end);
    input_.erase(0, end + 1);
    auto message = parseApplicationMessage(text);
    if (!message) {
        return refuse(RefusalKind::kUnavailable, "not a message of a telephone: " + text);
    }
    return message;
}

Outcome<bool> ApplicationClient::read(int stop, SteadyClock::time_point deadline)
{
    std::array<pollfd, 2> waited{{{socket_.get(), POLLIN, 0}, {stop, POLLIN, 0}}};
    int const ready = pollUntil(waited, deadline, "the telephone");
    if (ready < 0) {
        return errno == EINTR;
    }
    if (ready == 0) {
        return refuse(RefusalKind::kUnavailable, "the telephone does not answer");
    }
    if ((waited[1].revents & POLLIN) != 0) {
        return false;
    }
    std::array<char, std::size_t{64} * 1024> buffer;
    ssize_t const count = recv(socket_.get(), buffer.data(), buffer.size(), 0);
    if (count <= 0) {
        return false;
    }
    input_.append(buffer.data(), static_cast<std::size_t>(count));
    return true;
}

}  // namespace telephone
