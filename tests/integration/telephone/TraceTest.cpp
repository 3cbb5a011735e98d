// The trace of the whole telephone: what led to what, in virtual time.
#include <map>
#include <sstream>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "Process.h"
#include "RunningTelephone.h"
#include "tests/doubles/TemporaryFolder.h"

namespace {

using Json = nlohmann::json;

// The steps of a trace by their numbers.
class Steps
{
public:
    explicit Steps(std::string const& file)
    {
        std::istringstream content(contentOf(file));
        std::string line;
        std::getline(content, line);  // the header
        while (std::getline(content, line)) {
            Json step = Json::parse(line);
            auto const number = step["seq"].get<int>();
            steps_.emplace(number, std::move(step));
        }
    }

    [[nodiscard]] std::map<int, Json> const& all() const { return steps_; }

    [[nodiscard]] std::vector<std::string> chainToEvent(int number) const
    {
        return chainTo([number](Json const& step) { return step.value("number", 0) == number; });
    }

    // How the latest step of that kind came about, its first cause first: "platform CSfi::CallMake".
    template <typename IsMeant>
    [[nodiscard]] std::vector<std::string> chainTo(IsMeant const& isMeant) const
    {
        Json const* step = nullptr;
        for (auto const& [number, each] : steps_) {
            step = isMeant(each) ? &each : step;
        }
        std::vector<std::string> chain;
        while (step != nullptr) {
            chain.insert(chain.begin(), inShort(*step));
            auto const cause = steps_.find(step->value("because", 0));
            step = cause == steps_.end() ? nullptr : &cause->second;
        }
        return chain;
    }

private:
    static std::string inShort(Json const& step)
    {
        std::string text = step["step"];
        for (char const* const member :
             {"direction", "method", "status", "name", "number", "state", "function", "mode", "fault", "settings"}) {
            if (step.contains(member)) {
                text += " " + (step[member].is_string() ? step[member].get<std::string>() : step[member].dump());
            }
        }
        bool const isInput = step["step"] == "request" || step["step"] == "command";
        return isInput ? text + " " + step["text"].get<std::string>() : text;
    }

    std::map<int, Json> steps_;
};

class Trace : public testing::Test
{
protected:
    Ended play(std::string const& script, std::vector<std::string> const& options = {}) const
    {
        writeFile(folder_.file("a.script"), script);
        std::vector<std::string> command{TELEPHONE, "play",     folder_.file("a.script"), "--time",
                                         "virtual", "--socket", folder_.file("socket")};
        command.insert(command.end(), options.begin(), options.end());
        Ended ended = run(command);
        EXPECT_EQ(ended.status, 0) << ended.output;
        return ended;
    }

    Steps trace(std::string const& script, std::vector<std::string> options = {}) const
    {
        options.insert(options.end(), {"--trace", file()});
        static_cast<void>(play(script, options));
        return Steps(file());
    }

    std::string file() const { return folder_.file("a.trace"); }

    TemporaryFolder const folder_;
};

using Chain = std::vector<std::string>;

constexpr char const* kTracedHold = "OutgoingCallMakeRequest Line=4711 CallID=3 Destination=100\n"
                                    "wait CallStateChangeEvent CallState=connected\n"
                                    "HoldCall Line=4711 CallID=3\n"
                                    "wait CallHeldEvent\n";

}  // namespace

TEST_F(Trace, EventOfAHold_LeadsBackToItsRequest)
{
    Steps const steps = trace(kTracedHold);

    EXPECT_EQ(steps.chainToEvent(9),
              (Chain{"request <Method>HoldCall</Method><Line>4711</Line><CallID>3</CallID>",
                     "platform CSfi::CallFeature", "sip sent INVITE", "sip received INVITE 200", "event 9"}));
    EXPECT_EQ(steps.chainTo([](Json const& step) { return step.value("mode", "") == "fluttering"; }),
              (Chain{"request <Method>HoldCall</Method><Line>4711</Line><CallID>3</CallID>",
                     "platform CSfi::CallFeature", "sip sent INVITE", "sip received INVITE 200", "lamp fluttering"}));
}

TEST_F(Trace, EventsOfAnIncomingCall_LeadBackToWhoMadeIt)
{
    Steps const steps = trace("call 4711 from 100\n"
                              "wait CallStateChangeEvent CallState=ringing\n"
                              "press 1\n"
                              "wait CallStateChangeEvent CallState=connected\n");

    EXPECT_EQ(steps.chainTo([](Json const& step) { return step.value("state", "") == "ringing"; }),
              (Chain{"command call 4711 from 100", "sip received INVITE", "engine ringing"}));
    EXPECT_EQ(steps.chainTo([](Json const& step) { return step.value("state", "") == "connected"; }),
              (Chain{"command press 1", "key line", "sip sent INVITE 200", "sip received ACK", "engine connected"}));
}

