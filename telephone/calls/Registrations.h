// Keeps the lines registered and tells how that goes: one event a change, none for a refresh. Owned by the engine;
// called with the phone lock held.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "telephone/calls/CallHost.h"
#include "telephone/calls/LineDirectory.h"
#include "telephone/calls/SipMeaning.h"
#include "telephone/sip/UserAgent.h"

namespace telephone {

class Registrations final : private sip::RegistrationObserver
{
public:
    using Changed = std::function<void(LineAccount const&, bool registered)>;

    Registrations(CallHost& host, sip::UserAgent& agent, Changed changed);
    ~Registrations() override;

    // Registers what is new or has changed, and takes back what is no longer among the accounts.
    void refresh(std::vector<LineAccount> const& accounts);
    void clear();
    bool isRegistered(int lineNumber) const;

private:
    struct Entry
    {
        LineAccount line;
        std::unique_ptr<sip::Registration> registration;
        bool registered = false;
        std::optional<sfiRegistrationResult> told;
    };

    void onRegistered(sip::Registration& registration, unsigned expires) override;
    void onRegistrationFailed(sip::Registration& registration, int status, std::string const& reason) override;
    Entry* find(sip::Registration const& registration);
    void tell(Entry& entry, bool registered, sfiRegistrationResult result);

    CallHost& host_;
    sip::UserAgent& agent_;
    Changed changed_;
    std::map<int, Entry> entries_;  // by line number
};

}  // namespace telephone
