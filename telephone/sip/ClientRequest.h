// Requests of ours outside every dialog: one REGISTER after the other, or a single MESSAGE or INFO. Answers challenges.
// Keeps itself alive while an answer is due, so that its owner may go before (a farewell REGISTER). Used under the
// lock.
#pragma once

#include "telephone/sip/UserAgentImpl.h"

namespace telephone::sip {

class ClientRequest : public std::enable_shared_from_this<ClientRequest>
{
public:
    // The final answer, or an error of errno without one.
    using Handler = std::function<void(int error, sip_msg const* message)>;

    // Null, with the reason, when the request cannot be made. to: URI of the To header.
    static std::shared_ptr<ClientRequest> make(std::shared_ptr<UserAgent::Impl> agent, Account const& account,
                                               Route const& route, std::string const& to, std::string& whyNot);
    ClientRequest(std::shared_ptr<UserAgent::Impl> agent, Account const& account, Route const& route);

    // tail: headers, empty line and body. contactExpires: also sends our Contact with that time.
    int send(std::string const& method, std::string tail, std::optional<std::uint32_t> contactExpires, Handler done);
    // Forgets the answer that is due; the handler is not called any more.
    void abandon();
    // The Contact that was sent last, without brackets.
    std::string const& contact() const { return contact_; }

private:
    int transmit();
    void onResponse(int error, sip_msg const* message);
    int writeContact(sip_transp transport, sa const& source, mbuf& buffer);

    std::shared_ptr<UserAgent::Impl> agent_;
    std::string contactUser_;
    Ref<::sip> stack_;
    Ref<sip_dialog> dialog_;
    Ref<sip_auth> auth_;
    Ref<Credentials> credentials_;
    Ref<struct sip_request> request_;
    std::shared_ptr<ClientRequest> keptAlive_;
    std::string method_;
    std::string tail_;
    std::string contact_;
    std::optional<std::uint32_t> contactExpires_;
    Handler done_;
};

}  // namespace telephone::sip
