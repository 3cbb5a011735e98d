// Keeps one account registered (RFC 3261 section 10): registers, answers challenges, refreshes before the time is up,
// tries again with growing waits when the registrar refuses or is silent, and unregisters when destroyed. Made by
// UserAgent::registerAccount and owned by the line it serves.
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
    // The registrar accepted; again after each refresh. Expires: seconds it granted.
    virtual void onRegistered(Registration& registration, unsigned expires) = 0;
    // Refused (its status), or silent or out of reach (408, 503). It is tried again by itself, except after
    // 401, 403, 404 and 407, which no repetition cures: those wait for retry().
    virtual void onRegistrationFailed(Registration& registration, int status, std::string const& reason) = 0;
    // The end of unregister().
    virtual void onUnregistered(Registration&) {}
};

class Registration
{
public:
    virtual ~Registration() = default;  // unregisters without waiting for the answer, when registered

    virtual Account const& account() const = 0;
    virtual bool isRegistered() const = 0;
    // Registers at once: after unregister(), after a failure, or as an early refresh.
    virtual void retry() = 0;
    // Takes the binding back and stops.
    virtual void unregister() = 0;
};

}  // namespace telephone::sip
