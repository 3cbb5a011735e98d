#include "telephone/lines/Lines.h"

#include <stdexcept>

#include <gmock/gmock.h>

#include "LinesFixture.h"
#include "ManualWatch.h"
#include "platform/framework/Executable.h"
#include "platform/framework/SvcRTEContext.h"
#include "telephone/lines/LineObserver.h"

namespace telephone {
namespace {

using testing::ElementsAre;

class LinesTest : public LinesFixture
{};

TEST_F(LinesTest, GetLine_KnowsIdentifiersAddressesAndAppearances)
{
    auto& lines = build();

    EXPECT_EQ(lines.getLine("4712")->getLineID(), 2);
    EXPECT_EQ(lines.getLine("sip:4712@127.0.0.1:5070")->getLineID(), 2);
    EXPECT_EQ(lines.getLine("sip:4712@127.0.0.1")->getLineID(), 2);
    EXPECT_EQ(lines.getLine("4713#2")->getLineID(), 130);
    EXPECT_EQ(lines.getLine("sip:4713@127.0.0.1#2")->getLineID(), 130);
    EXPECT_EQ(lines.getLine("4713#2")->getLineData()->getURI(), "4713#2");
}

TEST_F(LinesTest, GetLine_OfAnUnknownLine_IsNull)
{
    auto& lines = build();

    EXPECT_EQ(lines.getLine(""), nullptr);
    EXPECT_EQ(lines.getLine("4799"), nullptr);
    EXPECT_EQ(lines.getLine("4711#1"), nullptr);
    EXPECT_EQ(lines.getLine("4713#4"), nullptr);
    EXPECT_EQ(lines.getLine("sip:4711@elsewhere.example"), nullptr);
    EXPECT_EQ(lines.getLine("sip:"), nullptr);
}

TEST_F(LinesTest, Instance_IsTheOneLineManager)
{
    auto& lines = build();

    EXPECT_EQ(LineManager::Instance(), &lines);
    EXPECT_THROW(Lines(*table_, configuration_, *settings_, calls_, timers_), std::runtime_error);
    EXPECT_EQ(LineManager::Instance(), &lines);
}

TEST_F(LinesTest, OnlyALineWithSeveralAppearances_IsAMultiCallAppearanceLine)
{
    auto& lines = build();

    EXPECT_TRUE(lines.isMCALine("4713"));
    EXPECT_FALSE(lines.isMCALine("4711"));
    EXPECT_FALSE(lines.isMCALine("4713#1"));
    EXPECT_FALSE(lines.isMCALine("4799"));
}

TEST_F(LinesTest, Keyset_HasAKeysetTypeAndItsDevices)
{
    auto& lines = build();
    std::vector<std::string> devices{"before"};

    lines.getDeviceList(devices);

    EXPECT_EQ(lines.getKeysetType(), "keyset");
    EXPECT_THAT(devices, ElementsAre("before", "<prime:4711>", "<prime:4712>", "<prime:4713>"));
}

TEST_F(LinesTest, SingleLineTelephone_HasNoKeysetType_AndLineZeroIsItsLine)
{
    configuration_.keyset = false;
    configuration_.lines.resize(1);
    auto& lines = build();

    EXPECT_EQ(lines.getKeysetType(), "");
    ASSERT_TRUE(table_->addressOf(0, 0));
    EXPECT_EQ(table_->addressOf(0, 0)->lineURI, "4711");
    EXPECT_EQ(table_->addressOf(0, 0)->lineNumber, 1);
}

TEST_F(LinesTest, Keys_LeadToTheirLines)
{
    configuration_.keys = {{1, "line", "4711", "", false},
                           {2, "line", "4713", "", false},
                           {3, "dss", "102", "", true},
                           {4, "blf", "103", "", false},
                           {5, "dss", "4712", "", false}};
    auto& lines = build();

    EXPECT_EQ(lines.getLineForFPK(2), lines.getLine("4713"));
    EXPECT_EQ(lines.getLineForFPK(3), nullptr);
    EXPECT_EQ(lines.getLineForFPK(99), nullptr);
    EXPECT_EQ(lines.getDSSLineForFPK(1), nullptr);
    EXPECT_EQ(lines.getDSSLineForFPK(5), lines.getLine("4712"));
    EXPECT_EQ(lines.getURIforFPK(1), "4711");
    EXPECT_EQ(lines.getURIforFPK(3), "102");
    EXPECT_EQ(lines.getURIforFPK(4), "");
    EXPECT_EQ(lines.getURIforFPK(99), "");
    EXPECT_EQ(lines.getFPKforUri("4713"), 2);
    EXPECT_EQ(lines.getFPKforUri("4713#3"), 2);
    EXPECT_EQ(lines.getFPKforUri("102"), 3);
    EXPECT_EQ(lines.getFPKforUri("4799"), -1);
}

TEST_F(LinesTest, PartyOfADirectStationKey_IsALineWithoutANumber)
{
    configuration_.keys = {{3, "dss", "102", "Desk", true}};
    auto& lines = build();
    auto* const line = lines.getDSSLineForFPK(3);

    ASSERT_NE(line, nullptr);
    EXPECT_EQ(lines.getLine("102"), line);
    EXPECT_EQ(line->getLineID(), 0);
    EXPECT_EQ(line->getLineState(), eLineStateUnknown);
    EXPECT_TRUE(line->getLineData()->getDSSMonitorOnly());
    EXPECT_EQ(line->getLineData()->getShortDescription(), "Desk");
    EXPECT_EQ(line->getLineData()->getPrimary(), 0);
}

TEST_F(LinesTest, LineData_ComesFromTheConfigurationOfTheLine)
{
    auto& line = configuration_.lines[1];
    line.description = "Lab";
    line.ring = 2;
    line.ringDelay = 7;
    line.visibleOnOverview = false;
    line.audibleAlert = 3;
    line.hotWarmType = LineData::kWarmLine;
    line.hotWarmDigits = "103";
    line.sharedLineType = LineData::kBridgedLine;
    line.isPrivate = true;
    auto& lines = build();
    auto& data = *lines.getLine("4712")->getLineData();

    EXPECT_EQ(data.getURI(), "4712");
    EXPECT_EQ(data.getPrimary(), 0);
    EXPECT_EQ(data.getShortDescription(), "Lab");
    EXPECT_EQ(data.getRing(), 2);
    EXPECT_EQ(data.getRingDelay(), 7);
    EXPECT_EQ(data.getOverviewPosition(), 2);
    EXPECT_FALSE(data.getVisibleOnOverview());
    EXPECT_EQ(data.getLineAudibleAlert(), 3);
    EXPECT_EQ(data.getHotWarmType(), 2);
    EXPECT_EQ(data.getHotWarmDigits(), "103");
    EXPECT_EQ(data.getSharedLineType(), 2);
    EXPECT_TRUE(lines.lineConsideredAsPrivate("4712"));
    EXPECT_FALSE(lines.lineConsideredAsPrivate("4711"));
    EXPECT_FALSE(lines.lineConsideredAsPrivate("4799"));
    EXPECT_EQ(lines.getLine("4711")->getLineData()->getPrimary(), 1);
}

TEST_F(LinesTest, DataOfAStation_ComeFromItsKey_WhichNeverRings)
{
    configuration_.keys = {{4, "dss", "102", "Reception", true}};
    auto& data = *build().getDSSLineForFPK(4)->getLineData();

    EXPECT_EQ(data.getURI(), "102");
    EXPECT_EQ(data.getShortDescription(), "Reception");
    EXPECT_EQ(data.getRing(), 0);
    EXPECT_EQ(data.getOverviewPosition(), 4);
    EXPECT_FALSE(data.getVisibleOnOverview());
    EXPECT_TRUE(data.getDSSMonitorOnly());
}

TEST_F(LinesTest, FeaturesOfALine_AreKeptInTheStore)
{
    auto& line = *build().getLine("4712");
    line.setDNDConfiguration(true);
    line.setForwardingConfiguration(sfiForwardNoReply, true, "sip:103@127.0.0.1;x=1", 4);
    line.setForwardingConfiguration(sfiForwardBusy, false, "", 0);
    line.setForwardingConfiguration(static_cast<sfiForwardingType>(10), true, "100", 0);

    Line::serverFeaturesSettings read;
    line.getServerFeaturesSettings(read);

    EXPECT_TRUE(read.dnd);
    ASSERT_EQ(read.forwarding.size(), 2U);
    EXPECT_TRUE(read.forwarding.at(sfiForwardNoReply).status);
    EXPECT_EQ(read.forwarding.at(sfiForwardNoReply).destination, "sip:103@127.0.0.1;x=1");
    EXPECT_EQ(read.forwarding.at(sfiForwardNoReply).ringCount, 4);
    EXPECT_FALSE(read.forwarding.at(sfiForwardBusy).status);
    EXPECT_EQ(settings_->text("line/4712/forwarding-6"), "on;4;sip:103@127.0.0.1;x=1");
    EXPECT_EQ(settings_->text("line/4712/do-not-disturb"), "true");
}

TEST_F(LinesTest, ForwardingOfALine_HasTheTypes0To9)
{
    auto& line = *build().getLine("4712");
    for (int const type : {-1, 0, 9, 10}) {
        line.setForwardingConfiguration(static_cast<sfiForwardingType>(type), true, "103", 0);
    }

    Line::serverFeaturesSettings read;
    line.getServerFeaturesSettings(read);

    ASSERT_EQ(read.forwarding.size(), 2U);
    EXPECT_EQ(read.forwarding.at(static_cast<sfiForwardingType>(0)).ringCount, 0);
    EXPECT_EQ(read.forwarding.at(static_cast<sfiForwardingType>(9)).destination, "103");
    EXPECT_EQ(settings_->text("line/4712/forwarding-0"), "on;0;103");
    EXPECT_EQ(settings_->text("line/4712/forwarding-10"), "");
    EXPECT_FALSE(read.dnd);
}

TEST_F(LinesTest, LineInAState_IsTheLineOrItsFirstAppearanceInThatState)
{
    build();
    change(130, 5, sfiCallStateConnected);
    change(131, 6, sfiCallStateHeld);

    EXPECT_EQ(lines_->getLineInState(eLineStateIdle, "4711"), lines_->getLine("4711"));
    EXPECT_EQ(lines_->getLineInState(eLineStateActive, "4711"), nullptr);
    EXPECT_EQ(lines_->getLineInState(eLineStateIdle, "4713"), lines_->getLine("4713#1"));
    EXPECT_EQ(lines_->getLineInState(eLineStateActive, "4713"), lines_->getLine("4713#2"));
    EXPECT_EQ(lines_->getLineInState(eLineStateHold, "4713"), lines_->getLine("4713#3"));
    EXPECT_EQ(lines_->getLineInState(eLineStateRinging, "4713"), nullptr);
    EXPECT_EQ(lines_->getLineInState(eLineStateIdle, "4799"), nullptr);
}

TEST_F(LinesTest, Call_TakesItsAppearanceFromItsBeginningToItsEnd)
{
    build();
    change(129, 5, sfiCallStateDialling);
    EXPECT_EQ(table_->appearances().findFirstFreeVirtualLine(3), 130);
    change(129, 5, sfiCallStateConnected);
    EXPECT_EQ(table_->appearances().findFirstFreeVirtualLine(3), 130);

    change(129, 5, sfiCallStateIdle);

    EXPECT_EQ(table_->appearances().findFirstFreeVirtualLine(3), 129);
}

TEST_F(LinesTest, SelectedLine_ThatIsReleased_IsOpenToIncomingCallsAgain)
{
    build();
    lines_->getLine("4713")->keyPressed();
    ASSERT_EQ(stateOf("4713#1"), eLineStateSelected);
    EXPECT_EQ(table_->appearances().seizeForIncoming(3, 1001), 130);

    lines_->getLine("4713")->keyPressed();

    EXPECT_EQ(stateOf("4713#1"), eLineStateIdle);
    EXPECT_EQ(table_->appearances().seizeForIncoming(3, 1002), 129);
}

TEST_F(LinesTest, NewCall_GoesToThePrimaryLineIfItIsFree)
{
    configuration_.lines[0].primary = false;
    configuration_.lines[1].primary = true;
    build();
    std::lock_guard const lock(calls_);

    EXPECT_EQ(lines_->lineForNewCall().value()->id(), "4712");
    change(2, 5, sfiCallStateConnected);
    EXPECT_EQ(lines_->lineForNewCall().value()->id(), "4711");
    change(1, 6, sfiCallStateConnected);
    EXPECT_EQ(lines_->lineForNewCall().value()->id(), "4713#1");
    for (int const appearance : {129, 130, 131}) {
        change(appearance, appearance, sfiCallStateConnected);
    }
    EXPECT_EQ(lines_->lineForNewCall().error().reason, "no line is free");
}

TEST_F(LinesTest, RingCountOutOfRange_LeavesTheRulesOwn)
{
    auto& line = *build().getLine("4712");
    line.setForwardingConfiguration(sfiForwardNoReply, true, "103", -1);
    EXPECT_EQ(settings_->text("line/4712/forwarding-6"), "on;-1;103");

    line.setForwardingConfiguration(sfiForwardNoReply, true, "103", 99);
    line.setForwardingConfiguration(sfiForwardNoReply, false, "103", -1);
    EXPECT_EQ(settings_->text("line/4712/forwarding-6"), "off;99;103");

    line.setForwardingConfiguration(sfiForwardNoReply, true, "103", 100);
    EXPECT_EQ(settings_->text("line/4712/forwarding-6"), "on;99;103");
}

TEST_F(LinesTest, LocalHeldLine_IsTheFirstLineWithACallOnHold)
{
    build();
    EXPECT_EQ(lines_->getLocalHeldLine(), "");
    change(1, 1, sfiCallStateConnected);
    change(130, 2, sfiCallStateHeld);

    EXPECT_EQ(lines_->getLocalHeldLine(), "4713#2");
    EXPECT_EQ(lines_->getLine(lines_->getLocalHeldLine())->getLineID(), 130);
}

TEST_F(LinesTest, LocallyIdleLine_ExistsWhileAnAppearanceHasNoCall)
{
    build();
    change(1, 1, sfiCallStateConnected);
    change(2, 2, sfiCallStateHeld);
    change(129, 3, sfiCallStateHeld);
    change(130, 4, sfiCallStateHeld);
    EXPECT_TRUE(lines_->isLocallyIdleLine());

    change(131, 5, sfiCallStateHeld);
    EXPECT_FALSE(lines_->isLocallyIdleLine());
}

class Observer final : public Executable, public LineObserver
{
public:
    void init(Context&) override {}
    void shutdown() override {}
    void lineStateChanged(std::string const& lineURI, ELineState state, std::string const&) override
    {
        std::lock_guard const lock(mutex);
        seen.push_back(lineURI + " " + std::to_string(state));
        lockHeld = lockHeld || calls->isLockedByCaller();
        changed.notify_all();
    }
    bool waitFor(std::size_t count)
    {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, std::chrono::seconds(10), [this, count] { return seen.size() >= count; });
    }

