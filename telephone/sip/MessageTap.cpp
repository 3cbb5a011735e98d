#include "telephone/sip/MessageTap.h"

#include <algorithm>

#include "telephone/sip/EventLoop.h"

namespace telephone::sip {

namespace {

bool decode(Ref<mbuf>& buffer, Ref<sip_msg>& message, std::string_view packet)
{
    return fill(buffer, packet) && sip_msg_decode(message.out(), buffer.get()) == 0;
}

}  // namespace

MessageTap::MessageTap(EventLoop& loop)
    : loop_(loop)
{}

void MessageTap::add(std::string const& callId, MessageTapListener& listener)
{
    listeners_.emplace(callId, &listener);
}

void MessageTap::remove(MessageTapListener& listener)
{
    silent_.erase(&listener);
    std::erase_if(listeners_, [&listener](auto const& entry) { return entry.second == &listener; });
}

MessageTapListener* MessageTap::find(std::string const& callId, std::string const& localTag) const
{
    auto const [begin, end] = listeners_.equal_range(callId);
    for (auto entry = begin; entry != end; ++entry) {
        std::string const own = entry->second->localTag();
        if (localTag.empty() || own.empty() || own == localTag) {
            return entry->second;
        }
    }
    return nullptr;
}

void MessageTap::onReceived(std::string_view packet)
{
    if (!silent_.empty() && takeForSilent(packet)) {
        return;
    }
    if (packet.starts_with("SIP/2.0 ") && packet.size() > 8 && packet[8] >= '3' && packet[8] <= '6') {
        onRefusal(packet);
    } else if (packet.starts_with("CANCEL ")) {
        onCancel(packet);
    }
}

// The packet is blanked where the stack has parsed it: a response then belongs to no transaction, and the receiver
// drops a blank request.
bool MessageTap::takeForSilent(std::string_view packet) const
{
    Ref<mbuf> buffer;
    Ref<sip_msg> message;
    if (!decode(buffer, message, packet)) {
        return false;
    }
    sip_msg const& received = *message.get();
    std::string const localTag = text(received.req ? received.to.tag : received.from.tag);
    auto const [begin, end] = listeners_.equal_range(text(received.callid));
    auto const silent = std::find_if(begin, end, [&](auto const& entry) {
        // A request without a tag of ours, such as CANCEL, is for the called end.
        bool const isOurs = localTag.empty() ? !entry.second->isOutgoing() : entry.second->localTag() == localTag;
        return isOurs && silent_.contains(entry.second);
    });
    if (silent == end) {
        return false;
    }
    std::fill_n(const_cast<char*>(packet.data()), packet.size(), ' ');
    bool const ends = received.req && (pl_strcmp(&received.met, "BYE") == 0 || pl_strcmp(&received.met, "CANCEL") == 0);
    if (ends) {
        silent->second->onEndIgnored();
    }
    return true;
}

bool MessageTap::isBlank(sip_msg const& request)
{
    return request.met.l > 0 && *request.met.p == ' ';
}

void MessageTap::onBye(sip_msg const& bye)
{
    if (MessageTapListener* const listener = find(text(bye.callid), text(bye.to.tag))) {
        listener->onReason(headerValue(bye, "Reason"));
    }
}

bool MessageTap::onRequest(sip_msg const& request) const
{
    auto const [begin, end] = listeners_.equal_range(text(request.callid));
    auto const own = std::find_if(
        begin, end, [tag = text(request.to.tag)](auto const& entry) { return entry.second->localTag() == tag; });
    return own != end && own->second->takeRequest(request);
}

void MessageTap::onRefusal(std::string_view packet)
{
    Ref<mbuf> buffer;
    Ref<sip_msg> message;
    if (!decode(buffer, message, packet) || pl_strcmp(&message.get()->cseq.met, "INVITE") != 0 ||
        takeRedirection(*message.get(), packet, *buffer.get())) {
        return;
    }
    loop_.post([tap = weak_from_this(), response = responseOf(*message.get()), callId = text(message.get()->callid),
                tag = text(message.get()->from.tag)] {
        auto const self = tap.lock();
        MessageTapListener* const listener = self ? self->find(callId, tag) : nullptr;
        if (listener && response.status < 400) {
            listener->onInviteRedirected(response);
        } else if (listener) {
            listener->onInviteRefused(response);
        }
    });
}

// A redirection with diversions must be followed with these in the new INVITE (RFC 5806 section 9), which the stack
// does not do, so the session follows it. The Contact is blanked in the packet that the stack is about to read: without
// one the stack leaves the redirection to us. If that should ever fail, the stack follows as usual.
bool MessageTap::takeRedirection(sip_msg const& response, std::string_view packet, mbuf const& copy) const
{
    sip_hdr const* contact = sip_msg_hdr(&response, SIP_HDR_CONTACT);
    bool const diverted = sip_msg_xhdr(&response, "Diversion") || sip_msg_hdr(&response, SIP_HDR_HISTORY_INFO);
    MessageTapListener* const listener = find(text(response.callid), text(response.from.tag));
    if (response.scode >= 400 || !contact || !diverted || !listener ||
        !listener->takeRedirection(responseOf(response))) {
        return false;
    }
    auto const offset = static_cast<std::size_t>(contact->val.p - reinterpret_cast<char const*>(copy.buf));
    std::fill_n(const_cast<char*>(packet.data()) + offset, contact->val.l, ' ');
    return true;
}

void MessageTap::onCancel(std::string_view packet) const
{
    Ref<mbuf> buffer;
    Ref<sip_msg> message;
    if (!decode(buffer, message, packet)) {
        return;
    }
    // A CANCEL has no tag of ours yet; of two calls with the same Call-ID, one is outgoing.
    auto const [begin, end] = listeners_.equal_range(text(message.get()->callid));
    for (auto entry = begin; entry != end; ++entry) {
        if (!entry->second->isOutgoing()) {
            entry->second->onReason(headerValue(*message.get(), "Reason"));
        }
    }
}

}  // namespace telephone::sip
