#include "telephone/sip/DialogList.h"

#include <algorithm>
#include <utility>

namespace telephone::sip {

DialogList::Result DialogList::take(std::string const& document)
{
    auto info = DialogInfo::parse(document);
    if (!info) {
        return Result::kMalformed;
    }
    if (version_ && info->version <= *version_) {
        return Result::kOutdated;
    }
    version_ = info->version;
    if (info->full) {
        dialogs_.clear();
    }
    std::erase_if(dialogs_, [](DialogEntry const& entry) { return entry.state == DialogState::kTerminated; });
    for (auto& entry : info->dialogs) {
        put(std::move(entry));
    }
    return Result::kTaken;
}

void DialogList::put(DialogEntry entry)
{
    auto const known = std::find_if(dialogs_.begin(), dialogs_.end(),
                                    [&entry](DialogEntry const& each) { return each.id == entry.id; });
    if (known == dialogs_.end()) {
        dialogs_.push_back(std::move(entry));
    } else {
        *known = std::move(entry);
    }
}

}  // namespace telephone::sip
