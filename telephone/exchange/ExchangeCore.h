// What the calls of an exchange ask of it. Implemented by the exchange; the calls are written against this, so that
// they can be read without it.
#pragma once

#include "NumberBehaviour.h"
#include "sip/Account.h"
#include "sip/Transfer.h"
#include "sip/UserAgent.h"

#include <memory>
#include <string>

namespace telephone::exchange {

class ExchangeCall;

struct ExchangeCore
{
    virtual ~ExchangeCore() = default;
    virtual sip::EventLoop& loop() = 0;
    virtual sip::UserAgent& agent() = 0;
    virtual sip::Account accountOf(const std::string& number) const = 0;
    // A call of that number began, rings, talks or ended: whoever watches is told.
    virtual void changed(const std::string& number) = 0;
    // The call has ended; it is dropped as soon as nothing runs in it.
    virtual void drop(ExchangeCall& call) = 0;
    // A call's far end asks it to call somebody else.
    virtual void transfer(const std::string& number, std::unique_ptr<sip::Transfer> transfer) = 0;
    // Calls who was talking to a number.
    virtual void callBack(const std::string& number, const sip::NameAddr& caller, const std::string& contact) = 0;
    virtual void say(sip::LogLevel level, const std::string& line) const = 0;
};

}  // namespace telephone::exchange
