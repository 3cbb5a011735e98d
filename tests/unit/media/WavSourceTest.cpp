#include "telephone/media/WavSource.h"

#include <fstream>
#include <stdexcept>

#include <gtest/gtest.h>

#include "SoundFile.h"
#include "telephone/media/WavWriter.h"

namespace telephone {
namespace {

using test::SoundFile;

std::string refusalOf(std::string const& path)
{
    try {
        loadSamples(path);
    } catch (std::runtime_error const& error) {
        return error.what();
    }
    return "loaded";
}

TEST(WavSourceTest, EndOfTheSamples_IsFollowedByTheirBeginning)
{
    auto samples = std::make_shared<Samples>(sip::kFrameSamples + 2);
    samples->front() = 10;
    samples->back() = 20;
    WavSource source(samples);
    sip::AudioFrame frame{};

    ASSERT_TRUE(source.readFrame(frame));
    EXPECT_EQ(frame[0], 10);
    ASSERT_TRUE(source.readFrame(frame));

    EXPECT_EQ(frame[1], 20);
    EXPECT_EQ(frame[2], 10);
}

TEST(WavSourceTest, TwoSources_PlayIndependently)
{
    auto const samples = std::make_shared<Samples const>(Samples{1, 2, 3});
    WavSource first(samples);
    WavSource second(samples);
    sip::AudioFrame frame{};

    first.readFrame(frame);
    second.readFrame(frame);

    EXPECT_EQ(frame[0], 1);
}

TEST(WavSourceTest, TwoChannels_AreAveraged)
{
    SoundFile const file("two-channels");
    sip::AudioFrame left{};
    sip::AudioFrame right{};
    left.fill(100);
    right.fill(300);
    WavWriter writer(file.path, 2);
    ASSERT_TRUE(writer.write(left, right));
    writer.close();

    auto const samples = loadSamples(file.path);

    EXPECT_EQ(*samples, Samples(sip::kFrameSamples, 200));
}

TEST(WavSourceTest, MissingFile_IsRefusedWithItsName)
{
    EXPECT_NE(refusalOf("/nowhere/at-all.wav").find("/nowhere/at-all.wav"), std::string::npos);
}

TEST(WavSourceTest, FileWithoutSound_IsRefused)
{
    SoundFile const empty("empty");
    WavWriter(empty.path, 1).close();
    SoundFile const garbage("garbage");
    std::ofstream(garbage.path) << "not a sound file";

    EXPECT_NE(refusalOf(empty.path).find(empty.path), std::string::npos);
    EXPECT_NE(refusalOf(garbage.path).find(garbage.path), std::string::npos);
}

}  // namespace
}  // namespace telephone
