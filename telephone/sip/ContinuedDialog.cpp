#include "telephone/sip/ContinuedDialog.h"

namespace telephone::sip {

namespace {

// The stack allocates a dialog while it begins the session.
thread_local sip_dialog* continuedDialog = nullptr;

}  // namespace

ContinuedDialog::ContinuedDialog(sip_dialog const* dialog)
{
    dialog_.share(dialog);
    continuedDialog = dialog_.get();
}

ContinuedDialog::~ContinuedDialog()
{
    continuedDialog = nullptr;
}

bool ContinuedDialog::take(sip_dialog** dialog)
{
    if (continuedDialog == nullptr) {
        return false;
    }
    *dialog = static_cast<sip_dialog*>(mem_ref(continuedDialog));
    return true;
}

}  // namespace telephone::sip
