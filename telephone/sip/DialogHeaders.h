// Headers that the stack does not let a session add: to its re-INVITEs, and to its answers to those of the far end. The
// replaced functions of the stack (StackFunctions.h) ask for them by the dialog. Owned by the session. Any thread.
#pragma once

#include <functional>
#include <string>

#include "telephone/sip/Stack.h"

namespace telephone::sip {

class DialogHeaders
{
public:
    // Headers, each with its end of line.
    using Writer = std::function<std::string()>;

    // From now on, until it is destroyed. The writers are called with the phone lock held.
    DialogHeaders(sip_dialog const* dialog, Writer ofInvite, Writer ofAnswer);
    ~DialogHeaders();
    DialogHeaders(DialogHeaders const&) = delete;
    DialogHeaders& operator=(DialogHeaders const&) = delete;

    // Of the next re-INVITE in a dialog, and of the answer to one; empty for a dialog of which nothing is known.
    static std::string ofInvite(sip_dialog const* dialog);
    static std::string ofAnswer(sip_dialog const* dialog);

private:
    sip_dialog const* dialog_;
};

}  // namespace telephone::sip
