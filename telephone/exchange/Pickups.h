// Pick-ups of ringing calls, those of the exchange's own numbers and those of registered telephones; the latter must be
// asked first. Owned by the exchange; used under the lock.
#pragma once

#include <functional>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include "telephone/exchange/DeferredWork.h"
#include "telephone/exchange/ExchangeCalls.h"
#include "telephone/exchange/PendingPickup.h"
#include "telephone/exchange/Registrar.h"
#include "telephone/exchange/TelephoneDialogs.h"

namespace telephone::exchange {

class Pickups
{
public:
    // interestChanged: isFor() has changed for the number.
    Pickups(sip::EventLoop& loop, ExchangeCalls& calls, Registrar const& registrar, TelephoneDialogs const& dialogs,
            DeferredWork& deferred, std::function<void(std::string const& number)> interestChanged);

    // Gives the caller a ringing call of a number that the predicate accepts; refuses with 480 if none rings.
    void pickUp(std::unique_ptr<sip::Session> session, std::function<bool(std::string const& number)> const& accepts);
    // The telephone of the number has reported its dialogs.
    void check(std::string const& number);
    // Whether a caller waits for the dialogs of the number.
    bool isFor(std::string const& number) const;
    void clear() { pending_.clear(); }

private:
    void search(std::unique_ptr<sip::Session> session, std::vector<std::string> numbers);
    void remove(PendingPickup& pickup);

    sip::EventLoop& loop_;
    ExchangeCalls& calls_;
    Registrar const& registrar_;
    TelephoneDialogs const& dialogs_;
    DeferredWork& deferred_;
    std::function<void(std::string const& number)> interestChanged_;
    std::list<std::unique_ptr<PendingPickup>> pending_;
};

}  // namespace telephone::exchange
