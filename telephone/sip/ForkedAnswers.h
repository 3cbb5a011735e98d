// Further answers to an INVITE of ours (RFC 3261 section 13.2.2.4). A proxy may send an INVITE to several telephones,
// and two of them may answer: each answer makes a dialog of its own. The first one is the call's. Each later one gets
// ACK, and its dialog BYE at once. One per user agent; used under the lock.
//
// The stack takes every 2xx to an INVITE and drops those of dialogs that it does not know, so this listens before it.
#pragma once

#include <deque>
#include <map>
#include <set>
#include <string>

#include "telephone/sip/Stack.h"

namespace telephone::sip {

class Element;

class ForkedAnswers
{
public:
    explicit ForkedAnswers(Element const& element)
        : element_(element)
    {}

    // Throws std::runtime_error when the stack refuses.
    void listen();
    void close() { listener_.reset(); }
    // The INVITE with that Call-ID is answered, or cancelled: from now on answers to it are further ones.
    void await(std::string const& callId);

private:
    struct Invite
    {
        std::uint64_t until = 0;           // milliseconds of the stack's clock
        std::set<std::string> ended = {};  // tags of the far ends that have got BYE
    };

    bool onResponse(sip_msg const& answer);
    void acknowledge(sip_msg const& answer) const;
    void end(sip_msg const& answer) const;
    void send(char const* method, std::uint32_t cseq, sip_msg const& answer) const;

    Element const& element_;
    Ref<sip_lsnr> listener_;
    std::map<std::string, Invite> invites_;                     // by Call-ID
    std::deque<std::map<std::string, Invite>::iterator> ends_;  // the first to end at the front
};

}  // namespace telephone::sip
