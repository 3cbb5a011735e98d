// The dialogs that an INVITE of ours has before its answer, one for each telephone that rings and sends responses
// reliably: acknowledges these with PRACK (RFC 3262). Owned by its session; used under the lock.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "telephone/sip/ClientRequest.h"

namespace telephone::sip {

class EarlyDialogs
{
public:
    // A response from 101 to 199 to the INVITE with which `call` began. True: it is to be read; false: it is a
    // repetition, or the one before it is missing.
    [[nodiscard]] bool take(std::shared_ptr<Element> const& element, sip_msg const& response, sip_dialog* call,
                            std::string const& contactUser, Ref<Credentials> const& credentials);
    // The dialog of a request; null: none of these.
    sip_dialog* find(sip_msg const& request) const;
    // The answer has come: the requests of `call` continue the numbers of its early dialog. All dialogs end.
    void settle(sip_dialog* call, std::string const& remoteTag);
    void clear() { dialogs_.clear(); }

private:
    struct Early
    {
        Ref<sip_dialog> dialog;
        std::uint32_t number = 0;  // RSeq of the latest response
    };

    std::map<std::string, Early> dialogs_;  // by remote tag
};

}  // namespace telephone::sip
