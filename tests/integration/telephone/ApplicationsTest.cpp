// Applications at the socket of a running telephone, and the commands that use this socket.
#include <thread>

#include <gtest/gtest.h>

#include "RunningTelephone.h"

TEST(Applications, RequestsAndEvents_OfACall)
{
    RunningTelephone telephone;
    Application application(telephone.socket());

    EXPECT_EQ(application.request(method("Subscribe")), "sfiSuccess");
    EXPECT_EQ(application.request(method("OutgoingCallMakeRequest",
                                         "<Line>4711</Line><CallID>1</CallID><Destination>100</Destination>")),
              "sfiSuccess");
    application.event("<CallID>1</CallID><CallState>6</CallState>");
    EXPECT_EQ(application.request(method("HoldCall", "<Line>4711</Line><CallID>1</CallID>")), "sfiSuccess");

    EXPECT_EQ(application.event("CallHeldEvent"),
              "<Method>CallHeldEvent</Method><LineID>4711</LineID><CallID>1</CallID>");
}

TEST(Applications, RequestThatIsNeverAnswered_IsFinished)
{
    RunningTelephone telephone;
    Application application(telephone.socket());

    EXPECT_EQ(application.request(method("callbackDOFeatureCallID", "<CallID>1</CallID><instanceId>1</instanceId>")),
              std::nullopt);
    EXPECT_EQ(application.request("SigEvent:abc"), std::nullopt);
}

TEST(Applications, BadRequests_AreAnsweredWithFailure)
{
    RunningTelephone telephone({"--check", "events"});
    Application application(telephone.socket());
    std::string binary;
    for (int byte = 1; byte < 256; ++byte) {
        binary += static_cast<char>(byte);
    }

    for (std::string const& each :
         {"<" + binary, std::string("<Method>HoldCall"), method(std::string(1 << 20, 'x')),
          method("HoldCall", "<Line>" + std::string(1 << 20, 'x') + "</Line>")}) {
        EXPECT_EQ(application.request(each), "sfiFailure");
    }
    EXPECT_EQ(application.request(method("GetServiceState")), "sfiSuccess,sfiServiceInService");
}

TEST(Applications, ManyAtOnce_EachGetItsOwnAnswers)
{
    constexpr int kApplications = 16;
    constexpr int kRequests = 200;
    RunningTelephone telephone;
    std::vector<std::thread> threads;
    for (int i = 0; i < kApplications; ++i) {
        threads.emplace_back([&telephone, i] {
            Application application(telephone.socket());
            bool const mute = i % 2 == 0;
            for (int k = 0; k < kRequests; ++k) {
                if (mute) {
                    EXPECT_EQ(application.request(method("GetDoNotDisturb", "<deviceID>4711</deviceID>")),
                              "sfiSuccess,false");
                } else {
                    EXPECT_EQ(
                        application.request(method("getManualHoldIndication", "<Line>4711</Line><CallID>1</CallID>")),
                        "false");
                }
            }
        });
    }
    for (std::thread& each : threads) {
        each.join();
    }
}

TEST(Applications, OneThatNeverReads_DoesNotHoldUpACall)
{
    RunningTelephone telephone;
    auto deaf = telephone::ApplicationClient::connect(telephone.socket());
    ASSERT_TRUE(deaf);
    ASSERT_TRUE(deaf->send(method("Subscribe")));
    Application application(telephone.socket());
    application.request(method("Subscribe"));

    for (int call = 1; call <= 100; ++call) {
        std::string const id = "<CallID>" + std::to_string(call) + "</CallID>";
        ASSERT_EQ(application.request(
                      method("OutgoingCallMakeRequest", "<Line>4711</Line>" + id + "<Destination>101</Destination>")),
                  "sfiSuccess");
        application.event(id + "<CallState>13</CallState>");
    }
}

TEST(Applications, OneThatDiesInTheMiddle_LeavesTheTelephoneAlone)
{
    RunningTelephone telephone;
    {
        Process dying({TELEPHONE, "--socket", telephone.socket(), "watch"});
        auto half = telephone::ApplicationClient::connect(telephone.socket());
        ASSERT_TRUE(half);
        ASSERT_TRUE(half->send(method("Subscribe")));
        dying.signal(SIGKILL);
        EXPECT_EQ(dying.wait(), 128 + SIGKILL);
    }
    Application application(telephone.socket());
    EXPECT_EQ(application.request(method("GetServiceState")), "sfiSuccess,sfiServiceInService");
}

TEST(Applications, RequestCommand_PrintsTheAnswer)
{
    RunningTelephone telephone;
    auto const request = [&](std::vector<std::string> words) {
        words.insert(words.begin(), {TELEPHONE, "--socket", telephone.socket(), "request"});
        return run(words);
    };

    Ended const state = request({"GetServiceState"});
    EXPECT_EQ(state.output, "sfiSuccess,sfiServiceInService\n");
    EXPECT_EQ(state.status, 0);
    Ended const failing = request({"HoldCall", "Line=4711", "CallID=1"});
    EXPECT_EQ(failing.output, "sfiFailure\n");
    EXPECT_EQ(failing.status, 1);
    Ended const whole = request({"<Method>GetServiceState</Method>"});
    EXPECT_EQ(whole.output, "sfiSuccess,sfiServiceInService\n");
    Ended const wrong = request({"HoldCal"});
    EXPECT_EQ(wrong.output, "telephone: no request HoldCal (did you mean HoldCall?)\n");
    EXPECT_EQ(wrong.status, 1);
}

TEST(Applications, WatchCommand_PrintsTheEventsUntilTheTelephoneEnds)
{
    RunningTelephone telephone;
    Process watch({TELEPHONE, "--socket", telephone.socket(), "watch"});
    Application application(telephone.socket());
    watch.readUntil("watching\n");

    application.request(method("SetDoNotDisturb", "<Line>4711</Line><doNotDisturbOn>1</doNotDisturbOn>"));

    watch.readUntil("<Method>DoNotDisturbEvent</Method><deviceId>4711</deviceId><doNotDisturbOn>1</doNotDisturbOn>\n");
    telephone.process().signal(SIGTERM);

    EXPECT_EQ(telephone.process().wait(), 0) << telephone.process().output();
    EXPECT_EQ(watch.wait(), 1);
    EXPECT_NE(watch.output().find("telephone: the telephone has ended\n"), std::string::npos) << watch.output();
}

TEST(Applications, CommandsWithoutATelephone_SayHowToStartOne)
{
    TemporaryFolder const folder;
    Ended const result = run({TELEPHONE, "--socket", folder.file("nobody"), "request", "GetServiceState"});

    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "telephone: no telephone answers at " + folder.file("nobody") +
                                 " (No such file or directory): start one, or name its socket with --socket\n");
}
