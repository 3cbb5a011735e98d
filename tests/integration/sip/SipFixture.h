// A running loop, and an exchange on it.
#pragma once

#include <gtest/gtest.h>

#include "SipPeer.h"
#include "telephone/exchange/Exchange.h"

namespace telephone::test {

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
