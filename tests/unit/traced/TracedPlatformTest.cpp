// What the trace says of the calls that the library makes.
#include "telephone/traced/TracedPlatform.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "telephone/trace/Trace.h"
#include "tests/doubles/MockCSfi.h"
#include "tests/doubles/MockLineManager.h"
#include "tests/unit/trace/TracedLines.h"

namespace telephone::test {
namespace {

using testing::_;
using testing::DoAll;
using testing::NiceMock;
using testing::Return;
using testing::SetArgReferee;

class TracedPlatform : public testing::Test
{
protected:
    TracedPlatform() { EXPECT_TRUE(startTrace(folder_.file("a.trace"), {}, nullptr)); }
    ~TracedPlatform() override { static_cast<void>(stopTrace()); }

    nlohmann::json step() const { return tracedLines(folder_.file("a.trace")).at(1); }

    TemporaryFolder const folder_;
    NiceMock<MockCSfi> sfi_;
    NiceMock<MockLineManager> lines_;
};

TEST_F(TracedPlatform, Call_IsPassedOnWithItsArgumentsAndItsResult)
{
    sfiCallInfo call{1, 1, 3, 2};
    EXPECT_CALL(sfi_, CallFeature(&call, sfiFeatureHold, testing::StrEq("100"), 1)).WillOnce(Return(sfiSuccess));

    EXPECT_EQ(traced<CSfi>(&sfi_)->CallFeature(&call, sfiFeatureHold, "100", 1), sfiSuccess);

    EXPECT_EQ(step()["step"], "platform");
    EXPECT_EQ(step()["name"], "CSfi::CallFeature");
    EXPECT_EQ(step()["arguments"],
              nlohmann::json::parse(R"({"call":{"line":1,"appearance":2,"call":3},)"
                                    R"("feature":"sfiFeatureHold","destination":"100","mode":1})"));
    EXPECT_EQ(step()["result"], "sfiSuccess");
    EXPECT_TRUE(step()["microseconds"].is_number_unsigned());
}

TEST_F(TracedPlatform, ArgumentsThatThePlatformWrites_AreTracedAsItLeavesThem)
{
    EXPECT_CALL(sfi_, GetDoNotDisturb(1, _)).WillOnce(DoAll(SetArgReferee<1>(true), Return(sfiSuccess)));
    bool on = false;

    traced<CSfi>(&sfi_)->GetDoNotDisturb(1, on);

    EXPECT_TRUE(on);
    EXPECT_EQ(step()["arguments"], nlohmann::json::parse(R"({"lineID":1,"on":true})"));
}

TEST_F(TracedPlatform, UnknownValueAndMissingObject_AreTracedAsTheyAre)
{
    traced<CSfi>(&sfi_)->CallFeature(nullptr, static_cast<sfiFeature>(-1), nullptr, 0);

    EXPECT_EQ(step()["arguments"], nlohmann::json::parse(R"({"call":null,"feature":-1,"destination":null,"mode":0})"));
}

TEST_F(TracedPlatform, ListAndCallWithoutResult_AreTraced)
{
    EXPECT_CALL(lines_, getDeviceList(_)).WillOnce(SetArgReferee<0>(std::vector<std::string>{"<prime:4711>", "b"}));
    std::vector<std::string> devices;

    traced<LineManager>(&lines_)->getDeviceList(devices);

    EXPECT_EQ(step()["arguments"], nlohmann::json::parse(R"({"devices":["<prime:4711>","b"]})"));
    EXPECT_FALSE(step().contains("result"));
}

TEST_F(TracedPlatform, WhatTheCallDoes_IsCausedByIt)
{
    EXPECT_CALL(sfi_, Activate()).WillOnce([] {
        traceStep("sip", [](TraceStep&) {});
        return sfiSuccess;
    });

    traced<CSfi>(&sfi_)->Activate();

    auto const lines = tracedLines(folder_.file("a.trace"));
    EXPECT_EQ(lines[1]["step"], "sip");
    EXPECT_EQ(lines[2]["name"], "CSfi::Activate");
    EXPECT_EQ(lines[1]["because"], lines[2]["seq"]);
    EXPECT_LT(lines[2]["seq"], lines[1]["seq"]);
}

TEST_F(TracedPlatform, WithoutATrace_CallsArePassedOn)
{
    ASSERT_TRUE(stopTrace());
    EXPECT_CALL(sfi_, IsPhoneLocked()).WillOnce(Return(true));

    EXPECT_TRUE(traced<CSfi>(&sfi_)->IsPhoneLocked());

    EXPECT_EQ(tracedLines(folder_.file("a.trace")).size(), 1U);
}

TEST_F(TracedPlatform, MissingObject_StaysMissing)
{
    EXPECT_EQ(traced<CSfi>(nullptr), nullptr);
}

}  // namespace
}  // namespace telephone::test
