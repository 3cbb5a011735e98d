#include "telephone/console/Conversation.h"

#include <gtest/gtest.h>

#include "ConsoleDoubles.h"
#include "telephone/framework/Refusals.h"

using namespace telephone;

namespace {

class ConversationTest : public testing::Test
{
protected:
    std::string refusalOf(std::string const& line)
    {
        auto const result = conversation_.run(line);
        return result ? "accepted" : result.error().reason;
    }

    TalkingTelephone telephone_;
    Conversation& conversation_ = *telephone_.conversation;
};

}  // namespace

TEST_F(ConversationTest, ShortRequest_IsSentAndAnswered)
{
    auto const result = conversation_.run("HoldCall Line=4711 CallID=1").value();

    EXPECT_TRUE(result.isRequest);
    EXPECT_EQ(result.answer, "sfiSuccess");
    EXPECT_EQ(telephone_.invoker.requests,
              std::vector<std::string>{"<Method>HoldCall</Method><Line>4711</Line><CallID>1</CallID>"});
    EXPECT_EQ(telephone_.written, "request  <Method>HoldCall</Method><Line>4711</Line><CallID>1</CallID>\n"
                                  "answer   sfiSuccess\n");
}

TEST_F(ConversationTest, RequestWithoutAnswer_IsShownAsFinished)
{
    telephone_.invoker.answer = [](std::string const&) { return ""; };

    auto const result = conversation_.run("callbackDOFeatureCallID CallID=1 instanceId=2").value();

    EXPECT_EQ(result.answer, std::nullopt);
    EXPECT_EQ(telephone_.written,
              "request  <Method>callbackDOFeatureCallID</Method><CallID>1</CallID><instanceId>2</instanceId>\n"
              "finished\n");
}

TEST_F(ConversationTest, Answer_WithControlCharacters_IsWrittenHarmlessly)
{
    telephone_.invoker.answer = [](std::string const&) { return std::string("a\x1b[2Jb\n"); };

    EXPECT_TRUE(conversation_.run("GetDevices"));

    EXPECT_EQ(telephone_.written, "request  <Method>GetDevices</Method>\nanswer   a\\x1b[2Jb\\x0a\n");
}

TEST_F(ConversationTest, WrongLine_IsRefusedAndNotWritten)
{
    EXPECT_EQ(refusalOf("hook off"), "\"off\" is not up or down; write it as: hook up|down");
    EXPECT_EQ(refusalOf("HoldCall Line=4711"), "HoldCall lacks CallID, which is read as -1");

    EXPECT_EQ(telephone_.written, "");
}

TEST_F(ConversationTest, ResultOfACommand_IsWritten)
{
    EXPECT_TRUE(conversation_.run("calls"));
    EXPECT_TRUE(conversation_.run("press 1"));

    EXPECT_EQ(telephone_.written, "no calls\n");
}

TEST_F(ConversationTest, Raw_ChangesWhatIsWrittenFromThenOn)
{
    EXPECT_TRUE(conversation_.run("raw off"));
    EXPECT_EQ(telephone_.transcript.kind(), OutputKind::kWords);
    EXPECT_TRUE(conversation_.run("raw on"));
    EXPECT_EQ(telephone_.transcript.kind(), OutputKind::kTags);
}

TEST_F(ConversationTest, Raw_IsRefusedWhereEverythingIsWrittenAsJson)
{
    conversation_.writeAs(OutputKind::kJson);

    EXPECT_EQ(refusalOf("raw on"), "messages are written with their tags here already");
}

TEST_F(ConversationTest, Reply_HasItsReasonsBelowTheAnswer)
{
    telephone_.invoker.answer = [](std::string const&) {
        reportRefusal("test", {RefusalKind::kNotFound, "the store is gone"});
        return "sfiSuccess";
    };

    EXPECT_TRUE(conversation_.run("SetMicrophoneMute Status=1"));

    EXPECT_EQ(telephone_.written, "request  <Method>SetMicrophoneMute</Method><Status>1</Status>\n"
                                  "answer   sfiSuccess\n"
                                  "reason   the store is gone\n");
}

TEST_F(ConversationTest, EmptyLineCommentAndQuit_AreToldApart)
{
    EXPECT_FALSE(conversation_.run("   ")->isOver);
    EXPECT_FALSE(conversation_.run("# comment")->isRequest);
    EXPECT_TRUE(conversation_.run("quit")->isOver);
}

TEST_F(ConversationTest, LampsThatAreWatched_AreWrittenWhenTheyChange)
{
    TelephoneState& state = telephone_.controls.present;
    state.keys.resize(2);
    state.keys[0].number = 3;
    state.keys[1].function = "SecondAlert";
    conversation_.showLamps();
    state.keys[0].lamp = {"flashing", "green"};

    telephone_.controls.lampsChanged();
    conversation_.takeEvents();
    telephone_.controls.lampsChanged();
    conversation_.takeEvents();

    EXPECT_EQ(telephone_.written, "lamp     3 flashing green\n");
}

TEST_F(ConversationTest, Observer_ReceivesRequestAnswerAndEvent)
{
    std::vector<std::string> seen;
    conversation_.observe([&seen](Message const& message) {
        seen.push_back(std::string(kMessageKindNames[static_cast<std::size_t>(message.kind)]) + " " +
                       std::string(message.text));
    });

    EXPECT_TRUE(conversation_.run("HoldCall Line=4711 CallID=1"));
    telephone_.held(1);
    EXPECT_TRUE(conversation_.waitForEvents(Conversation::Clock::now() + std::chrono::seconds(10)));
    conversation_.observe(nullptr);
    EXPECT_TRUE(conversation_.run("GetServiceState"));

    EXPECT_EQ(seen, (std::vector<std::string>{
                        "request <Method>HoldCall</Method><Line>4711</Line><CallID>1</CallID>", "answer sfiSuccess",
                        "finished ", "event <Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>1</CallID>"}));
}
