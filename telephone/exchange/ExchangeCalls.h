// All calls of the exchange's own numbers. Owned by the exchange; used under the lock.
#pragma once

#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "telephone/exchange/Appearances.h"
#include "telephone/exchange/DeferredWork.h"
#include "telephone/exchange/ExchangeCall.h"
#include "telephone/exchange/Registrar.h"

namespace telephone::exchange {

class ExchangeCalls final : public ExchangeCallObserver
{
public:
    // changed: a call of the number began, rang, was answered or ended.
    ExchangeCalls(ExchangeConfig const& config, sip::UserAgent& agent, Registrar const& registrar,
                  Appearances& appearances, DeferredWork& deferred,
                  std::function<void(std::string const& number)> changed);

    // lastParty: the URI that the number calls as "caller".
    ExchangeCall& add(ExchangeNumber number, std::string lastParty = {});
    // A call that answers and has no steps: a replacement, or a call that a transfer or a command makes.
    ExchangeCall& add(std::string const& number) { return add(ExchangeNumber{.number = number}); }
    // Null if there is none.
    ExchangeCall* find(sip::Replaces const& wanted) const;
    // A ringing call of a number that the predicate accepts.
    ExchangeCall* findRinging(std::function<bool(std::string const& number)> const& accepts) const;
    // The latest call of a number, if it has one.
    ExchangeCall* latestOf(std::string const& number) const;
    bool has(std::string const& callId) const;
    // Whether the other end of a call within the exchange has made it private.
    bool isPrivate(ExchangeCall const& call) const;
    // Puts a new call in the place of one in the list.
    void replace(std::unique_ptr<sip::Session> session, ExchangeCall& present);
    // Makes a call of three of a new call and one in the list.
    void join(std::unique_ptr<sip::Session> session, ExchangeCall& present);
    // Calls from a number; a target that is a number here is called at its telephone.
    [[nodiscard]] Outcome<> callOut(std::string const& from, Dialling dialling);
    // Replaces the ringing call of a telephone by a call of the picker, who is answered once that has succeeded.
    void pickUpRemote(std::unique_ptr<sip::Session> picker, std::string const& number, sip::DialogEntry const& ringing);
    // Makes the call that a transfer requests of a number.
    void transfer(std::string const& number, std::string const& displayName, std::unique_ptr<sip::Transfer> transfer);

    std::vector<sip::DialogEntry> dialogsOf(std::string const& number) const;
    bool isInCall(std::string const& number) const;
    std::size_t count() const;  // without ended ones
    void clear();

private:
    void callChanged(ExchangeCall const& call) override;
    void callEnded(ExchangeCall& call) override;
    void transferRequested(ExchangeCall const& call, std::unique_ptr<sip::Transfer> transfer) override;
    void stepsLeft(ExchangeCall const& call, Steps steps, std::string lastParty) override;
    std::string uriOf(std::string const& number) const override;
    std::string contactOf(sip::Session const& session) const override;
    Outcome<int> takeAppearance(ExchangeCall const& call) override;

    std::string resolve(std::string const& target) const;

    ExchangeConfig const& config_;
    sip::UserAgent& agent_;
    Registrar const& registrar_;
    Appearances& appearances_;
    DeferredWork& deferred_;
    std::function<void(std::string const& number)> changed_;
    std::list<std::unique_ptr<ExchangeCall>> calls_;
};

}  // namespace telephone::exchange
