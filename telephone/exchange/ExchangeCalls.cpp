#include "telephone/exchange/ExchangeCalls.h"

#include <algorithm>

#include "telephone/exchange/ExchangeAgent.h"

namespace telephone::exchange {

ExchangeCalls::ExchangeCalls(ExchangeConfig const& config, sip::UserAgent& agent, Registrar const& registrar,
                             DeferredWork& deferred, std::function<void(std::string const& number)> changed)
    : config_(config)
    , agent_(agent)
    , registrar_(registrar)
    , deferred_(deferred)
    , changed_(std::move(changed))
{}

ExchangeCall& ExchangeCalls::add(std::string const& number, NumberBehaviour const& behaviour)
{
    calls_.push_back(std::make_unique<ExchangeCall>(agent_, *this, number, behaviour, config_.longestRinging));
    return *calls_.back();
}

ExchangeCall* ExchangeCalls::find(sip::Replaces const& wanted) const
{
    auto const found = std::ranges::find_if(calls_, [&wanted](auto const& call) { return call->matches(wanted); });
    return found == calls_.end() ? nullptr : found->get();
}

ExchangeCall* ExchangeCalls::findRinging(std::string const& number) const
{
    auto const found = std::ranges::find_if(calls_, [&number](auto const& call) {
        return call->isRinging() && (number.empty() || call->number() == number);
    });
    return found == calls_.end() ? nullptr : found->get();
}

void ExchangeCalls::replace(std::unique_ptr<sip::Session> session, ExchangeCall& present)
{
    ExchangeCall& fresh = add(present.number(), kAnswering);
    if (present.isRinging()) {
        fresh.pickUp(std::move(session), present);
    } else {
        fresh.takeInsteadOf(std::move(session), present);
    }
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
    ExchangeCall& call = add(from, kAnswering);
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
    ExchangeCall& outgoing = add(number, kAnswering);
    if (auto const dialled = outgoing.dial({.target = resolve(target), .replaces = replaces}); !dialled) {
        logRefusal(agent_, "pick-up of " + number, dialled);
        callEnded(outgoing);
        picker->reject(480, "Nothing to pick up");
        return;
    }
    add(number, kAnswering).takeFor(std::move(picker), outgoing);
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
        if (call->number() == number && call->hasSession()) {
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
    return static_cast<std::size_t>(std::ranges::count_if(calls_, [](auto const& call) { return !call->isEnded(); }));
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

void ExchangeCalls::callEnded(ExchangeCall& call)
{
    deferred_.add(
        [this, ended = &call] { calls_.remove_if([ended](auto const& known) { return known.get() == ended; }); });
}

void ExchangeCalls::transferRequested(ExchangeCall const& call, std::unique_ptr<sip::Transfer> requested)
{
    transfer(call.number(), call.displayName(), std::move(requested));
}

void ExchangeCalls::callBackRequested(std::string const& number, sip::NameAddr const& caller,
                                      std::string const& contact)
{
    auto const registered = registrar_.contactsOf(caller.uri.user);
    deferred_.add([this, number, target = registered.empty() ? contact : registered.front()] {
        logRefusal(agent_, "call-back of " + number, callOut(number, {.target = target}));
    });
}

}  // namespace telephone::exchange
