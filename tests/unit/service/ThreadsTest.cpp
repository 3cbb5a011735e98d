// Several threads in the service at once. The platform here is written by hand: it keeps state only where the test
// needs it, so that every race is in the service.
#include <atomic>
#include <latch>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "src/CommunicationsService.h"
#include "tests/doubles/Doubles.h"

namespace {

using testing::_;
using testing::NiceMock;
using testing::Return;

constexpr int kRounds = 500;

// A store that tells the agent of each write before it returns, on the writing thread, as the real one may.
class Store : public Executable, public LocalMgmtIfc
{
public:
    void init(Context& /*context*/) override {}
    void shutdown() override {}
    void registerForTag(MgmtAgentIfc* /*agent*/, char const* /*tag*/) override {}

    int setManageableData(ManageableData& data) override
    {
        // Unprotected on purpose: only the service's lock keeps the writers apart.
        ++writes_;
        ++writersInside_;
        EXPECT_EQ(writersInside_, 1);
        EXPECT_EQ(agent_->setData(data), 1) << "the service's own publications pass its filter";
        --writersInside_;
        return 1;
    }

    void setAgent(MgmtAgentIfc* agent) { agent_ = agent; }
    int writes() const { return writes_; }

private:
    MgmtAgentIfc* agent_ = nullptr;
    int writes_ = 0;
    int writersInside_ = 0;
};

class ThreadsTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ON_CALL(context_, findExecutable("LocalMgmtIfc")).WillByDefault(Return(&store_));
        ON_CALL(sfi_, StartTimer(_)).WillByDefault(Return(77));
        ON_CALL(sfi_, ApplyManageableData(_, false)).WillByDefault(Return(1));
        ON_CALL(configuration_, serverBasedFeaturesEnabled()).WillByDefault(Return(true));
        ON_CALL(recording_, init(_, _, _, _)).WillByDefault([this](auto&, auto*, auto*, auto* configuration) {
            recordingConfiguration_.reset(configuration);
        });
        service_ = std::make_unique<CommunicationsService>();
        store_.setAgent(service_.get());
        service_->init(context_);
    }

    // Runs the bodies at the same time, each kRounds times.
    template <class... Bodies>
    static void atOnce(Bodies... bodies)
    {
        std::latch start(sizeof...(bodies));
        std::vector<std::jthread> threads;
        (threads.emplace_back([&start, bodies] {
            start.arrive_and_wait();
            for (int round = 0; round < kRounds; ++round) {
                bodies(round);
            }
        }),
         ...);
    }

    NiceMock<MockCSfi> sfi_;
    NiceMock<MockLineManager> lines_;
    NiceMock<MockTeamServiceKeyset> keyset_;
    NiceMock<MockTeamServiceFeatures> features_;
    NiceMock<MockDirectedPickupHandler> pickup_;
    NiceMock<MockFeatureToggle> toggle_;
    NiceMock<MockMediaRecordingService> recording_;
    NiceMock<MockSfiConfiguration> configuration_;
    NiceMock<MockSvcRTEContext> context_;
    Store store_;

    CurrentDouble<CSfi> currentSfi_{sfi_};
    CurrentDouble<LineManager> currentLines_{lines_};
    CurrentDouble<TeamServiceKeyset> currentKeyset_{keyset_};
    CurrentDouble<TeamServiceFeatures> currentFeatures_{features_};
    CurrentDouble<DirectedPickupHandler> currentPickup_{pickup_};
    CurrentDouble<FeatureToggle> currentToggle_{toggle_};
    CurrentDouble<MediaRecordingService> currentRecording_{recording_};
    CurrentDouble<MockSfiConfiguration> currentConfiguration_{configuration_};

    std::unique_ptr<RecordingConfigManager> recordingConfiguration_;
    std::unique_ptr<CommunicationsService> service_;
};

TEST_F(ThreadsTest, TwoThreadsPublishWhileAThirdDeliversManagementData)
{
    std::atomic<int> delivered = 0;
    atOnce(
        [this](int round) {
            service_->publishForwardingConfigurationViaQORA(sfiForwardNoReply, round % 2 == 0, "4712", round, true);
        },
        [this](int round) {
            EXPECT_EQ(service_->setDoNotDisturb("4711", round % 2 == 0), sfiSuccess);
            EXPECT_EQ(service_->setAgentState("4711", "ready"), sfiSuccess);
        },
        [this, &delivered](int /*round*/) {
            ManageableData data;
            data.setRootId("cfu-address", nullptr);
            data.setRootId("volume", nullptr);
            delivered += service_->setData(data);
        });

    EXPECT_EQ(store_.writes(), kRounds * 5);
    EXPECT_EQ(delivered, kRounds);
    ManageableData refused;
    refused.setRootId("cfu-address", nullptr);
    EXPECT_EQ(service_->setData(refused), 0) << "no publication is left behind";
}

TEST_F(ThreadsTest, LineKeysOfTwoThreadsAreHandledOneAfterTheOther)
{
    int inside = 0;
    int pressed = 0;
    NiceMock<MockLine> line;
    ON_CALL(lines_, getLineForFPK(_)).WillByDefault(Return(&line));
    ON_CALL(lines_, getLine(_)).WillByDefault(Return(&line));
    ON_CALL(line, keyPressed()).WillByDefault([&] {
        ++inside;
        EXPECT_EQ(inside, 1);
        ++pressed;
        --inside;
    });

    atOnce([this](int /*round*/) { service_->lineKeyPressedFPK(4); },
           [this](int /*round*/) { service_->lineKeyPressed("4711"); });

    EXPECT_EQ(pressed, kRounds * 2);
}

TEST_F(ThreadsTest, TimersOfSeveralThreadsRunTheSubscriptionWorkOnce)
{
    service_->timerEvent(77);
    std::atomic<int> offered = 0;
    ON_CALL(sfi_, TimerExpired(_)).WillByDefault([&offered] { ++offered; });
    EXPECT_CALL(features_, Activate()).Times(0);

    atOnce([this](int /*round*/) { service_->timerEvent(77); },
           [this](int round) { service_->timerEvent(1000 + round); });

    EXPECT_EQ(offered, kRounds * 2);
}

}  // namespace
