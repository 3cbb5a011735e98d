// Registration by REGISTER requests of our own: when to send the next one, and what its answer means.
#pragma once

#include <optional>

#include "telephone/sip/ClientRequest.h"
#include "telephone/sip/RegistrarConnection.h"
#include "telephone/sip/Registration.h"
#include "telephone/sip/Timer.h"
#include "telephone/time/SteadyClock.h"

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
    void awaitAnswer(std::chrono::milliseconds limit);
    void onAnswer(int error, sip_msg const* message);
    void onAccepted(sip_msg const& message);
    void watchConnection(sip_msg const& message);
    void onConnectionLost();
    // wanted: the pause that the registrar asks for; 0: the usual one.
    void fail(int status, std::string const& reason, std::chrono::seconds wanted = {});
    void retryAfter(std::chrono::milliseconds pause);
    std::chrono::milliseconds nextPause();
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
    std::optional<RegistrarConnection> connection_;
    SteadyClock::time_point connected_;  // when it was first used
};

}  // namespace telephone::sip
