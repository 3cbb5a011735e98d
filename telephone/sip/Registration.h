// Keeps one account registered (RFC 3261 section 10): registers, answers challenges, refreshes in time, retries with
// growing delays after a failure, and unregisters when destroyed. Made by UserAgent::registerAccount. Any thread.
#pragma once

#include <string>

namespace telephone::sip {

struct Account;
class Registration;

// Called on the loop's thread with the lock held. May destroy the registration.
class RegistrationObserver
{
public:
    virtual ~RegistrationObserver() = default;
    // The registrar accepted; repeated after each refresh. expires: seconds granted.
    virtual void onRegistered(Registration& registration, unsigned expires) = 0;
    // Refused (status of the refusal), no answer (408) or not reachable (503). Retried automatically except after 401,
    // 403, 404 and 407, which a repetition does not cure: these wait for retry().
    virtual void onRegistrationFailed(Registration& registration, int status, std::string const& reason) = 0;
    // unregister() has succeeded.
    virtual void onUnregistered(Registration&) {}
};

class Registration
{
public:
    virtual ~Registration() = default;  // unregisters if registered, without waiting for the answer

    virtual Account const& account() const = 0;
    virtual bool isRegistered() const = 0;
    // Registers now: after unregister(), after a failure, or as an early refresh.
    virtual void retry() = 0;
    // Removes the binding and stops refreshing.
    virtual void unregister() = 0;
};

}  // namespace telephone::sip
