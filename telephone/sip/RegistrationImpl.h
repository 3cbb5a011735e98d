// Registration by REGISTER requests of our own: when to send the next one, and what its answer means.
#pragma once

#include "telephone/sip/ClientRequest.h"
#include "telephone/sip/Registration.h"
#include "telephone/sip/Timer.h"

namespace telephone::sip {

class RegistrationImpl final : public Registration
{
public:
    RegistrationImpl(std::shared_ptr<Element> element, Account account, RegistrationObserver& observer);
    ~RegistrationImpl() override;

    // A TLS connection to the host has ended.
    void onConnectionEnded(std::string const& host);

private:
    Outcome<> prepare();
    void send();
    void onAnswer(int error, sip_msg const* message);
    void onAccepted(sip_msg const& message);
    void fail(int status, std::string const& reason);
    std::uint32_t grantedBy(sip_msg const& message) const;

    std::shared_ptr<Element> element_;
    Account account_;
    RegistrationObserver& observer_;
    std::shared_ptr<ClientRequest> request_;
    Timer due_;      // the next REGISTER
    Timer silence_;  // limits the wait for an answer
    std::chrono::milliseconds wait_;
    std::uint32_t asked_;
    std::string host_;    // of the registrar
    bool waits_ = false;  // for an answer
    bool registered_ = false;
};

}  // namespace telephone::sip
