#include "telephone/sip/ClientRequest.h"

namespace telephone::sip {

std::shared_ptr<ClientRequest> ClientRequest::make(std::shared_ptr<UserAgent::Impl> agent, Account const& account,
                                                   Route const& route, std::string const& to, std::string& whyNot)
{
    auto request = std::make_shared<ClientRequest>(std::move(agent), account, route);
    char const* proxies[] = {route.proxy.c_str()};
    int error = sip_dialog_alloc(request->dialog_.out(), route.target.c_str(), to.c_str(),
                                 route.fromName.empty() ? nullptr : route.fromName.c_str(), route.fromUri.c_str(),
                                 proxies, route.proxy.empty() ? 0 : 1);
    if (!error) {
        error = sip_auth_alloc(request->auth_.out(), answerChallenge, request->credentials_.get(), true);
    }
    if (!error) {
        return request;
    }
    whyNot = errorText(error);
    return nullptr;
}

ClientRequest::ClientRequest(std::shared_ptr<UserAgent::Impl> agent, Account const& account, Route const& route)
    : agent_(std::move(agent))
    , contactUser_(route.contactUser)
{
    stack_.share(agent_->stack);
    makeCredentials(credentials_, account.authUser.empty() ? account.user : account.authUser, account.password);
}

int ClientRequest::send(std::string const& method, std::string tail, std::optional<std::uint32_t> contactExpires,
                        Handler done)
{
    method_ = method;
    tail_ = std::move(tail);
    contactExpires_ = contactExpires;
    done_ = std::move(done);
    // A nonce of an earlier round may be too old, and the stack takes a second challenge for a wrong password.
    sip_auth_reset(auth_.get());
    int const error = transmit();
    if (error) {
        done_ = nullptr;
    }
    return error;
}

int ClientRequest::transmit()
{
    auto const written = [](sip_transp transport, sa const* source, sa const*, mbuf* buffer, void* request) {
        return static_cast<ClientRequest*>(request)->writeContact(transport, *source, *buffer);
    };
    auto const answered = [](int error, sip_msg const* message, void* request) {
        static_cast<ClientRequest*>(request)->onResponse(error, message);
    };
    int const error = sip_drequestf(request_.out(), agent_->stack, true, method_.c_str(), dialog_.get(), 0, auth_.get(),
                                    written, answered, this, "%s", tail_.c_str());
    if (!error) {
        keptAlive_ = shared_from_this();
    }
    return error;
}

int ClientRequest::writeContact(sip_transp transport, sa const& source, mbuf& buffer)
{
    if (!contactExpires_) {
        return 0;
    }
    contact_ = "sip:" + contactUser_ + "@" + addressText(source) + sip_transp_param(transport);
    const std::string header = "Contact: <" + contact_ + ">;expires=" + std::to_string(*contactExpires_) + "\r\n";
    return mbuf_write_str(&buffer, header.c_str());
}

void ClientRequest::onResponse(int error, sip_msg const* message)
{
    if (message && message->scode < 200) {
        return;
    }
    auto const self = std::move(keptAlive_);
    keptAlive_ = nullptr;
    if (!error && message && (message->scode == 401 || message->scode == 407) &&
        sip_auth_authenticate(auth_.get(), message) == 0 && transmit() == 0) {
        return;
    }
    const Handler done = std::exchange(done_, nullptr);
    if (done) {
        done(error, message);
    }
}

void ClientRequest::abandon()
{
    done_ = nullptr;
    request_.reset();
    keptAlive_ = nullptr;
}

}  // namespace telephone::sip
