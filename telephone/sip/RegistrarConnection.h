// The TCP or TLS connection over which a registration was accepted: keeps it open while nothing is said, and notices
// its end, of which the stack tells nobody else. Owned by RegistrationImpl, which makes a new one of each answer. Used
// under the loop's lock.
#pragma once

#include <chrono>
#include <functional>

#include "telephone/sip/Element.h"
#include "telephone/sip/Timer.h"

namespace telephone::sip {

class RegistrarConnection
{
public:
    // Of the answer to a REGISTER; does nothing over UDP, which has no connection. keepAlive: the longest time from one
    // keep-alive to the next; 0: none is sent. A Flow-Timer of the answer has precedence (RFC 5626 section 4.4.1).
    // `lost` is called once, when the connection has ended.
    RegistrarConnection(Element& element, sip_msg const& answer, std::chrono::seconds keepAlive,
                        std::function<void()> lost);

    bool exists() const { return answer_.get() != nullptr; }
    // Whether the answer came over this connection.
    bool carried(sip_msg const& answer) const { return exists() && answer_.get()->sock == answer.sock; }

private:
    void scheduleKeepAlive();
    void sendKeepAlive();
    void onClosed(int error);

    std::function<void()> lost_;
    std::chrono::seconds keepAlive_;
    Timer due_;
    Ref<sip_msg> answer_;  // keeps the stack's object, also once the connection has ended
    Ref<sip_keepalive> watch_;
};

}  // namespace telephone::sip
