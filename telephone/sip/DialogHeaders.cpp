#include "telephone/sip/DialogHeaders.h"

#include <map>
#include <mutex>

namespace telephone::sip {

namespace {

struct DialogWriters
{
    DialogHeaders::Writer ofInvite;
    DialogHeaders::Writer ofAnswer;
};

// Of all event loops of the process, since the stack names nothing but the dialog.
class WritersOfDialogs
{
public:
    void set(sip_dialog const* dialog, DialogWriters writers)
    {
        std::lock_guard const guard(mutex_);
        all_[dialog] = std::move(writers);
    }
    void remove(sip_dialog const* dialog)
    {
        std::lock_guard const guard(mutex_);
        all_.erase(dialog);
    }
    DialogWriters of(sip_dialog const* dialog)
    {
        std::lock_guard const guard(mutex_);
        auto const found = all_.find(dialog);
        return found == all_.end() ? DialogWriters{} : found->second;
    }

private:
    std::mutex mutex_;
    std::map<sip_dialog const*, DialogWriters> all_;
};

WritersOfDialogs& writersOfDialogs()
{
    static auto& all = *new WritersOfDialogs;  // never destroyed, as the stack
    return all;
}

}  // namespace

DialogHeaders::DialogHeaders(sip_dialog const* dialog, Writer ofInvite, Writer ofAnswer)
    : dialog_(dialog)
{
    writersOfDialogs().set(dialog, {std::move(ofInvite), std::move(ofAnswer)});
}

DialogHeaders::~DialogHeaders()
{
    writersOfDialogs().remove(dialog_);
}

std::string DialogHeaders::ofInvite(sip_dialog const* dialog)
{
    auto const writer = writersOfDialogs().of(dialog).ofInvite;
    return writer ? writer() : std::string();
}

std::string DialogHeaders::ofAnswer(sip_dialog const* dialog)
{
    auto const writer = writersOfDialogs().of(dialog).ofAnswer;
    return writer ? writer() : std::string();
}

}  // namespace telephone::sip
