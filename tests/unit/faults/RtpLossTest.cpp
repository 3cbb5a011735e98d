// How much of the audio the loss of RTP takes: counted at the receiver, from the seed.
#include <memory>
#include <mutex>
#include <string>

#include <gtest/gtest.h>

#include "FaultSurroundings.h"
#include "telephone/faults/FaultOrder.h"
#include "telephone/sip/MediaClock.h"
#include "telephone/sip/RtpStream.h"
#include "telephone/time/VirtualTime.h"
#include "telephone/time/Waiting.h"

namespace telephone {
namespace {

using namespace std::chrono_literals;

// The thousandth packet leaves after 20 s, and the next one 20 ms later.
constexpr auto kThousandPackets = 20010ms;
constexpr auto kLongestWay = 100ms;

class Listener final : public sip::AudioSink
{
public:
    void writeFrame(sip::AudioFrame const&) override {}
};

class RtpLossTest : public testing::Test
{
protected:
    RtpLossTest()
    {
        surroundings_.loop.start();
        setSink(&listener_);
    }
    ~RtpLossTest() override
    {
        {
            std::lock_guard const lock(surroundings_.loop);
            near_.reset();
            far_.reset();
        }
        surroundings_.loop.stop();
    }

    void setSink(sip::AudioSink* sink)
    {
        std::lock_guard const lock(surroundings_.loop);
        far_->setSink(sink);
    }
    std::uint64_t lost()
    {
        std::lock_guard const lock(surroundings_.loop);
        return far_->statistics().lost;
    }
    std::uint64_t lastHeard()
    {
        std::lock_guard const lock(surroundings_.loop);
        return far_->lastHeard();
    }

    static sa loopback(std::uint16_t port)
    {
        sa address{};
        sa_set_str(&address, "127.0.0.1", port);
        return address;
    }

    // How many of a thousand packets arrive.
    std::uint64_t arrivals()
    {
        std::uint64_t before = 0;
        {
            std::lock_guard const lock(surroundings_.loop);
            before = far_->statistics().received;
            connect(*near_, *far_, sip::Direction::kSendOnly);
            connect(*far_, *near_, sip::Direction::kReceiveOnly);
        }
        sleepFor(kThousandPackets);
        {
            std::lock_guard const lock(surroundings_.loop);
            near_->stop();
        }
        sleepFor(kLongestWay);
        std::lock_guard const lock(surroundings_.loop);
        return far_->statistics().received - before;
    }
    std::uint64_t arrivalsDuring(std::string const& fault)
    {
        auto const order = FaultOrder::read(fault, surroundings_.targets).value();
        order.effect.begin({[](std::string const&) {}, [] {}});
        std::uint64_t const count = arrivals();
        did_ = order.effect.end();
        return count;
    }

    static void connect(sip::RtpStream& stream, sip::RtpStream const& far, sip::Direction direction)
    {
        sip::SdpNegotiation::Agreement agreement;
        agreement.remote = loopback(far.localPort());
        agreement.direction = direction;
        agreement.codec = "PCMU";
        agreement.payloadType = 0;
        agreement.received[0] = sip::Payload::kULaw;
        stream.apply(agreement);
    }

    VirtualTime const time_{{.seed = 7}};
    FaultSurroundings surroundings_;
    sip::MediaClock clock_{surroundings_.loop};
    std::unique_ptr<sip::RtpStream> near_ = std::make_unique<sip::RtpStream>(clock_, loopback(0));
    std::unique_ptr<sip::RtpStream> far_ = std::make_unique<sip::RtpStream>(clock_, loopback(0));
    Listener listener_;
    std::string did_;
};

TEST_F(RtpLossTest, WithoutTheFault_EveryPacketArrives)
{
    EXPECT_EQ(arrivals(), 1000U);
}

TEST_F(RtpLossTest, HalfOfThePackets_AreLostAsTheSeedDraws)
{
    EXPECT_EQ(arrivalsDuring("rtp loss 50"), 479U);
    EXPECT_EQ(did_, "it befell 521 datagrams");
    EXPECT_EQ(arrivals(), 1000U);
}

TEST_F(RtpLossTest, AThirdOfThePackets_AreLostAsTheSeedDraws)
{
    EXPECT_EQ(arrivalsDuring("rtp loss 33"), 673U);
}

TEST_F(RtpLossTest, TotalLoss_LetsNoPacketArrive)
{
    EXPECT_EQ(arrivalsDuring("rtp loss 100"), 0U);
    EXPECT_EQ(did_, "it befell 1000 datagrams");
}

TEST_F(RtpLossTest, AudioThatNobodyHears_IsLostAsWell)
{
    setSink(nullptr);

    std::uint64_t const arrived = arrivalsDuring("rtp loss 50");

    EXPECT_GT(arrived, 400U);
    EXPECT_LT(arrived, 600U);
    // But for those before the first and behind the last that arrived.
    EXPECT_NEAR(static_cast<double>(lost()), static_cast<double>(1000 - arrived), 10.0);
}

TEST_F(RtpLossTest, TotalLossOfAudioThatNobodyHears_IsSilence)
{
    setSink(nullptr);
    EXPECT_EQ(arrivals(), 0U) << "packets that nobody hears are not sent";
    std::uint64_t const before = lastHeard();
    EXPECT_GT(before, 0U) << "but count for the limit on silence";

    EXPECT_EQ(arrivalsDuring("rtp loss 100"), 0U);

    EXPECT_EQ(did_, "it befell 1000 datagrams");
    EXPECT_EQ(lastHeard(), before);
}

// Audio is lost, and nothing else is.
TEST_F(RtpLossTest, LossOfSip_TakesNoAudio)
{
    EXPECT_EQ(arrivalsDuring("datagrams lost 1000"), 1000U);
}

}  // namespace
}  // namespace telephone
