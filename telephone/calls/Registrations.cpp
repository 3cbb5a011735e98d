#include "telephone/calls/Registrations.h"

#include <algorithm>
#include <utility>

#include "CommunicationsServiceEventIfc.h"

namespace telephone {

namespace {

bool sameAccount(sip::Account const& left, sip::Account const& right)
{
    return left.user == right.user && left.domain == right.domain && left.registrar == right.registrar &&
           left.authUser == right.authUser && left.password == right.password && left.proxy == right.proxy &&
           left.transport == right.transport && left.expires == right.expires && left.displayName == right.displayName;
}

}  // namespace

Registrations::Registrations(CallHost& host, sip::UserAgent& agent, Changed changed)
    : host_(host)
    , agent_(agent)
    , changed_(std::move(changed))
{}

Registrations::~Registrations() = default;

void Registrations::refresh(std::vector<LineAccount> const& accounts)
{
    auto const wanted = [&accounts](Entry const& entry) {
        return std::any_of(accounts.begin(), accounts.end(), [&entry](const LineAccount& line) {
            return line.registers && line.lineNumber == entry.line.lineNumber &&
                   sameAccount(line.account, entry.line.account);
        });
    };
    for (auto it = entries_.begin(); it != entries_.end();) {
        if (wanted(it->second)) {
            ++it;
            continue;
        }
        if (it->second.registered) {
            tell(it->second, false, sfiRegistrationEnded);
        }
        it = entries_.erase(it);
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

void Registrations::clear()
{
    refresh({});
}

bool Registrations::isRegistered(int lineNumber) const
{
    auto const found = entries_.find(lineNumber);
    return found != entries_.end() && found->second.registered;
}

Registrations::Entry* Registrations::find(sip::Registration const& registration)
{
    auto const found = std::find_if(entries_.begin(), entries_.end(), [&registration](auto const& entry) {
        return entry.second.registration.get() == &registration;
    });
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
    host_.log(sip::LogLevel::kWarning,
              "line " + entry->line.lineURI + " is not registered: " + std::to_string(status) + ' ' + reason);
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
        host_.log(sip::LogLevel::kInfo, "line " + entry.line.lineURI + " is registered");
    }
    const LineAccount line = entry.line;
    changed_(line, registered);
    host_.post([lineURI = line.lineURI, registered, result](CommunicationsServiceEventIfc& event) {
        event.registrationStateChange(lineURI, 0, registered, result);
    });
}

}  // namespace telephone