TEST_F(Trace, FarEndThatHangsUp_EndsTheCallByItsBye)
{
    Steps const steps = trace("OutgoingCallMakeRequest Line=4711 CallID=3 Destination=105\n"
                              "wait CallStateChangeEvent CallState=idle within 30\n");

    auto const isIdle = [](Json const& step) { return step.value("state", "") == "idle"; };
    EXPECT_EQ(steps.chainTo(isIdle).at(steps.chainTo(isIdle).size() - 2), "sip received BYE");
}

TEST_F(Trace, ForwardingOnNoReply_LeadsBackToItsTimerAndTheCall)
{
    Steps const steps = trace("setForwardingConfiguration Line=4711 fwType=6 status=1 uri=103 cfnrRingCount=3\n"
                              "call 4711 from 100\n"
                              "wait CallForwardedEvent LineID=4711 within 20\n");

    EXPECT_EQ(steps
                  .chainTo([](Json const& step) {
                      return step["step"] == "event" &&
                             step["text"].get<std::string>().starts_with("<Method>CallForwardedEvent");
                  })
                  .at(2),
              "timer nobody answers a forwarded line");
}

TEST_F(Trace, StoreAndFaults_AreSteps)
{
    Steps const steps = trace("setForwardingConfiguration Line=4711 fwType=6 status=1 uri=103 cfnrRingCount=3\n"
                              "fault lamps stuck\n"
                              "fault off\n");

    EXPECT_EQ(steps.chainTo([](Json const& step) { return step["step"] == "store"; }).front(),
              "request <Method>setForwardingConfiguration</Method><Line>4711</Line><fwType>6</fwType><status>1</status>"
              "<uri>103</uri><cfnrRingCount>3</cfnrRingCount>");
    EXPECT_EQ(steps.chainTo([](Json const& step) { return step["step"] == "fault"; }),
              (Chain{"command fault off", "fault ends lamps stuck"}));
}

TEST_F(Trace, Refusal_IsAReasonOfItsRequest)
{
    Steps const steps = trace("HoldCall Line=4711 CallID=7\nexpect answer sfiFailure\n");

    auto const reason = [](Json const& step) { return step["step"] == "reason"; };
    EXPECT_EQ(steps.chainTo(reason),
              (Chain{"request <Method>HoldCall</Method><Line>4711</Line><CallID>7</CallID>", "reason"}));
}

TEST_F(Trace, EachCause_IsAnEarlierStepOfTheSameStory)
{
    Steps const steps = trace(contentOf(std::string(SCRIPTS) + "/attended-transfer.script"));

    ASSERT_GT(steps.all().size(), 100U);
    for (auto const& [number, step] : steps.all()) {
        int const cause = step.value("because", 0);
        ASSERT_LT(cause, number) << step;
        EXPECT_EQ(step["id"], cause == 0 ? Json(number) : steps.all().at(cause)["id"]) << step;
    }
}

TEST_F(Trace, Run_IsTheSameWithATrace_AndTheTraceIsRepeated)
{
    for (std::string const seed : {"0", "7"}) {
        std::vector<std::string> const options{"--log-level", "6", "--seed", seed};
        Ended const plain = play(kTracedHold, options);
        std::vector<std::string> traced = options;
        traced.insert(traced.end(), {"--trace", file()});
        Ended const first = play(kTracedHold, traced);
        std::string const trace = contentOf(file());
        Ended const second = play(kTracedHold, traced);

        EXPECT_EQ(plain.output, first.output);
        EXPECT_EQ(trace, contentOf(file()));
    }
}

TEST_F(Trace, Secrets_AreNotInTheTrace)
{
    writeFile(folder_.file("a.toml"), "[media]\nencryption = \"required\"\nkeys-without-tls = true\n"
                                      "[[line]]\nid = \"4711\"\npassword = \"sesame-4711\"\n"
                                      "[[line]]\nid = \"4712\"\npassword = \"sesame-4712\"\n");
    static_cast<void>(trace("OutgoingCallMakeRequest Line=4711 CallID=3 Destination=100\n"
                            "wait CallStateChangeEvent CallState=connected\n"
                            "store set cfb-address 4321\n",
                            {"--config", folder_.file("a.toml")}));

    std::string const trace = contentOf(file());
    EXPECT_EQ(trace.find("sesame"), std::string::npos);
    EXPECT_EQ(trace.find("4321"), std::string::npos);
    EXPECT_NE(trace.find(R"(response=\"***\")"), std::string::npos);
    EXPECT_NE(trace.find("inline:***"), std::string::npos);
}

TEST_F(Trace, Commands_BeginAndEndIt)
{
    Ended const ended = play("trace on " + file() + "\nsay hello\ntrace off\nsay good-bye\n");

    Steps const steps(file());
    EXPECT_EQ(steps.chainTo([](Json const&) { return true; }), Chain{"command trace off"});
    EXPECT_EQ(steps.all().size(), 2U) << ended.output;
}
