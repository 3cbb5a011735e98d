#include "telephone/media/WavSource.h"

#include <filesystem>
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

std::string bytesOf(std::uint32_t number, int count)
{
    std::string bytes;
    for (; count > 0; --count, number >>= 8) {
        bytes += static_cast<char>(number & 0xffU);
    }
    return bytes;
}

// A file with one channel of 16-bit samples at any rate.
void writeFile(std::string const& path, std::uint32_t rate, Samples const& samples)
{
    auto const size = static_cast<std::uint32_t>(2 * samples.size());
    std::string data = "RIFF" + bytesOf(36 + size, 4) + "WAVEfmt " + bytesOf(16, 4) + bytesOf(1, 2) + bytesOf(1, 2) +
                       bytesOf(rate, 4) + bytesOf(2 * rate, 4) + bytesOf(2, 2) + bytesOf(16, 2) + "data" +
                       bytesOf(size, 4);
    for (std::int16_t const sample : samples) {
        data += bytesOf(static_cast<std::uint16_t>(sample), 2);
    }
    std::ofstream(path, std::ios::binary) << data;
}

// What a file with these samples at that rate sounds like in a call.
Samples heard(std::uint32_t rate, Samples const& samples)
{
    SoundFile const file("rate");
    writeFile(file.path, rate, samples);
    return *loadSamples(file.path);
}

TEST(WavSourceTest, OtherRates_AreConverted)
{
    EXPECT_EQ(heard(8000, {0, 100, -200}), (Samples{0, 100, -200}));
    EXPECT_EQ(heard(16000, {0, 100, 200, 300, 400, 500}), (Samples{0, 200, 400}));
    EXPECT_EQ(heard(4000, {0, 100, -200}), (Samples{0, 50, 100, -50, -200, -200}));
    EXPECT_EQ(heard(11025, {0, 1000, 2000, 3000, 4000, 5000}), (Samples{0, 1378, 2756, 4134}));
}

TEST(WavSourceTest, FileOfAMomentAtAHighRate_HasNoSound)
{
    SoundFile const file("moment");
    writeFile(file.path, 48000, {1});

    EXPECT_EQ(refusalOf(file.path), "audio file " + file.path + ": it has no sound");
}

TEST(WavSourceTest, FileOfMoreThanHalfAnHour_IsRefused)
{
    SoundFile const file("long");
    writeFile(file.path, 48000, {1});
    constexpr std::uint32_t kData = 2 * (48000 * 60 * 30 + 1);
    std::fstream out(file.path, std::ios::binary | std::ios::in | std::ios::out);
    out.seekp(4) << bytesOf(36 + kData, 4);
    out.seekp(40) << bytesOf(kData, 4);
    out.close();
    std::filesystem::resize_file(file.path, 44 + kData);

    EXPECT_EQ(refusalOf(file.path), "audio file " + file.path + ": it has no sound or more than half an hour");
}

TEST(WavSourceTest, SkippedFrames_AreThoseThatWereNotRead)
{
    auto const samples = std::make_shared<Samples>(Samples(sip::kFrameSamples * 3 + 1));
    for (std::size_t i = 0; i < samples->size(); ++i) {
        samples->at(i) = static_cast<std::int16_t>(i);
    }
    WavSource source(samples);
    sip::AudioFrame frame{};

    source.skipFrames(2);
    source.readFrame(frame);
    EXPECT_EQ(frame[0], 320);
    source.skipFrames(3);
    source.readFrame(frame);
    EXPECT_EQ(frame[0], 479) << "480 samples on, and once around";
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

    EXPECT_EQ(refusalOf(empty.path), "audio file " + empty.path + ": it has no sound or more than half an hour");
    EXPECT_NE(refusalOf(garbage.path).find(garbage.path), std::string::npos);
}

}  // namespace
}  // namespace telephone
