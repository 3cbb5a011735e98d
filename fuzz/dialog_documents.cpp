// Documents in notifications from other telephones and servers: each is read or refused, and a document that was read
// survives being written and read again.
#include "FuzzInput.h"
#include "telephone/sip/DialogInfo.h"

using namespace telephone::sip;

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string const text(reinterpret_cast<char const*>(data), size);
    if (auto const info = DialogInfo::parse(text)) {
        auto const again = DialogInfo::parse(info->format());
        require(again.has_value(), "a dialog document that was written is none");
        require(again->dialogs.size() == info->dialogs.size(), "dialogs were lost");
        require(again->version == info->version && again->full == info->full, "version and state");
    }
    if (auto const summary = MessageSummary::parse(text)) {
        auto const again = MessageSummary::parse(summary->format());
        require(again.has_value(), "a message summary that was written is none");
        require(again->waiting == summary->waiting && again->voice == summary->voice, "message counts were lost");
    }
    return 0;
}
