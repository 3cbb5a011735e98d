#include "telephone/media/AudioSources.h"

#include <stdexcept>

#include <gtest/gtest.h>

#include "SoundFile.h"
#include "telephone/media/WavWriter.h"

namespace telephone {
namespace {

class AudioSourcesTest : public ::testing::Test
{
protected:
    std::unique_ptr<AudioSources> open(std::string const& source, std::string const& device = {})
    {
        return std::make_unique<AudioSources>(AudioSettings{source, device, device},
                                              [this](std::string const& reason) { reports_ += reason + "\n"; });
    }
    // The second sample of the first frame; -1: silence.
    static int firstOf(AudioSources const& sources)
    {
        auto const source = sources.make();
        sip::AudioFrame frame{};
        return source && source->readFrame(frame) ? frame[1] : -1;
    }

    std::string reports_;
};

TEST_F(AudioSourcesTest, Source_IsAToneSilenceOrAFile)
{
    test::SoundFile const file("source");
    sip::AudioFrame frame{};
    frame.fill(77);
    WavWriter writer(file.path, 1);
    ASSERT_TRUE(writer.write(frame));
    writer.close();

    EXPECT_EQ(firstOf(*open("tone")), 2710) << "the second sample of 440 Hz";
    EXPECT_EQ(firstOf(*open("silence")), -1);
    EXPECT_EQ(firstOf(*open(file.path)), 77);
    for (auto const& source : {std::string("tone"), std::string("silence"), file.path}) {
        EXPECT_EQ(open(source)->loudspeaker(), nullptr) << source;
    }
    EXPECT_THROW(open("/no/such.wav"), std::runtime_error);
}

TEST_F(AudioSourcesTest, Device_IsTheSoundCard)
{
    auto const sources = open("device", "nothing");

    EXPECT_EQ(reports_, "there is no microphone \"nothing\": \"telephone devices\" lists what there is\n"
                        "there is no loudspeaker \"nothing\": \"telephone devices\" lists what there is\n");
    EXPECT_NE(sources->loudspeaker(), nullptr);
    EXPECT_EQ(firstOf(*sources), -1);
    sources->rest();
}

}  // namespace
}  // namespace telephone
