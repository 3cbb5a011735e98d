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
    void writeFrame(sip::AudioFrame const&) override { ++frames; }

    int frames = 0;
};

class RtpLossTest : public testing::Test
{
protected:
    RtpLossTest()
    {
        surroundings_.loop.start();
        std::lock_guard const lock(surroundings_.loop);
        far_->setSink(&listener_);
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

    static sa loopback(std::uint16_t port)
    {
        sa address{};
        sa_set_str(&address, "127.0.0.1", port);
        return address;
    }

    // How many of a thousand packets arrive.
    int arrivals()
    {
        int const before = listener_.frames;
        {
            std::lock_guard const lock(surroundings_.loop);
            connect(*near_, *far_);
            connect(*far_, *near_);
        }
        sleepFor(kThousandPackets);
        {
            std::lock_guard const lock(surroundings_.loop);
            near_->stop();
        }
        sleepFor(kLongestWay);
        return listener_.frames - before;
    }
    int arrivalsDuring(std::string const& fault)
    {
        auto const order = FaultOrder::read(fault, surroundings_.targets).value();
        order.effect.begin({[](std::string const&) {}, [] {}});
        int const count = arrivals();
        did_ = order.effect.end();
        return count;
    }

    static void connect(sip::RtpStream& stream, sip::RtpStream const& far)
    {
        sip::SdpNegotiation::Agreement agreement;
        agreement.remote = loopback(far.localPort());
        agreement.direction = sip::Direction::kSendReceive;
        agreement.codec = "PCMU";
        agreement.payloadType = 0;
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
    EXPECT_EQ(arrivals(), 1000);
}

TEST_F(RtpLossTest, HalfOfThePackets_AreLostAsTheSeedDraws)
{
    EXPECT_EQ(arrivalsDuring("rtp loss 50"), 481);
    EXPECT_EQ(did_, "it befell 519 datagrams");
    EXPECT_EQ(arrivals(), 1000);
}

TEST_F(RtpLossTest, AThirdOfThePackets_AreLostAsTheSeedDraws)
{
    EXPECT_EQ(arrivalsDuring("rtp loss 33"), 675);
}

TEST_F(RtpLossTest, TotalLoss_LetsNoPacketArrive)
{
    EXPECT_EQ(arrivalsDuring("rtp loss 100"), 0);
    EXPECT_EQ(did_, "it befell 1000 datagrams");
}

// Audio is lost, and nothing else is.
TEST_F(RtpLossTest, LossOfSip_TakesNoAudio)
{
    EXPECT_EQ(arrivalsDuring("datagrams lost 1000"), 1000);
}

}  // namespace
}  // namespace telephone
