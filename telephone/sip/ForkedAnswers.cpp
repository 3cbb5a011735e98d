#include "telephone/sip/ForkedAnswers.h"

#include <vector>

#include "telephone/sip/Element.h"

// Sends the ACK of an answer again. The stack exports the function without declaring it.
extern "C" int sipsess_ack_again(sipsess_sock* socket, sip_msg const* answer);

namespace telephone::sip {

namespace {

// As long as answers to an INVITE may come after the first, and as long as the stack can repeat its ACK (64 * T1).
constexpr std::uint64_t kAnswersCome = 32000;

// The far end's routes, in the order in which a request takes them.
std::vector<std::string> routesOf(sip_msg const& answer)
{
    std::vector<std::string> routes;
    auto const add = [](sip_hdr const* header, sip_msg const*, void* list) {
        static_cast<std::vector<std::string>*>(list)->push_back(text(header->val));
        return false;
    };
    sip_msg_hdr_apply(&answer, false, SIP_HDR_RECORD_ROUTE, add, &routes);
    return routes;
}

}  // namespace

void ForkedAnswers::listen()
{
    throwOnError(sip_listen(listener_.out(), element_.stack(), false, handlerOf<&ForkedAnswers::onResponse>, this),
                 "SIP");
}

void ForkedAnswers::await(std::string const& callId)
{
    std::uint64_t const now = tmr_jiffies();
    for (; !ends_.empty() && ends_.front()->second.until <= now; ends_.pop_front()) {
        invites_.erase(ends_.front());
    }
    auto const [invite, isNew] = invites_.try_emplace(callId, Invite{now + kAnswersCome});
    if (isNew) {
        ends_.push_back(invite);
    }
}

bool ForkedAnswers::onResponse(sip_msg const& answer)
{
    bool const accepts = answer.scode >= 200 && answer.scode < 300 && pl_strcmp(&answer.cseq.met, "INVITE") == 0;
    auto const invite = accepts ? invites_.find(text(answer.callid)) : invites_.end();
    if (invite == invites_.end() || invite->second.until <= tmr_jiffies()) {
        return false;
    }
    if (sipsess_ack_again(element_.sessionSocket(), &answer) == 0) {
        return true;
    }
    acknowledge(answer);
    if (invite->second.ended.insert(text(answer.to.tag)).second) {
        element_.log(LogLevel::kInfo,
                     "A second telephone has answered, " + text(answer.to.auri) + "; its call is ended");
        end(answer);
    }
    return true;
}

void ForkedAnswers::acknowledge(sip_msg const& answer) const
{
    send("ACK", answer.cseq.num, answer);
}

void ForkedAnswers::end(sip_msg const& answer) const
{
    send("BYE", answer.cseq.num + 1, answer);
}

// The headers are written by hand, since the stack cannot make a second dialog of an INVITE once it is answered.
void ForkedAnswers::send(char const* method, std::uint32_t cseq, sip_msg const& answer) const
{
    std::string const target = contactOf(answer);
    auto const routes = routesOf(answer);
    std::string headers;
    for (auto const& route : routes) {
        headers += "Route: " + route + "\r\n";
    }
    headers += "To: " + text(answer.to.val) + "\r\nFrom: " + text(answer.from.val) +
               "\r\nCall-ID: " + text(answer.callid) + "\r\nCSeq: " + std::to_string(cseq) + " " + method +
               "\r\nContent-Length: 0\r\n\r\n";
    auto const first = NameAddr::parse(routes.empty() ? "<" + target + ">" : routes.front());
    std::string const next = first ? first->uri.format() : target;
    uri route{};
    pl const slice = telephone::sip::slice(next);
    bool const stateful = std::string_view(method) != "ACK";
    int const error = target.empty() || uri_decode(&route, &slice) != 0
                          ? EBADMSG
                          : sip_requestf(nullptr, element_.stack(), stateful, method, target.c_str(), &route, nullptr,
                                         nullptr, nullptr, nullptr, "%s", headers.c_str());
    element_.logRefusal(sent(error, std::string(method) + " to " + target));
}

}  // namespace telephone::sip
