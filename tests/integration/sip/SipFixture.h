// A running loop with an exchange, the ground of most tests here.
#pragma once

#include "TestPhone.h"
#include "exchange/Exchange.h"

#include <gtest/gtest.h>

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
    std::string at(const std::string& number) const { return "sip:" + number + "@" + exchange.hostPort(); }

    exchange::Exchange exchange{loop, {}};
};

}  // namespace telephone::test
