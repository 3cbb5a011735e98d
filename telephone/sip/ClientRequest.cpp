#include "telephone/sip/ClientRequest.h"

namespace telephone::sip {

Outcome<std::shared_ptr<ClientRequest>> ClientRequest::make(std::shared_ptr<Element> element, Account const& account,
                                                            Route const& route, std::string const& to)
{
    auto request = std::make_shared<ClientRequest>(std::move(element), account, route);
    auto proxies = route.proxyTexts();
    int error = sip_dialog_alloc(request->dialog_.out(), route.target.c_str(), to.c_str(), route.fromNameOrNull(),
                                 route.fromUri.c_str(), proxies.data(), static_cast<std::uint32_t>(proxies.size()));
    if (!error) {
        error = sip_auth_alloc(request->auth_.out(), answerChallenge, request->credentials_.get(), true);
    }
    if (auto const made = sent(error, "a request to " + route.target); !made) {
        return tl::unexpected(made.error());
    }
    return request;
}

ClientRequest::ClientRequest(std::shared_ptr<Element> element, Account const& account, Route const& route)
    : element_(std::move(element))
    , route_(route)
{
    stack_.share(element_->stack());
    makeCredentials(credentials_, account);
}

Outcome<> ClientRequest::send(std::string const& method, std::string tail, std::optional<std::uint32_t> contactExpires,
                              Handler done)
{
    method_ = method;
    tail_ = std::move(tail);
    contactExpires_ = contactExpires;
    done_ = std::move(done);
    // A nonce of an earlier request may be stale, and the stack takes a second challenge for a wrong password.
    sip_auth_reset(auth_.get());
    int const error = transmit();
    if (error) {
        done_ = nullptr;
    }
    return element_->sentTo(route_, error, method);
}

int ClientRequest::transmit()
{
    int const error = sip_drequestf(request_.out(), element_->stack(), true, method_.c_str(), dialog_.get(), 0,
                                    auth_.get(), handlerOf<&ClientRequest::writeContact>,
                                    handlerOf<&ClientRequest::onResponse>, this, "%s", tail_.c_str());
    if (!error) {
        keptAlive_ = shared_from_this();
    }
    return error;
}

int ClientRequest::writeContact(sip_transp transport, sa const& source, sa const* /*target*/, mbuf& buffer)
{
    if (!contactExpires_) {
        return 0;
    }
    contact_ = "sip:" + route_.contactUser + "@" + addressText(source) + sip_transp_param(transport);
    std::string const& instance = element_->config().instance;
    std::string const header = "Contact: <" + contact_ + ">;expires=" + std::to_string(*contactExpires_) +
                               (instance.empty() ? "" : ";+sip.instance=\"<" + instance + ">\"") + "\r\n";
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
    Handler const done = std::exchange(done_, nullptr);
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

int statusOf(int error)
{
    return error == ETIMEDOUT ? 408 : 503;
}

}  // namespace telephone::sip
