// A running loop, and an exchange on it.
#pragma once

#include <regex>
#include <string>

#include <gtest/gtest.h>

#include "SipPeer.h"
#include "telephone/exchange/Exchange.h"

namespace telephone::test {

// The only contact of a number, with *** for its secret.
inline std::string contactOf(exchange::Exchange const& exchange, std::string const& number)
{
    auto const contacts = exchange.contactsOf(number);
    return contacts.size() == 1 ? std::regex_replace(contacts[0], std::regex(";line=[0-9a-f]{16}"), ";line=***")
                                : std::to_string(contacts.size()) + " contacts";
}

class SipTest : public ::testing::Test
{
protected:
    SipTest() { loop.start(); }

    sip::EventLoop loop;
};

class ExchangeTest : public SipTest
{
protected:
    std::string at(std::string const& number) const { return "sip:" + number + "@" + exchange.hostPort(); }

    exchange::Exchange exchange{loop, {}};
};

}  // namespace telephone::test
