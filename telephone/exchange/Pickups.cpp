#include "telephone/exchange/Pickups.h"

#include <algorithm>

namespace telephone::exchange {

Pickups::Pickups(sip::EventLoop& loop, ExchangeCalls& calls, Registrar const& registrar,
                 TelephoneDialogs const& dialogs, DeferredWork& deferred,
                 std::function<void(std::string const& number)> interestChanged)
    : loop_(loop)
    , calls_(calls)
    , registrar_(registrar)
    , dialogs_(dialogs)
    , deferred_(deferred)
    , interestChanged_(std::move(interestChanged))
{}

void Pickups::pickUp(std::unique_ptr<sip::Session> session,
                     std::function<bool(std::string const& number)> const& accepts)
{
    if (ExchangeCall* const ringing = calls_.findRinging(accepts)) {
        calls_.replace(std::move(session), *ringing);
        return;
    }
    auto numbers = registrar_.registeredNumbers();
    std::erase_if(numbers, [&accepts](std::string const& each) { return !accepts(each); });
    search(std::move(session), std::move(numbers));
}

void Pickups::search(std::unique_ptr<sip::Session> session, std::vector<std::string> numbers)
{
    // A caller cannot pick up the call of its own telephone here.
    std::erase(numbers, session->invitation().from.uri.user);
    if (numbers.empty()) {
        session->reject(480, "Nothing to pick up");
        return;
    }
    pending_.push_back(std::make_unique<PendingPickup>(loop_, std::move(session), numbers,
                                                       [this](PendingPickup& pickup) { remove(pickup); }));
    for (auto const& number : numbers) {
        interestChanged_(number);
        check(number);
    }
}

bool Pickups::isFor(std::string const& number) const
{
    return std::ranges::any_of(pending_, [&](auto const& pickup) { return pickup->isFor(number); });
}

void Pickups::check(std::string const& number)
{
    auto const pickup = std::ranges::find_if(pending_, [&number](auto const& each) { return each->isFor(number); });
    if (pickup == pending_.end()) {
        return;
    }
    auto const dialogs = dialogs_.dialogsOf(number);
    auto const ringing = std::ranges::find_if(dialogs, [](sip::DialogEntry const& entry) {
        return entry.recipient && entry.state == sip::DialogState::kEarly;
    });
    if (ringing != dialogs.end()) {
        auto session = (*pickup)->takeSession();
        remove(**pickup);
        calls_.pickUpRemote(std::move(session), number, *ringing);
    }
}

void Pickups::remove(PendingPickup& pickup)
{
    auto const numbers = pickup.numbers();
    pending_.remove_if([&pickup](auto const& known) { return known.get() == &pickup; });
    deferred_.add([this, numbers] {
        for (auto const& number : numbers) {
            interestChanged_(number);
        }
    });
}

}  // namespace telephone::exchange
