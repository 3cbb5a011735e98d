#include "telephone/sip/EarlyDialogs.h"

#include <algorithm>

#include "telephone/sip/ReliableResponses.h"
#include "telephone/sip/StackFunctions.h"

namespace telephone::sip {

namespace {

void acknowledge(std::shared_ptr<Element> const& element, sip_dialog* dialog, std::string const& contactUser,
                 Ref<Credentials> const& credentials, std::string const& rack)
{
    auto const answered = [element](int error, sip_msg const* answer) {
        int const status = answer ? answer->scode : statusOf(error);
        if (status >= 300) {
            element->log(LogLevel::kWarning, "PRACK is answered with " + std::to_string(status));
        }
    };
    auto const sending =
        ClientRequest::within(element, dialog, contactUser, credentials)
            .and_then([&](std::shared_ptr<ClientRequest> const& prack) {
                return prack->send("PRACK", "RAck: " + rack + "\r\nContent-Length: 0\r\n\r\n", {}, answered);
            });
    element->logRefusal(sending);
}

}  // namespace

bool EarlyDialogs::take(std::shared_ptr<Element> const& element, sip_msg const& response, sip_dialog* call,
                        std::string const& contactUser, Ref<Credentials> const& credentials)
{
    Headers const headers = headersOf(response);
    std::uint32_t const number = headers.number("RSeq");
    if (number == 0 || !headers.lists("Require", kReliableExtension)) {
        return true;
    }
    auto const [entry, isNew] = dialogs_.try_emplace(text(response.to.tag));
    Early& early = entry->second;
    if (isNew && sip_dialog_fork(early.dialog.out(), call, &response) != 0) {
        dialogs_.erase(entry);
        return true;
    }
    if (!isNew && number != early.number + 1) {
        return false;
    }
    early.number = number;
    std::string const rack =
        std::to_string(number) + " " + std::to_string(response.cseq.num) + " " + text(response.cseq.met);
    acknowledge(element, early.dialog.get(), contactUser, credentials, rack);
    return true;
}

sip_dialog* EarlyDialogs::find(sip_msg const& request) const
{
    auto const found = std::find_if(dialogs_.begin(), dialogs_.end(), [&request](auto const& entry) {
        return sip_dialog_cmp(entry.second.dialog.get(), &request);
    });
    return found == dialogs_.end() ? nullptr : found->second.dialog.get();
}

void EarlyDialogs::settle(sip_dialog* call, std::string const& remoteTag)
{
    auto const early = dialogs_.find(remoteTag);
    Ref<mbuf> unused;
    *unused.out() = mbuf_alloc(512);
    while (unused && early != dialogs_.end() && sip_dialog_lseq(call) < sip_dialog_lseq(early->second.dialog.get())) {
        // Writing a request is what takes a number.
        (void)stack_sip_dialog_encode(unused.get(), call, 0, "PRACK");
    }
    dialogs_.clear();
}

}  // namespace telephone::sip
