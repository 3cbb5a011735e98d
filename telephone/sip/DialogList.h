// The dialogs of one party, put together from the full and partial documents of one subscription (RFC 4235
// section 4.3). A plain value; its owner sees to the lock.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "telephone/sip/DialogInfo.h"

namespace telephone::sip {

class DialogList
{
public:
    enum class Result
    {
        kTaken,
        kOutdated,   // its version is not higher than the last one
        kMalformed,  // not a dialog-info document
    };

    // Only kTaken changes the list.
    Result take(std::string const& document);

    // In the order in which they became known. Those that ended with the latest document are included, in the state
    // kTerminated.
    std::vector<DialogEntry> const& dialogs() const { return dialogs_; }

private:
    std::optional<std::uint32_t> version_;
    std::vector<DialogEntry> dialogs_;
};

}  // namespace telephone::sip
