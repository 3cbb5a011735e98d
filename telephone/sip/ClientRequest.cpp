#include "telephone/sip/ClientRequest.h"

namespace telephone::sip {

Outcome<std::shared_ptr<ClientRequest>> ClientRequest::make(std::shared_ptr<Element> element, Account const& account,
                                                            Route const& route, std::string const& to)
{
    auto request = std::make_shared<ClientRequest>(std::move(element), route.contactUser);
    request->route_ = route;
    makeCredentials(request->credentials_, account, request->element_->config().log);
    auto proxies = route.proxyTexts();
    int const error =
        sip_dialog_alloc(request->dialog_.out(), route.target.c_str(), to.c_str(), route.fromNameOrNull(),
                         route.fromUri.c_str(), proxies.data(), static_cast<std::uint32_t>(proxies.size()));
    return request->prepare(error, route.target).map([&request] { return request; });
}

Outcome<std::shared_ptr<ClientRequest>> ClientRequest::within(std::shared_ptr<Element> element, sip_dialog* dialog,
                                                              std::string contactUser,
                                                              Ref<Credentials> const& credentials)
{
    auto request = std::make_shared<ClientRequest>(std::move(element), std::move(contactUser));
    request->inDialog_ = true;
    request->dialog_.share(dialog);
    request->credentials_.share(credentials.get());
    return request->prepare(0, "the far end").map([&request] { return request; });
}

ClientRequest::ClientRequest(std::shared_ptr<Element> element, std::string contactUser)
    : element_(std::move(element))
    , contactUser_(std::move(contactUser))
{
    stack_.share(element_->stack());
}

Outcome<> ClientRequest::prepare(int error, std::string const& target)
{
    if (!error) {
        error = sip_auth_alloc(auth_.out(), answerChallenge, credentials_.get(), true);
    }
    return sent(error, "a request to " + target);
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
    lastSent_ = SteadyClock::now();
    if (!contactExpires_ && !inDialog_) {
        return 0;
    }
    contact_ =
        "sip:" + contactUser_ + "@" + addressText(source) + route_.contactParameters + sip_transp_param(transport);
    std::string header = "Contact: <" + contact_ + ">";
    if (contactExpires_) {
        std::string const& instance = element_->config().instance;
        header += ";expires=" + std::to_string(*contactExpires_) +
                  (instance.empty() ? "" : ";+sip.instance=\"<" + instance + ">\"");
    }
    header += "\r\n";
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
