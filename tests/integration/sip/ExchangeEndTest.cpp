// What comes to an exchange while it waits for the last answers.
#include "ScriptedEnd.h"
#include "SipFixture.h"
#include "telephone/sip/Timer.h"

namespace telephone::test {

class ExchangeEnd : public SipTest
{
protected:
    // Ends the exchange in a call whose BYE is not answered, and does this meanwhile.
    void endDuringACall(std::function<void()> meanwhile)
    {
        far_.ask("INVITE", "100", address_, {}, ScriptedEnd::description());
        far_.acknowledge(far_.receive("SIP/2.0 200"));
        sip::Timer timer(loop);
        {
            std::lock_guard const guard(loop);
            timer.start(100ms, [&] { meanwhile(); });
        }
        exchange_.reset();
        far_.receive("BYE");
    }

    std::unique_ptr<exchange::Exchange> exchange_ =
        std::make_unique<exchange::Exchange>(loop, exchange::ExchangeConfig{});
    std::string const address_ = exchange_->hostPort();
    ScriptedEnd far_{loop};
};

TEST_F(ExchangeEnd, Call_IsRefused)
{
    endDuringACall([this] { far_.ask("INVITE", "100", address_, {}, ScriptedEnd::description()); });

    EXPECT_EQ("SIP/2.0 503 Service Unavailable", firstLineOf(far_.receive("SIP/2.0 ")));
}

TEST_F(ExchangeEnd, Transfer_IsRefused)
{
    endDuringACall([this] { far_.ask("REFER", "100", address_, "Refer-To: <sip:102@" + address_ + ">\r\n"); });

    EXPECT_EQ("SIP/2.0 481 Call/Transaction Does Not Exist", firstLineOf(far_.receive("SIP/2.0 ")));
}

TEST_F(ExchangeEnd, Registration_IsRefused)
{
    endDuringACall([this] { far_.ask("REGISTER", "raw", address_); });

    EXPECT_EQ("SIP/2.0 405 Method Not Allowed", firstLineOf(far_.receive("SIP/2.0 ")));
}

TEST_F(ExchangeEnd, Subscription_IsRefused)
{
    endDuringACall([this] { far_.ask("SUBSCRIBE", "100", address_, "Event: dialog\r\nExpires: 60\r\n"); });

    EXPECT_EQ("SIP/2.0 404 Not Found", firstLineOf(far_.receive("SIP/2.0 ")));
}

}  // namespace telephone::test
