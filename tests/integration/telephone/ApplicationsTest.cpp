// Applications at the socket of a running telephone, and the commands that use this socket.
#include <thread>

#include <gtest/gtest.h>

#include "RunningTelephone.h"

namespace {

// Runs one of the commands for a running telephone.
Ended runAt(RunningTelephone const& telephone, std::string const& command, std::vector<std::string> const& words)
{
    std::vector<std::string> all{TELEPHONE, "--socket", telephone.socket(), command};
    all.insert(all.end(), words.begin(), words.end());
    return run(all);
}

}  // namespace

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
    std::string binary = "<";
    for (int byte = 1; byte < 256; ++byte) {
        binary += static_cast<char>(byte);
    }

    for (std::string const& each : {binary, std::string("<Method>HoldCall"), method(std::string(1 << 20, 'x')),
                                    method("HoldCall", "<Line>" + std::string(1 << 20, 'x') + "</Line>")}) {
        EXPECT_EQ(application.request(each), "sfiFailure");
    }
    EXPECT_EQ(application.request(""), "error: the message is empty");
    EXPECT_EQ(application.request("hold"),
              "error: no request or command hold (did you mean HoldCall?); help lists them");
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
    auto deaf = telephone_client::Connection::open(telephone.socket());
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
        auto half = telephone_client::Connection::open(telephone.socket());
        ASSERT_TRUE(half);
        ASSERT_TRUE(half->send(method("Subscribe")));
        dying.signal(SIGKILL);
        EXPECT_EQ(dying.wait(), 128 + SIGKILL);
    }
    Application application(telephone.socket());
    EXPECT_EQ(application.request(method("GetServiceState")), "sfiSuccess,sfiServiceInService");
}

TEST(Applications, RequestCommand_PrintsTheAnswerAndFailsWithIt)
{
    RunningTelephone telephone({"--check", "events"});

    for (auto const& [words, output, status] : std::vector<std::tuple<std::vector<std::string>, std::string, int>>{
             {{"GetServiceState"}, "sfiSuccess,sfiServiceInService\n", 0},
             {{"<Method>GetServiceState</Method>"}, "sfiSuccess,sfiServiceInService\n", 0},
             {{"HoldCall", "Line=4711", "CallID=1"},
              "line 4711 has no call 1; the telephone has no calls\nsfiFailure\n",
              1},
             {{"ActivateCallbackBusy", "CallID=1"},
              "there is no call 1; the telephone has no calls\nsfiFailureCallBackNoCallInfo\n",
              1},
             {{"--lenient", "getForwardingConfiguration", "fwType=9"},
              "there is no forwarding type 9 (0 to 8)\n<sfiResult>sfiFailure</sfiResult><status>0</status><uri></uri>"
              "<cfnrRingCount>0</cfnrRingCount>\n",
              1},
             {{"getForwardingConfiguration", "fwType=9"}, "telephone: fwType \"9\" is out of range (0 to 8)\n", 1},
             {{"HoldCal"}, "telephone: no request HoldCal (did you mean HoldCall?)\n", 1},
             {{"<Method>HoldCal</Method>"}, "telephone: there is no request HoldCal (did you mean HoldCall?)\n", 1},
             {{"--lenient", "<Method>HoldCal</Method>"},
              "there is no request HoldCal (did you mean HoldCall?)\nsfiFailure\n",
              1},
             {{"--lenient", "setIsInServiceInitiatedState", "Line=4711", "IsInServiceInitiatedState=FALSE"}, "", 0},
         }) {
        Ended const result = runAt(telephone, "request", words);
        EXPECT_EQ(result.output, output) << words.back();
        EXPECT_EQ(result.status, status) << words.back();
    }
}

TEST(Applications, DoCommand_PrintsTheResultAndFailsWithAReason)
{
    RunningTelephone telephone;

    Ended const calls = runAt(telephone, "do", {"calls"});
    EXPECT_EQ(calls.output, "no calls\n");
    EXPECT_EQ(calls.status, 0);
    Ended const said = runAt(telephone, "do", {"say", "a \"b\"  c"});
    EXPECT_EQ(said.output, "a \"b\"  c\n");
    Ended const pressed = runAt(telephone, "do", {"press", "1"});
    EXPECT_EQ(pressed.output, "");
    EXPECT_EQ(pressed.status, 0);
    Ended const wrong = runAt(telephone, "do", {"press", "99"});
    EXPECT_EQ(wrong.output, "telephone: there is no key \"99\"; the layout has 1 to 15\n");
    EXPECT_EQ(wrong.status, 1);
    Ended const quit = runAt(telephone, "do", {"quit"});
    EXPECT_EQ(quit.status, 0) << quit.output;
    EXPECT_EQ(telephone.process().wait(), 0) << telephone.process().output();
}

TEST(Applications, WatchCommand_PrintsTheEventsUntilTheTelephoneEnds)
{
    RunningTelephone telephone;
    Process readable({TELEPHONE, "--socket", telephone.socket(), "watch"});
    Process raw({TELEPHONE, "--socket", telephone.socket(), "watch", "--raw"});
    readable.readUntil("watching\n");
    raw.readUntil("watching\n");
    Application application(telephone.socket());

    application.request(method("SetDoNotDisturb", "<Line>4711</Line><doNotDisturbOn>1</doNotDisturbOn>"));

    raw.readUntil(" <Method>DoNotDisturbEvent</Method><deviceId>4711</deviceId><doNotDisturbOn>1</doNotDisturbOn>\n");
    readable.readUntil("4711           do-not-disturb");
    telephone.process().signal(SIGTERM);

    EXPECT_EQ(telephone.process().wait(), 0) << telephone.process().output();
    for (Process* const watch : {&readable, &raw}) {
        EXPECT_EQ(watch->wait(), 1);
        EXPECT_NE(watch->output().find("telephone: the telephone has ended\n"), std::string::npos) << watch->output();
    }
}

TEST(Applications, WatchCommand_SelectsEventsAndBeginsWithPastOnes)
{
    RunningTelephone telephone;

    // Both lines have registered before the telephone serves applications.
    Process watch({TELEPHONE, "--socket", telephone.socket(), "watch", "--after", "0", "--only",
                   "RegistrationStateChange,CallHeldEvent", "--line", "4712", "--json"});

    watch.readUntil(R"("name":"RegistrationStateChangeEvent","line":"4712","call":null,"elements":{"LineID":"4712",)");
    EXPECT_EQ(watch.output().find("\"line\":\"4711\""), std::string::npos) << watch.output();
    watch.signal(SIGTERM);
    EXPECT_EQ(watch.wait(), 0);
    Ended const wrong = runAt(telephone, "watch", {"--only", "CallHeldEvnt"});
    EXPECT_EQ(wrong.output, "telephone: no event CallHeldEvnt (did you mean CallHeldEvent?)\n");
    EXPECT_EQ(wrong.status, 1);
}

TEST(Applications, CommandsWithoutATelephone_SayHowToStartOne)
{
    TemporaryFolder const folder;
    Ended const result = run({TELEPHONE, "--socket", folder.file("nobody"), "request", "GetServiceState"});

    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "telephone: no telephone answers at " + folder.file("nobody") +
                                 " (No such file or directory): start one, or name its socket with --socket\n");
}
