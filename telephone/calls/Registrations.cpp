#include "telephone/calls/Registrations.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "CommunicationsServiceEventIfc.h"
#include "telephone/calls/LogComponent.h"
#include "telephone/framework/Log.h"
#include "telephone/sip/EventLoop.h"

namespace telephone {

Registrations::Registrations(sip::UserAgent& agent, EventPoster const& post, Changed changed)
    : agent_(agent)
    , post_(post)
    , changed_(std::move(changed))
{}

void Registrations::begin(std::vector<LineAccount> const& accounts)
{
    for (LineAccount const& line : accounts) {
        if (!line.registers || entries_.count(line.lineNumber) != 0) {
            continue;
        }
        Entry& entry = entries_[line.lineNumber];
        entry.line = line;
        entry.registration = agent_.registerAccount(line.account, *this);
    }
}

void Registrations::end()
{
    for (auto& [number, entry] : entries_) {
        if (entry.registered) {
            tell(entry, false, sfiRegistrationEnded);
        }
    }
    entries_.clear();
}

bool Registrations::isRegistered(int lineNumber) const
{
    std::lock_guard const guard(agent_.loop());
    auto const found = entries_.find(lineNumber);
    return found != entries_.end() && found->second.registered;
}

Registrations::Entry* Registrations::find(sip::Registration const& registration)
{
    auto const found = std::ranges::find_if(
        entries_, [&registration](auto const& entry) { return entry.second.registration.get() == &registration; });
    return found == entries_.end() ? nullptr : &found->second;
}

void Registrations::onRegistered(sip::Registration& registration, unsigned)
{
    if (Entry* entry = find(registration)) {
        tell(*entry, true, sfiRegistrationSucceeded);
    }
}

void Registrations::onRegistrationFailed(sip::Registration& registration, int status, std::string const& reason)
{
    Entry* entry = find(registration);
    if (entry == nullptr) {
        return;
    }
    log(kLogWarning, kComponent, "line {} is not registered: {} {}", entry->line.lineURI, status, reason);
    tell(*entry, false, registrationResultOf(status));
}

void Registrations::tell(Entry& entry, bool registered, sfiRegistrationResult result)
{
    if (entry.told == result) {
        return;
    }
    entry.told = result;
    entry.registered = registered;
    if (registered) {
        log(kLogInfo, kComponent, "line {} is registered", entry.line.lineURI);
    }
    LineAccount const line = entry.line;
    changed_(line, registered);
    post_([lineURI = line.lineURI, registered, result](CommunicationsServiceEventIfc& event) {
        event.registrationStateChange(lineURI, 0, registered, result);
    });
}

}  // namespace telephone