    FakeCalls* calls = nullptr;
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<std::string> seen;
    bool lockHeld = false;
};

class NoObserver final : public Executable
{
public:
    void init(Context&) override {}
    void shutdown() override {}
};

TEST_F(LinesTest, Observer_ReceivesEachChangeInOrder_AndTheOverviewOnRequest)
{
    build();
    Observer observer;
    observer.calls = &calls_;
    NoObserver other;
    ASSERT_TRUE(lines_->observe(&observer));
    ASSERT_TRUE(lines_->observe(&observer));
    EXPECT_FALSE(lines_->observe(&other));
    EXPECT_FALSE(lines_->observe(nullptr));

    change(1, 5, sfiCallStateDialling);
    change(1, 5, sfiCallStateConnected);
    change(1, 5, sfiCallStateIdle);
    lines_->requestOverviewData("4713");
    lines_->requestOverviewData("4799");

    ASSERT_TRUE(observer.waitFor(7));
    lines_->stop();
    EXPECT_THAT(observer.seen, ElementsAre("4711 2", "4711 5", "4711 1", "4713 1", "4713#1 1", "4713#2 1", "4713#3 1"));
    EXPECT_FALSE(observer.lockHeld);
}

TEST_F(LinesTest, Observer_IsToldOfDirectStations)
{
    configuration_.keys = {{3, "dss", "102", "", false}};
    build();
    Observer observer;
    observer.calls = &calls_;
    ASSERT_TRUE(lines_->observe(&observer));
    ManualWatch watch;
    lines_->watchParties(watch);

    watch.tell("102", PartyStatus::kBusy);

    ASSERT_TRUE(observer.waitFor(1));
    lines_->stop();
    EXPECT_THAT(observer.seen, ElementsAre("102 6"));
}

}  // namespace
}  // namespace telephone
