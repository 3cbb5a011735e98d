// Records a call: both directions of real RTP, in a file with two channels.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "RunningTelephone.h"

namespace {

std::string wholeFile(std::filesystem::path const& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// The largest sample of a channel (0: left) in a 16-bit file with two channels and a header of 44 bytes.
int loudest(std::string const& wav, std::size_t channel)
{
    int most = 0;
    for (std::size_t at = 44 + 2 * channel; at + 1 < wav.size(); at += 4) {
        auto const low = static_cast<unsigned char>(wav[at]);
        auto const high = static_cast<signed char>(wav[at + 1]);
        most = std::max(most, std::abs(high * 256 + low));
    }
    return most;
}

}  // namespace

TEST(Recording, CallWithTheEcho_IsWrittenWithBothDirections)
{
    TemporaryFolder const folder;
    {
        std::ofstream(folder.file("telephone.toml"))
            << "[recording]\nfolder = \"" << folder.file("") << "\"\n[applications]\npath = \"" << folder.file("socket")
            << "\"\n";
        std::ofstream(folder.file("record.script")) << "OutgoingCallMakeRequest Line=4711 CallID=1 Destination=100\n"
                                                       "wait CallStateChangeEvent CallID=1 CallState=connected\n"
                                                       "record on 4711\n"
                                                       "wait callRecordingStatusEvent callId=1 callRecorded=true\n"
                                                       "pause 1\n"
                                                       "record off 4711\n"
                                                       "wait callRecordingStatusEvent callId=1 callRecorded=false\n"
                                                       "CallClearRequest Line=4711 CallID=1\n"
                                                       "wait CallStateChangeEvent CallID=1 CallState=idle\n";
    }
    Ended const played =
        run({TELEPHONE, "--config", folder.file("telephone.toml"), "play", folder.file("record.script")});
    EXPECT_EQ(played.status, 0) << played.output;

    std::string wav;
    for (auto const& entry : std::filesystem::directory_iterator(folder.file(""))) {
        if (entry.path().extension() == ".wav") {
            wav = wholeFile(entry.path());
        }
    }
    EXPECT_GT(wav.size(), 44U + 4U * 4000U);  // half a second at least
    EXPECT_GT(loudest(wav, 0), 1000);
    EXPECT_GT(loudest(wav, 1), 1000);
}
