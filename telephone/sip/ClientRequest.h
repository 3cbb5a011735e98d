// Our requests outside a dialog (a series of REGISTER requests, a single MESSAGE or INFO), and those in a session's
// dialog that the stack does not make (UPDATE, PRACK). Answers challenges. Keeps itself alive while a response is due,
// so that its owner may be destroyed before (after a last REGISTER). Used under the lock.
#pragma once

#include "telephone/sip/Element.h"
#include "telephone/time/SteadyClock.h"

namespace telephone::sip {

class ClientRequest : public std::enable_shared_from_this<ClientRequest>
{
public:
    // The final response, or an error of errno without one.
    using Handler = std::function<void(int error, sip_msg const* message)>;

    // to: URI of the To header.
    [[nodiscard]] static Outcome<std::shared_ptr<ClientRequest>>
    make(std::shared_ptr<Element> element, Account const& account, Route const& route, std::string const& to);
    // In that dialog, with our Contact.
    [[nodiscard]] static Outcome<std::shared_ptr<ClientRequest>> within(std::shared_ptr<Element> element,
                                                                        sip_dialog* dialog, std::string contactUser,
                                                                        Ref<Credentials> const& credentials);
    ClientRequest(std::shared_ptr<Element> element, std::string contactUser);

    // tail: headers, empty line and body. contactExpires: adds our Contact with that many seconds.
    [[nodiscard]] Outcome<> send(std::string const& method, std::string tail,
                                 std::optional<std::uint32_t> contactExpires, Handler done);
    // Drops the response that is due; the handler is not called any more.
    void abandon();
    // What an error of the handler means.
    Response failureOf(int error) const { return element_->failureOf(error, route_); }
    // When it was sent last, to whichever server.
    SteadyClock::time_point lastSent() const { return lastSent_; }
    // The Contact sent last, without brackets.
    std::string const& contact() const { return contact_; }

private:
    [[nodiscard]] Outcome<> prepare(int error, std::string const& target);
    int transmit();
    void onResponse(int error, sip_msg const* message);
    int writeContact(sip_transp transport, sa const& source, sa const* target, mbuf& buffer);

    std::shared_ptr<Element> element_;
    Route route_;
    std::string contactUser_;
    bool inDialog_ = false;
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
    SteadyClock::time_point lastSent_;
};

// The status that stands for an error of errno: 408 for a timeout, else 503.
int statusOf(int error);

}  // namespace telephone::sip
