// Incoming requests of a user agent: answers those that need no decision and passes the others to the observer. Kept
// alive by the stack's last transactions after the user agent is destroyed. Used under the lock.
#pragma once

#include <memory>

#include "telephone/sip/Element.h"
#include "telephone/sip/RequestGate.h"

namespace telephone::sip {

class Receiver : public std::enable_shared_from_this<Receiver>
{
public:
    Receiver(std::shared_ptr<Element> element, UserAgentObserver& observer);

    // Throws std::runtime_error when the stack refuses.
    void listen();
    // Passes no more requests to the observer, waits for the last answers and closes the element. Takes the lock.
    void close();

private:
    bool onRequestFirst(sip_msg const& message);
    bool onRequestLast(sip_msg const& message);
    void onInvite(sip_msg const& message);
    bool onFirstSubscribe(sip_msg const& message);
    void prepareRefresh(sip_msg const& subscribe);
    bool refuseMalformed(sip_msg const& message) const;
    bool refuseUnsupported(sip_msg const& message) const;
    void answerOptions(sip_msg const& message) const;
    bool takeOutOfDialog(sip_msg const& message);
    void takeUnsolicitedNotify(sip_msg const& message);
    void takeRefer(sip_msg const& message);
    bool knowsUserOf(sip_msg const& message) const;

    std::shared_ptr<Element> element_;
    UserAgentObserver* observer_;  // null: closed
    RequestGate gate_;
    Ref<sip_lsnr> firstListener_;
    Ref<sip_lsnr> lastListener_;
    Ref<sip_lsnr> strayListener_;
};

}  // namespace telephone::sip
