// Services of the call server beside calls: waiting messages and computer-telephony bodies.
#include "ExchangePhones.h"

namespace telephone::test {

namespace {

class Server : public ::testing::Test
{
protected:
    exchange::Exchange exchange_{eventLoop(), {}};
    std::unique_ptr<EnginePhone> phone_;

    void start(bool subscribes)
    {
        EnginePhone::Options options = phoneAt(exchange_, {"4711", "4712"});
        options.engine.messageWaiting = subscribes;
        options.engine.voiceMail = "600";
        phone_ = std::make_unique<EnginePhone>(options);
        phone_->expect({"registration 4711 0 yes 0", "registration 4712 0 yes 0"});
    }
};

}  // namespace

TEST_F(Server, MessageSummary_IsToldAtOnceAndAtEachChange)
{
    start(true);
    phone_->expect({"messages 4711 1 0 0 0 0 1 2 0 600", "messages 4712 1 0 0 0 0 1 2 0 600"});

    ASSERT_TRUE(exchange_.setMessages("4712", {2, 8, 0, 2}));

    phone_->expect({"messages 4712 1 2 8 0 2 1 2 1 600"});
    auto const record = phone_->engine().messages().of("4712");
    ASSERT_TRUE(record);
    EXPECT_EQ(record->newMessages, 2U);
    EXPECT_EQ(record->oldMessages, 8U);
    EXPECT_EQ(record->messagesWaiting, sfiMessagesWaitingYes);
    EXPECT_EQ(phone_->engine().messages().of("")->newMessages, 0U);
}

TEST_F(Server, MessageSummaryThatChangesNothing_IsNotToldAgain)
{
    start(true);
    phone_->events().next(2);

    ASSERT_TRUE(exchange_.setMessages("4712", {1, 0, 0, 0}));
    phone_->expect({"messages 4712 1 1 0 0 0 1 2 1 600"});
    ASSERT_TRUE(exchange_.setMessages("4712", {1, 0, 0, 0}, true));
    EXPECT_EQ(phone_->events().next(std::chrono::milliseconds(200)), "nothing came");
    ASSERT_TRUE(exchange_.setMessages("4712", {0, 1, 0, 0}));

    phone_->expect({"messages 4712 1 0 1 0 0 1 2 0 600"});
}

TEST_F(Server, UnsolicitedMessageSummary_IsTold)
{
    start(false);
    EXPECT_FALSE(phone_->engine().messages().of("4711"));

    ASSERT_TRUE(exchange_.setMessages("4711", {3, 0, 0, 0}, true));

    phone_->expect({"messages 4711 1 3 0 0 0 1 2 1 600"});
}

TEST_F(Server, CstaRequest_IsAnsweredAndItsEchoTold)
{
    start(false);

    ASSERT_TRUE(phone_->engine().server().send("4712", "<GetDoNotDisturb/>"));

    std::vector<std::string> const events = phone_->events().next(2);
    EXPECT_EQ(std::count(events.begin(), events.end(), "csta-response 4712 1"), 1);
    EXPECT_EQ(std::count(events.begin(), events.end(), "csta 4712"), 1);
}

TEST_F(Server, CstaRequestOfAnUnknownLine_IsRefused)
{
    start(false);

    EXPECT_FALSE(phone_->engine().server().send("4799", "<GetDoNotDisturb/>"));
    EXPECT_FALSE(phone_->engine().server().send("4711", ""));
}

TEST_F(Server, ServerFeatures_AreBegunAndEnded)
{
    start(false);

    ASSERT_TRUE(phone_->engine().server().requestFeatures("4711", true));
    EXPECT_TRUE(phone_->events().waitFor("server 4711 initialized"));
    ASSERT_TRUE(phone_->engine().server().requestFeatures("4711", false));

    EXPECT_TRUE(phone_->events().waitFor("server 4711 finalized"));
}

TEST(PeerToPeer, LineWithoutAServer_RefusesCsta)
{
    EnginePhone phone(EnginePhone::Options{});

    EXPECT_FALSE(phone.engine().server().send("4711", "<GetDoNotDisturb/>"));
}

}  // namespace telephone::test
