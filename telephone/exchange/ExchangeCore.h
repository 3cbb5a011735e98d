// What the calls of an exchange ask of it. Implemented by the exchange; the calls are written against this, so that
// they can be read without it.
#pragma once

#include <memory>
#include <string>

#include "telephone/exchange/NumberBehaviour.h"
#include "telephone/sip/Account.h"
#include "telephone/sip/Transfer.h"
#include "telephone/sip/UserAgent.h"

namespace telephone::exchange {

class ExchangeCall;

struct ExchangeCore
{
    virtual ~ExchangeCore() = default;
    virtual sip::EventLoop& loop() = 0;
    virtual sip::UserAgent& agent() = 0;
    virtual sip::Account accountOf(std::string const& number) const = 0;
    // A call of that number began, rings, talks or ended: whoever watches is told.
    virtual void changed(std::string const& number) = 0;
    // The call has ended; it is dropped as soon as nothing runs in it.
    virtual void drop(ExchangeCall& call) = 0;
    // A call's far end asks it to call somebody else.
    virtual void transfer(std::string const& number, std::unique_ptr<sip::Transfer> transfer) = 0;
    // Calls who was talking to a number.
    virtual void callBack(std::string const& number, sip::NameAddr const& caller, std::string const& contact) = 0;
    virtual void say(sip::LogLevel level, std::string const& line) const = 0;
};

}  // namespace telephone::exchange
