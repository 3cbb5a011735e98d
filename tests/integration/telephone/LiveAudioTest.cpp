// Calls with a microphone and a loudspeaker: devices of the sound system that are files.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <numbers>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "RunningTelephone.h"

namespace {

constexpr double kRate = 8000;
constexpr double kPitch = 700;  // of what the microphone hears, in hertz

std::vector<std::int16_t> samplesOf(std::filesystem::path const& path)
{
    std::ifstream file(path, std::ios::binary);
    std::string const bytes{std::istreambuf_iterator<char>(file), {}};
    std::vector<std::int16_t> samples(bytes.size() / sizeof(std::int16_t));
    std::memcpy(samples.data(), bytes.data(), samples.size() * sizeof(std::int16_t));
    return samples;
}

// The strongest of the frequencies 100, 200 ... 3,000 Hz (Goertzel's filter); 0 in silence.
int pitchOf(std::vector<std::int16_t> const& samples)
{
    int strongest = 0;
    double most = 1e6;
    for (int frequency = 100; frequency <= 3000; frequency += 100) {
        double const factor = 2 * std::cos(2 * std::numbers::pi * frequency / kRate);
        double last = 0;
        double before = 0;
        for (std::int16_t const sample : samples) {
            double const next = sample + factor * last - before;
            before = last;
            last = next;
        }
        double const power = last * last + before * before - factor * last * before;
        if (power > most) {
            most = power;
            strongest = frequency;
        }
    }
    return strongest;
}

// A sound system with the devices "microphone", which hears a tone, and "loudspeaker", which writes a file.
class LiveAudio : public ::testing::Test
{
protected:
    LiveAudio()
    {
        std::ofstream tone(folder_.file("tone.raw"), std::ios::binary);
        for (int at = 0; at < 60 * static_cast<int>(kRate); ++at) {
            auto const sample = static_cast<std::int16_t>(8000 * std::sin(2 * std::numbers::pi * kPitch * at / kRate));
            tone.write(reinterpret_cast<char const*>(&sample), sizeof sample);
        }
        std::ofstream(folder_.file("sound.conf"))
            << "pcm.default { type null\n hint { show on\n description \"nothing\" } }\n"
            << device("microphone", "file \"/dev/null\"\n infile \"" + folder_.file("tone.raw") + "\"")
            << device("loudspeaker", "file \"" + folder_.file("heard.raw") + "\"");
        std::ofstream(folder_.file("call.script")) << "OutgoingCallMakeRequest Line=4711 CallID=1 Destination=100\n"
                                                      "wait CallStateChangeEvent CallID=1 CallState=connected\n"
                                                      "pause 1\n"
                                                      "CallClearRequest Line=4711 CallID=1\n"
                                                      "wait CallStateChangeEvent CallID=1 CallState=idle\n";
    }

    static std::string device(std::string const& name, std::string const& files)
    {
        return "pcm." + name + " { type file\n slave.pcm { type null }\n format \"raw\"\n " + files +
               "\n hint { show on\n description \"" + name + "\" } }\n";
    }

    Ended telephone(std::vector<std::string> const& arguments) const
    {
        std::vector<std::string> command{"/usr/bin/env", "ALSA_CONFIG_PATH=" + folder_.file("sound.conf"),
                                         "TELEPHONE_TIME=real", TELEPHONE};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return run(command);
    }

    // A call to the number that echoes what it hears.
    Ended callTheEcho(std::string const& microphone) const
    {
        std::ofstream(folder_.file("telephone.toml"))
            << "[media]\nsource = \"device\"\nmicrophone = \"" << microphone << "\"\nloudspeaker = \"loudspeaker\"\n"
            << "[applications]\npath = \"" << folder_.file("socket") << "\"\n";
        return telephone({"--config", folder_.file("telephone.toml"), "play", folder_.file("call.script")});
    }

    TemporaryFolder const folder_;
};

TEST_F(LiveAudio, WhatTheMicrophoneHears_ComesBackFromTheEchoToTheLoudspeaker)
{
    Ended const played = callTheEcho("microphone");

    EXPECT_EQ(played.status, 0) << played.output;
    auto const heard = samplesOf(folder_.file("heard.raw"));
    EXPECT_EQ(pitchOf(heard), 700);
    // A second of frames, at the telephone's pace: the device itself would take any number.
    EXPECT_GT(heard.size(), 5000U);
    EXPECT_LT(heard.size(), 16000U);
}

TEST_F(LiveAudio, MissingMicrophone_IsReportedOnce_AndTheCallIsSilent)
{
    Ended const played = callTheEcho("studio");

    EXPECT_EQ(played.status, 0) << played.output;
    std::string const reason = "there is no microphone \"studio\": \"telephone devices\" lists what there is";
    auto const first = played.output.find(reason);
    ASSERT_NE(first, std::string::npos) << played.output;
    EXPECT_EQ(played.output.find(reason, first + 1), std::string::npos) << played.output;
    EXPECT_EQ(pitchOf(samplesOf(folder_.file("heard.raw"))), 0);
}

TEST_F(LiveAudio, Devices_AreListedByName)
{
    EXPECT_EQ(telephone({"devices"}).output, "name         microphone  loudspeaker\n"
                                             "microphone   yes         yes\n"
                                             "loudspeaker  yes         yes\n"
                                             "default      default     default\n");
}

TEST_F(LiveAudio, MachineWithoutSound_SaysSo_AndNothingElse)
{
    std::ofstream(folder_.file("sound.conf")) << "pcm.default { type none }\n";

    Ended const listed = telephone({"devices"});
    EXPECT_EQ(listed.status, 1);
    EXPECT_EQ(listed.output, "telephone: this machine has no microphone and no loudspeaker\n");
}

TEST_F(LiveAudio, VirtualTime_HasNoDevices)
{
    std::ofstream(folder_.file("telephone.toml")) << "[media]\nsource = \"device\"\n";

    Ended const refused =
        run({TELEPHONE, "--time", "virtual", "--config", folder_.file("telephone.toml"), "play", "-"});
    EXPECT_NE(refused.status, 0);
    EXPECT_EQ(refused.output, "telephone: in virtual time there is no microphone and no loudspeaker: set media.source "
                              "to another source, or start with --time real\n");
}

}  // namespace
