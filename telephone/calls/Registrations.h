// Keeps the lines registered and reports each change by one event; a refresh is not reported. Owned by CallEngine;
// called with the phone lock held, except where noted.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "telephone/calls/EventPoster.h"
#include "telephone/calls/LineDirectory.h"
#include "telephone/calls/SipMeaning.h"
#include "telephone/sip/UserAgent.h"

namespace telephone {

class Registrations final : private sip::RegistrationObserver
{
public:
    using Changed = std::function<void(LineAccount const&, bool registered)>;

    Registrations(sip::UserAgent& agent, EventPoster const& post, Changed changed);

    // Any thread; takes the phone lock.
    bool isRegistered(int lineNumber) const;

    // Registers the accounts that want it and are not registered yet.
    void begin(std::vector<LineAccount> const& accounts);
    // Unregisters all.
    void end();

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

    sip::UserAgent& agent_;
    EventPoster const& post_;
    Changed changed_;
    std::map<int, Entry> entries_;  // by line number
};

}  // namespace telephone
