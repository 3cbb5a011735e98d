// Devices that ALSA plays with files: a microphone that hears one, and a loudspeaker that writes one.
#include "telephone/media/SoundCard.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <thread>

#include <gtest/gtest.h>

namespace telephone {
namespace {

using namespace std::chrono_literals;

class SoundCardTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        // Sample n is n, for ten seconds.
        std::ofstream input(folder() + "mouth.raw", std::ios::binary);
        for (std::size_t i = 0; i < 10U * sip::kSampleRate; ++i) {
            auto const sample = static_cast<std::int16_t>(i % 32000);
            input.write(reinterpret_cast<char const*>(&sample), sizeof sample);
        }
        std::string const file = "{ type file slave.pcm \"null\" format raw file ";
        std::ofstream(folder() + "asound.conf")
            << "pcm.ear " << file << "\"" << folder() << "ear.raw\" }\n"
            << "pcm.mouth " << file << "/dev/null infile \"" << folder() << "mouth.raw\" }\n"
            << "pcm.gone { type hw card 31 }\npcm.null { type null }\npcm.!default { type null }\n";
        setenv("ALSA_CONFIG_PATH", (folder() + "asound.conf").c_str(), 1);
    }
    void SetUp() override
    {
        if (soundDevices().empty()) {
            GTEST_SKIP() << "PortAudio has no ALSA here";
        }
    }

    static std::string folder() { return ::testing::TempDir() + "sound-card-"; }
    std::unique_ptr<SoundCard> open(std::string const& microphone, std::string const& loudspeaker)
    {
        return std::make_unique<SoundCard>(microphone, loudspeaker,
                                           [this](std::string const& reason) { reports_ += reason + "\n"; });
    }
    // The first sample of the next frame; -1: there is none.
    static int next(sip::AudioSource& source)
    {
        sip::AudioFrame frame{};
        bool const isThere = source.readFrame(frame);
        EXPECT_TRUE(!isThere || frame[159] == frame[0] + 159);
        return isThere ? frame[0] : -1;
    }
    static void write(SoundCard& card, std::int16_t sample)
    {
        sip::AudioFrame frame;
        frame.fill(sample);
        card.writeFrame(frame);
        std::this_thread::sleep_for(20ms);  // as the clock of a call does
    }
    static std::vector<std::int16_t> written()
    {
        std::ifstream file(folder() + "ear.raw", std::ios::binary);
        std::string const bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
        std::vector<std::int16_t> samples(bytes.size() / 2);
        std::copy(bytes.begin(), bytes.end(), reinterpret_cast<char*>(samples.data()));
        return samples;
    }

    std::string reports_;
};

TEST_F(SoundCardTest, Devices_AreListedWithWhatTheyCanDo)
{
    std::string list;
    for (auto const& device : soundDevices()) {
        list += device.name + (device.hasMicrophone ? " microphone" : "") +
                (device.hasLoudspeaker ? " loudspeaker" : "") + (device.isDefaultMicrophone ? " default" : "") +
                (device.isDefaultLoudspeaker ? " default\n" : "\n");
    }

    EXPECT_EQ(
        "ear microphone loudspeaker\nmouth microphone loudspeaker\ndefault microphone loudspeaker default default\n",
        list);
}

TEST_F(SoundCardTest, Microphone_GivesItsFramesInOrder)
{
    auto const card = open("mouth", "");
    auto const call = card->makeMicrophone();

    EXPECT_EQ(0, next(*call));
    EXPECT_EQ(160, next(*call));
    EXPECT_EQ(320, next(*call));
    EXPECT_EQ("", reports_);
}

TEST_F(SoundCardTest, CallsThatShareTheMicrophone_AllGetEachFrame)
{
    auto const card = open("mouth", "");
    auto const first = card->makeMicrophone();
    auto const second = card->makeMicrophone();

    EXPECT_EQ(0, next(*first));
    EXPECT_EQ(0, next(*second));
    EXPECT_EQ(160, next(*second));
    EXPECT_EQ(160, next(*first));
    EXPECT_EQ(320, next(*first));
    EXPECT_EQ(480, next(*first));
    EXPECT_EQ(480, next(*second)) << "what it has missed is gone";
    auto const third = card->makeMicrophone();
    EXPECT_EQ(640, next(*third)) << "it hears nothing from before it began";
}

TEST_F(SoundCardTest, Loudspeaker_PlaysWhatIsWritten)
{
    {
        auto const card = open("", "ear");
        write(*card, 1000);
        write(*card, -2000);
    }

    auto const samples = written();
    ASSERT_EQ(samples.size(), 320U);
    EXPECT_EQ(std::vector<std::int16_t>(samples.begin(), samples.begin() + 160), std::vector<std::int16_t>(160, 1000));
    EXPECT_EQ(std::vector<std::int16_t>(samples.begin() + 160, samples.end()), std::vector<std::int16_t>(160, -2000));
}

TEST_F(SoundCardTest, CardThatRests_GoesOnWithTheNextFrame)
{
    auto const card = open("mouth", "ear");
    auto const call = card->makeMicrophone();
    EXPECT_NE(-1, next(*call));
    write(*card, 1000);

    card->rest();
    card->rest();

    EXPECT_NE(-1, next(*call));
    write(*card, 1000);
    EXPECT_EQ("", reports_);
}

TEST_F(SoundCardTest, UnknownDevices_AreReportedAndSilent)
{
    auto const card = open("nose", "Ear");
    auto const call = card->makeMicrophone();

    EXPECT_EQ("there is no microphone \"nose\": \"telephone devices\" lists what there is\n"
              "there is no loudspeaker \"Ear\": \"telephone devices\" lists what there is\n",
              reports_);
    EXPECT_EQ(-1, next(*call));
    write(*card, 1000);
    card->rest();
}

TEST_F(SoundCardTest, DefaultDevices_AreUsedWithoutNames)
{
    auto const card = open("", "");
    sip::AudioFrame frame;
    frame.fill(1);

    EXPECT_TRUE(card->makeMicrophone()->readFrame(frame));
    EXPECT_EQ("", reports_);
}

TEST_F(SoundCardTest, SoundSystemThatMissesACard_WritesNothingToStandardError)
{
    ::testing::internal::CaptureStderr();

    open("nose", "");
    std::fputs("still there", stderr);

    EXPECT_EQ("still there", ::testing::internal::GetCapturedStderr());
}

}  // namespace
}  // namespace telephone
