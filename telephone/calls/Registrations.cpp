#include "telephone/calls/Registrations.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "CommunicationsServiceEventIfc.h"
#include "telephone/calls/LogComponent.h"
#include "telephone/framework/Log.h"
#include "telephone/sip/EventLoop.h"

namespace telephone {

namespace {

bool sameAccount(sip::Account const& left, sip::Account const& right)
{
    return left.user == right.user && left.domain == right.domain && left.registrar == right.registrar &&
           left.authUser == right.authUser && left.password == right.password && left.proxy == right.proxy &&
           left.transport == right.transport && left.expires == right.expires && left.displayName == right.displayName;
}

}  // namespace

Registrations::Registrations(sip::UserAgent& agent, EventPoster const& post, Changed changed)
    : agent_(agent)
    , post_(post)
    , changed_(std::move(changed))
{}

void Registrations::refresh(std::vector<LineAccount> const& accounts)
{
    auto const isListed = [&accounts](Entry const& entry) {
        return std::ranges::any_of(accounts, [&entry](LineAccount const& line) {
            return line.registers && line.lineNumber == entry.line.lineNumber &&
                   sameAccount(line.account, entry.line.account);
        });
    };
    for (auto each = entries_.begin(); each != entries_.end();) {
        if (isListed(each->second)) {
            ++each;
            continue;
        }
        if (each->second.registered) {
            tell(each->second, false, sfiRegistrationEnded);
        }
        each = entries_.erase(each);
    }
    for (LineAccount const& line : accounts) {
        if (!line.registers || entries_.count(line.lineNumber) != 0) {
            continue;
        }
        Entry& entry = entries_[line.lineNumber];
        entry.line = line;
        entry.registration = agent_.registerAccount(line.account, *this);
    }
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
