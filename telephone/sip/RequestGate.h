// Decides which requests a user agent takes in: not more than it has room for (RequestLimits), and of those outside
// dialogs only what their sender may send (Permissions). What it refuses it answers itself, without keeping anything
// of the request; what exceeds the rate of its source is dropped, because an answer would be as much traffic again, and
// to a source that may be forged. Owned by the receiver; used under the lock.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "telephone/sip/Digest.h"
#include "telephone/sip/Element.h"
#include "telephone/sip/Permissions.h"
#include "telephone/sip/RequestLimits.h"
#include "telephone/sip/Timer.h"

namespace telephone::sip {

class RequestGate
{
public:
    // The user with that name; nothing: one that needs no permission.
    using Users = std::function<std::optional<GuardedUser>(std::string const& name)>;

    RequestGate(std::shared_ptr<Element> element, Users users);

    // Whether there is room for the request. ACK and CANCEL belong to requests that were taken in before.
    bool hasRoomFor(sip_msg const& request);
    // Whether its sender may send it. Requests of any other kind than those of RequestKind may come from anybody.
    bool permits(sip_msg const& request);

private:
    // Gives the memory of the remembered requests back once the last of them is forgotten.
    void tidyLater();
    bool isInDialog(sip_msg const& request) const;
    Sender senderOf(sip_msg const& request, GuardedUser const& user);
    void refuse(sip_msg const& request, PermissionRow const& row, Sender wanted, GuardedUser const& user);

    std::shared_ptr<Element> element_;
    Users users_;
    DigestServer digest_;
    RequestLimits limits_;
    Timer quiet_;
    bool isStale_ = false;  // the credentials judged last
};

}  // namespace telephone::sip
