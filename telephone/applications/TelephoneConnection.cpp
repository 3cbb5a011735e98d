#include "telephone/applications/TelephoneConnection.h"

#include <array>
#include <cerrno>
#include <utility>

#include <poll.h>

#include "telephone/time/Waiting.h"

namespace telephone {

namespace {

using telephone_client::Error;
using telephone_client::Expected;

RefusalKind refusalKindOf(Error::Kind kind)
{
    switch (kind) {
    case Error::Kind::kRefused:
    case Error::Kind::kNoEffect:
    case Error::Kind::kBadInput:
        return RefusalKind::kBadInput;
    case Error::Kind::kUnavailable:
    case Error::Kind::kLost:
    case Error::Kind::kProtocol:
    case Error::Kind::kTimeout:
    case Error::Kind::kStopped:
    case Error::Kind::kMisuse:
        break;
    }
    return RefusalKind::kUnavailable;
}

tl::unexpected<Refusal> refused(Error const& error, std::string const& advice = {})
{
    return refuse(refusalKindOf(error.kind), error.reason + advice);
}

telephone_client::Wait waitUntil(SteadyClock::time_point deadline, int stop)
{
    return [deadline, stop](int descriptor, bool write) -> std::optional<Error> {
        auto const wanted = static_cast<short>(write ? POLLIN | POLLOUT : POLLIN);
        std::array<pollfd, 2> waited{{{descriptor, wanted, 0}, {stop, POLLIN, 0}}};
        int const ready = pollUntil(waited, deadline, "the telephone");
        if (ready == 0) {
            return Error{Error::Kind::kTimeout, "the telephone does not answer", {}};
        }
        bool const isStopped = ready < 0 ? errno != EINTR : (waited[1].revents & POLLIN) != 0;
        return isStopped
                   ? std::optional<Error>({Error::Kind::kStopped, "the telephone has ended before it answered", {}})
                   : std::nullopt;
    };
}

}  // namespace

Outcome<telephone_client::Connection> connectTo(std::string const& path)
{
    auto opened = telephone_client::Connection::open(path);
    if (opened) {
        return std::move(*opened);
    }
    bool const isPathWrong = opened.error().kind == Error::Kind::kBadInput;
    return refused(opened.error(), isPathWrong ? ": name a shorter one with --socket"
                                               : ": start one, or name its socket with --socket");
}

Outcome<telephone_client::Reply> ask(telephone_client::Connection& client, std::string_view text, int stop)
{
    return send(client, text).and_then([&] { return replyOf(client, stop); });
}

Outcome<> send(telephone_client::Connection& client, std::string_view text)
{
    auto const sent = client.send(text);
    return sent ? Outcome<>() : refused(sent.error());
}

Outcome<telephone_client::Reply> replyOf(telephone_client::Connection& client, int stop,
                                         SteadyClock::time_point deadline)
{
    auto reply = client.reply(waitUntil(deadline, stop));
    return reply ? Outcome<telephone_client::Reply>(std::move(*reply)) : refused(reply.error());
}

Outcome<std::optional<telephone_client::Message>> receive(telephone_client::Connection& client, int stop)
{
    auto message = client.receive(waitUntil(kNoDeadline, stop));
    if (message) {
        return std::move(*message);
    }
    bool const isOver = message.error().kind == Error::Kind::kLost || message.error().kind == Error::Kind::kStopped;
    return isOver ? Outcome<std::optional<telephone_client::Message>>(std::nullopt) : refused(message.error());
}

}  // namespace telephone
