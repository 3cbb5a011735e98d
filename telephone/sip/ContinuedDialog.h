// A call that is sent again as the same one: same Call-ID and tag, the next number (RFC 3261 section 8.1.3.5). The
// stack begins each session with a dialog of its own; while an object of this class lives, a session that begins on the
// same thread takes its dialog instead. Owned by whoever begins the session; used under the loop's lock.
#pragma once

#include "telephone/sip/Stack.h"

namespace telephone::sip {

class ContinuedDialog
{
public:
    explicit ContinuedDialog(sip_dialog const* dialog);
    ~ContinuedDialog();
    ContinuedDialog(ContinuedDialog const&) = delete;
    ContinuedDialog& operator=(ContinuedDialog const&) = delete;

    // Another reference to the dialog to be continued; false: there is none.
    static bool take(sip_dialog** dialog);

private:
    Ref<sip_dialog> dialog_;
};

}  // namespace telephone::sip
