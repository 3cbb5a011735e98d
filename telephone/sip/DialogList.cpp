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
        auto const known = std::ranges::find(dialogs_, entry.id, &DialogEntry::id);
        if (known == dialogs_.end()) {
            dialogs_.push_back(std::move(entry));
        } else {
            *known = std::move(entry);
        }
    }
    return Result::kTaken;
}

}  // namespace telephone::sip
