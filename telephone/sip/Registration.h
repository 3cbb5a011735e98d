// Keeps one account registered (RFC 3261 section 10): registers, answers challenges, refreshes in time, retries with
// growing delays after a failure, and unregisters when destroyed. Made by UserAgent::registerAccount. Any thread.
#pragma once

#include <string>

namespace telephone::sip {

class Registration;

// The status that stands for TLS that fails, as the far end's certificate is not accepted, or ours is not.
constexpr int kTlsFailed = 502;

// Called on the loop's thread with the lock held. May destroy the registration.
class RegistrationObserver
{
public:
    virtual ~RegistrationObserver() = default;
    // The registrar accepted; repeated after each refresh. expires: seconds granted.
    virtual void onRegistered(Registration& registration, unsigned expires) = 0;
    // Refused (status of the refusal), no answer (408), not reachable (503) or not over TLS (kTlsFailed). Retried
    // automatically except after 401, 403, 404 and 407, which a repetition does not cure.
    virtual void onRegistrationFailed(Registration& registration, int status, std::string const& reason) = 0;
};

class Registration
{
public:
    virtual ~Registration() = default;  // unregisters if registered, without waiting for the answer
};

}  // namespace telephone::sip
