#include "telephone/sip/RegistrarConnection.h"

#include <charconv>

#include "telephone/time/VirtualTime.h"

namespace telephone::sip {

namespace {

// The stack's own keep-alive ends a connection whose far end does not answer it, as servers need not. Only its notice
// of the end is wanted, so it is due in a month.
constexpr std::uint32_t kSecondsOfAMonth = 30 * 24 * 3600;

constexpr std::string_view kKeepAlive = "\r\n\r\n";

std::chrono::seconds flowTimer(sip_msg const& answer, std::chrono::seconds otherwise)
{
    std::string const text = headerValue(answer, "Flow-Timer");
    unsigned seconds = 0;
    std::from_chars(text.data(), text.data() + text.size(), seconds);
    return seconds == 0 ? otherwise : std::chrono::seconds(seconds);
}

}  // namespace

RegistrarConnection::RegistrarConnection(Element& element, sip_msg const& answer, std::chrono::seconds keepAlive,
                                         std::function<void()> lost)
    : lost_(std::move(lost))
    , keepAlive_(flowTimer(answer, keepAlive))
    , due_(element.loop())
{
    if (sip_msg_tcpconn(&answer) == nullptr ||
        sip_keepalive_start(watch_.out(), element.stack(), &answer, kSecondsOfAMonth,
                            handlerOf<&RegistrarConnection::onClosed>, this) != 0) {
        return;
    }
    answer_.share(&answer);
    scheduleKeepAlive();
}

// Between 80 and 100 per cent of the time, so that telephones that were switched on together do not ask together.
void RegistrarConnection::scheduleKeepAlive()
{
    if (keepAlive_.count() > 0) {
        auto const thousandths = static_cast<std::int64_t>(800 + randomNumber() % 201);
        due_.start(std::chrono::milliseconds(keepAlive_.count() * thousandths), [this] { sendKeepAlive(); });
    }
}

void RegistrarConnection::sendKeepAlive()
{
    Ref<mbuf> bytes;
    tcp_conn* const connection = sip_msg_tcpconn(answer_.get());
    // An error comes as the end of the connection.
    if (connection != nullptr && fill(bytes, kKeepAlive)) {
        (void)tcp_send(connection, bytes.get());
    }
    scheduleKeepAlive();
}

void RegistrarConnection::onClosed(int /*error*/)
{
    due_.cancel();
    auto const lost = lost_;  // may destroy this
    lost();
}

}  // namespace telephone::sip
