#include "telephone/media/WavWriter.h"

#include <stdexcept>

#include <gtest/gtest.h>

#include "SoundFile.h"
#include "telephone/media/WavSource.h"

namespace telephone {
namespace {

using test::SoundFile;

TEST(WavWriterTest, WrittenFrames_CanBeReadBackAfterClose)
{
    SoundFile const file("written");
    sip::AudioFrame frame{};
    frame.fill(-1234);
    WavWriter writer(file.path, 1);

    ASSERT_TRUE(writer.write(frame));
    ASSERT_TRUE(writer.write(frame));
    writer.close();

    EXPECT_EQ(writer.frames(), 2U);
    EXPECT_EQ(*loadSamples(file.path), Samples(2 * sip::kFrameSamples, -1234));
}

TEST(WavWriterTest, ClosedFile_TakesNoMoreFrames)
{
    SoundFile const file("closed");
    WavWriter writer(file.path, 1);
    writer.close();

    EXPECT_FALSE(writer.write(sip::AudioFrame{}));
    EXPECT_EQ(writer.frames(), 0U);
}

TEST(WavWriterTest, TwoChannels_AreWrittenFrameByFrame)
{
    SoundFile const file("two");
    WavWriter writer(file.path, 2);

    ASSERT_TRUE(writer.write(sip::AudioFrame{}, sip::AudioFrame{}));
    EXPECT_EQ(writer.frames(), 1U);
    writer.close();

    EXPECT_FALSE(writer.write(sip::AudioFrame{}, sip::AudioFrame{}));
    EXPECT_EQ(writer.frames(), 1U);
    EXPECT_EQ(std::filesystem::file_size(file.path), 44U + 2U * 2U * sip::kFrameSamples);
}

TEST(WavWriterTest, MissingFolder_IsRefusedWithThePath)
{
    try {
        WavWriter writer("/nowhere/at-all.wav", 1);
        FAIL() << "the file was created";
    } catch (std::runtime_error const& error) {
        EXPECT_NE(std::string(error.what()).find("/nowhere/at-all.wav"), std::string::npos);
    }
}

}  // namespace
}  // namespace telephone
