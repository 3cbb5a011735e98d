#include "telephone/exchange/ExchangeCalls.h"

#include <algorithm>

#include "telephone/exchange/ExchangeAgent.h"
#include "telephone/exchange/ReasonPhrases.h"

namespace telephone::exchange {

ExchangeCalls::ExchangeCalls(ExchangeConfig const& config, sip::UserAgent& agent, Registrar const& registrar,
                             Appearances& appearances, DeferredWork& deferred,
                             std::function<void(std::string const& number)> changed)
    : config_(config)
    , agent_(agent)
    , registrar_(registrar)
    , appearances_(appearances)
    , deferred_(deferred)
    , changed_(std::move(changed))
{}

ExchangeCall& ExchangeCalls::add(ExchangeNumber number, std::string lastParty)
{
    calls_.push_back(
        std::make_unique<ExchangeCall>(agent_, *this, std::move(number), config_.longestRinging, std::move(lastParty)));
    return *calls_.back();
}

ExchangeCall* ExchangeCalls::find(sip::Replaces const& wanted) const
{
    auto const found = std::ranges::find_if(calls_, [&wanted](auto const& call) { return call->matches(wanted); });
    return found == calls_.end() ? nullptr : found->get();
}

ExchangeCall* ExchangeCalls::findRinging(std::function<bool(std::string const& number)> const& accepts) const
{
    auto const found = std::ranges::find_if(
        calls_, [&accepts](auto const& call) { return call->isRinging() && accepts(call->number()); });
    return found == calls_.end() ? nullptr : found->get();
}

ExchangeCall* ExchangeCalls::latestOf(std::string const& number) const
{
    auto const found = std::find_if(calls_.rbegin(), calls_.rend(), [&number](auto const& call) {
        return call->number() == number && call->isVisible() && !call->isEnded();
    });
    return found == calls_.rend() ? nullptr : found->get();
}

bool ExchangeCalls::has(std::string const& callId) const
{
    return std::ranges::any_of(calls_, [&callId](auto const& call) { return call->hasCallId(callId); });
}

bool ExchangeCalls::isPrivate(ExchangeCall const& call) const
{
    auto const callId = call.dialogEntry().dialog.callId;
    return std::ranges::any_of(calls_,
                               [&callId](auto const& each) { return each->isPrivate() && each->hasCallId(callId); });
}

void ExchangeCalls::replace(std::unique_ptr<sip::Session> session, ExchangeCall& present)
{
    ExchangeCall& fresh = add(present.number());
    if (present.isRinging()) {
        fresh.pickUp(std::move(session), present);
    } else {
        fresh.takeInsteadOf(std::move(session), present);
    }
}

void ExchangeCalls::join(std::unique_ptr<sip::Session> session, ExchangeCall& present)
{
    if (!present.canBeJoined()) {
        session->reject(486, reasonPhrase(486));
        return;
    }
    add(present.number()).join(std::move(session), present);
}

// The contact of the registered telephone if the target is a number here.
std::string ExchangeCalls::resolve(std::string const& target) const
{
    auto const uri = sip::Uri::parse(target);
    bool const here =
        uri && uri->host == agent_.address() && (uri->port == agent_.udpPort() || uri->port == agent_.tcpPort());
    auto const contacts = here ? registrar_.contactsOf(uri->user) : std::vector<std::string>();
    return contacts.empty() ? target : contacts.front();
}

Outcome<> ExchangeCalls::callOut(std::string const& from, Dialling dialling)
{
    dialling.target = resolve(dialling.target);
    ExchangeCall& call = add(from);
    auto dialled = call.dial(std::move(dialling));
    if (!dialled) {
        callEnded(call);
    }
    return dialled;
}

void ExchangeCalls::pickUpRemote(std::unique_ptr<sip::Session> picker, std::string const& number,
                                 sip::DialogEntry const& ringing)
{
    std::string const target = ringing.remote.target.empty() ? ringing.remote.identity : ringing.remote.target;
    sip::Replaces replaces = ringing.dialog.replaces();
    replaces.earlyOnly = true;
    ExchangeCall& outgoing = add(number);
    if (auto const dialled = outgoing.dial({.target = resolve(target), .replaces = replaces}); !dialled) {
        logRefusal(agent_, "pick-up of " + number, dialled);
        callEnded(outgoing);
        picker->reject(480, "Nothing to pick up");
        return;
    }
    add(number).takeFor(std::move(picker), outgoing);
}

void ExchangeCalls::transfer(std::string const& number, std::string const& displayName,
                             std::unique_ptr<sip::Transfer> transfer)
{
    auto result = transfer->accept();
    if (result) {
        Dialling dialling{.target = transfer->target(),
                          .displayName = displayName,
                          .replaces = transfer->replaces(),
                          .referredBy = transfer->referredBy()};
        dialling.requestedBy = std::move(transfer);
        result = callOut(number, std::move(dialling));
    }
    logRefusal(agent_, "transfer of a call of " + number, result);
}

std::vector<sip::DialogEntry> ExchangeCalls::dialogsOf(std::string const& number) const
{
    std::vector<sip::DialogEntry> dialogs;
    for (auto const& call : calls_) {
        if (call->number() == number && call->isVisible()) {
            dialogs.push_back(call->dialogEntry());
        }
    }
    return dialogs;
}

bool ExchangeCalls::isInCall(std::string const& number) const
{
    return std::ranges::any_of(calls_,
                               [&number](auto const& call) { return call->number() == number && !call->isEnded(); });
}

std::size_t ExchangeCalls::count() const
{
    return static_cast<std::size_t>(
        std::ranges::count_if(calls_, [](auto const& call) { return call->hasSession() && !call->isEnded(); }));
}

void ExchangeCalls::clear()
{
    // A call that is destroyed may still look for its partner, so the list shrinks only afterwards.
    for (auto& call : calls_) {
        call.reset();
    }
    calls_.clear();
}

void ExchangeCalls::callChanged(ExchangeCall const& call)
{
    changed_(call.number());
}

Outcome<int> ExchangeCalls::takeAppearance(ExchangeCall const& call)
{
    return appearances_.take(call.number(), call.id());
}

void ExchangeCalls::callEnded(ExchangeCall& call)
{
    appearances_.release(call.number(), call.id());
    if (call.hasSession()) {
        auto const entry = call.dialogEntry();
        appearances_.release(sip::userOf(entry.remote.identity), entry.dialog.callId);
    }
    deferred_.add(
        [this, ended = &call] { calls_.remove_if([ended](auto const& known) { return known.get() == ended; }); });
}

void ExchangeCalls::transferRequested(ExchangeCall const& call, std::unique_ptr<sip::Transfer> requested)
{
    transfer(call.number(), call.displayName(), std::move(requested));
}

void ExchangeCalls::stepsLeft(ExchangeCall const& call, Steps steps, std::string lastParty)
{
    deferred_.add([this, number = ExchangeNumber{.number = call.number(), .name = call.displayName()},
                   steps = std::move(steps),
                   lastParty = std::move(lastParty)] { (void)add(number, lastParty).play(steps); });
}

std::string ExchangeCalls::uriOf(std::string const& number) const
{
    return resolve(accountOf(agent_, number).addressOfRecord());
}

std::string ExchangeCalls::contactOf(sip::Session const& session) const
{
    auto const registered = registrar_.contactsOf(session.remoteParty().uri.user);
    return registered.empty() ? session.remoteContact() : registered.front();
}

}  // namespace telephone::exchange
