// Recording of calls that are played by hand, frame by frame.
#include "telephone/recording/CallRecorder.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>

#include <gtest/gtest.h>
#include <sndfile.h>
#include <sys/mount.h>

#include "EventLog.h"
#include "platform/management/ManageableData.h"
#include "platform/management/MgmtAgentIfc.h"
#include "platform/recording/RecordingConfigManager.h"
#include "telephone/management/LocalManagement.h"
#include "tests/helpers/TestTime.h"
#include "tests/unit/management/ManagementDoubles.h"
#include "tests/unit/management/StoreFixture.h"

namespace telephone {
namespace {

using Lines = std::vector<std::string>;

// Stands for the call engine: calls with one tap each, under one lock.
class Calls
{
public:
    void add(int callID, std::string const& line, sfiCallState state, bool secure = false)
    {
        CallSnapshot call;
        call.secure = secure;
        call.callID = callID;
        call.line.lineURI = line;
        call.state = state;
        calls_.push_back(call);
    }
    RecordableCalls recordable() { return recordableCallsOf(*this); }

    std::vector<CallSnapshot> calls() const { return calls_; }
    bool addTap(int callID, AudioTap& tap)
    {
        std::lock_guard const guard(lock_);
        bool const known =
            std::any_of(calls_.begin(), calls_.end(), [callID](auto const& call) { return call.callID == callID; });
        whenTapped();
        if (known && !refusesTaps) {
            taps_[callID] = &tap;
        }
        return known && !refusesTaps;
    }
    void removeTap(int callID, AudioTap& tap)
    {
        std::lock_guard const guard(lock_);
        if (auto const found = taps_.find(callID); found != taps_.end() && found->second == &tap) {
            taps_.erase(found);
        }
    }
    // `count` frames whose samples are all the same.
    void speak(int callID, std::int16_t heard, std::int16_t sent, int count)
    {
        sip::AudioFrame heardFrame;
        sip::AudioFrame sentFrame;
        heardFrame.fill(heard);
        sentFrame.fill(sent);
        std::lock_guard const guard(lock_);
        for (int i = 0; i < count; ++i) {
            if (auto const found = taps_.find(callID); found != taps_.end()) {
                found->second->onFrame(heardFrame, sentFrame);
            }
        }
    }
    bool hasTap(int callID) const
    {
        std::lock_guard const guard(lock_);
        return taps_.count(callID) != 0;
    }

    bool refusesTaps = false;
    std::function<void()> whenTapped = [] {};  // before the call has its tap

private:
    mutable std::recursive_mutex lock_;
    std::vector<CallSnapshot> calls_;
    std::map<int, AudioTap*> taps_;
};

class CallRecorderTest : public StoreFixture
{
protected:
    CallRecorderTest() { recordings.folder = folder.path(); }

    std::unique_ptr<CallRecorder> makeRecorder()
    {
        return std::make_unique<CallRecorder>(recordings, calls.recordable(),
                                              [this](Event event) { events.post(event); });
    }
    std::vector<std::string> files() const
    {
        std::vector<std::string> names;
        for (auto const& entry : std::filesystem::directory_iterator(recordings.folder)) {
            names.push_back(entry.path().string());
        }
        std::sort(names.begin(), names.end());
        return names;
    }
    static std::vector<std::int16_t> samplesOf(std::string const& path, SF_INFO& format)
    {
        format = {};
        auto* const file = sf_open(path.c_str(), SFM_READ, &format);
        std::vector<std::int16_t> samples(file == nullptr ? 0
                                                          : static_cast<std::size_t>(format.frames * format.channels));
        sf_readf_short(file, samples.data(), format.frames);
        sf_close(file);
        return samples;
    }
    CallSnapshot ended(int callID) const
    {
        CallSnapshot call;
        call.callID = callID;
        call.line.lineURI = "4711";
        call.state = sfiCallStateIdle;
        return call;
    }

    Calls calls;
    RecordingConfiguration recordings;
    EventLog events;
};

TEST_F(CallRecorderTest, RecordedCall_IsAStereoFileOfBothDirections)
{
    calls.add(7, "4711", sfiCallStateConnected);
    auto const recorder = makeRecorder();

    ASSERT_TRUE(recorder->activateRecording("4711"));
    calls.speak(7, 1000, -2000, 50);
    ASSERT_TRUE(recorder->deactivateRecording("4711"));
    ASSERT_TRUE(events.waitFor(4));

    ASSERT_EQ(files().size(), 1U);
    SF_INFO format;
    auto const samples = samplesOf(files()[0], format);
    EXPECT_EQ(format.channels, 2);
    EXPECT_EQ(format.samplerate, 8000);
    EXPECT_EQ(format.format, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    ASSERT_EQ(samples.size(), 50U * 160U * 2U);
    for (std::size_t i = 0; i < samples.size(); i += 2) {
        ASSERT_EQ(samples[i], 1000);
        ASSERT_EQ(samples[i + 1], -2000);
    }
}

TEST_F(CallRecorderTest, Events_ReportStartEndAndTheRecordedCalls)
{
    calls.add(7, "4711", sfiCallStateConnected);
    calls.add(8, "4712", sfiCallStateHeld);
    auto const recorder = makeRecorder();

    EXPECT_TRUE(recorder->activateRecording("4711"));
    EXPECT_TRUE(recorder->activateRecording("4712"));
    EXPECT_TRUE(recorder->deactivateRecording("4711"));
    ASSERT_TRUE(events.waitFor(6));

    EXPECT_EQ(events.lines(),
              (Lines{"recording 4711 7 true", "security 4711 7 1 of 4711:7", "recording 4712 8 true",
                     "security 4712 8 1 of 4711:7 4712:8", "recording 4711 7 false", "security 4711 7 1 of 4712:8"}));
}

TEST_F(CallRecorderTest, FileName_ContainsLineCallAndTime)
{
    calls.add(7, "sip:47/11@desk", sfiCallStateConnected);
    auto const recorder = makeRecorder();

    ASSERT_TRUE(recorder->activateRecording("sip:47/11@desk"));

    ASSERT_EQ(files().size(), 1U);
    auto const name = std::filesystem::path(files()[0]).filename().string();
    EXPECT_TRUE(name.starts_with("sip_47_11_desk-7-20")) << name;
    EXPECT_TRUE(name.ends_with(".wav")) << name;
}

TEST_F(CallRecorderTest, SwitchedOnTwice_RecordsOnce)
{
    calls.add(7, "4711", sfiCallStateConnected);
    auto const recorder = makeRecorder();

    EXPECT_TRUE(recorder->activateRecording("4711"));
    EXPECT_TRUE(recorder->activateRecording("4711"));

    EXPECT_EQ(files().size(), 1U);
    EXPECT_EQ(events.lines(), (Lines{"recording 4711 7 true", "security 4711 7 1 of 4711:7"}));
}

TEST_F(CallRecorderTest, OffAndOnAgain_MakesASecondFile)
{
    calls.add(7, "4711", sfiCallStateConnected);
    auto const recorder = makeRecorder();

    EXPECT_TRUE(recorder->activateRecording("4711"));
    EXPECT_TRUE(recorder->deactivateRecording("4711"));
    EXPECT_TRUE(recorder->activateRecording("4711"));

    EXPECT_EQ(files().size(), 2U);
}

TEST_F(CallRecorderTest, EveryCallWithAudioOnTheLine_IsRecorded)
{
    calls.add(7, "4711", sfiCallStateHeld);
    calls.add(8, "4711", sfiCallStateConnected);
    calls.add(9, "4711", sfiCallStateRinging);
    auto const recorder = makeRecorder();

    EXPECT_TRUE(recorder->activateRecording("4711"));

    EXPECT_TRUE(calls.hasTap(7));
    EXPECT_TRUE(calls.hasTap(8));
    EXPECT_FALSE(calls.hasTap(9));
}

TEST_F(CallRecorderTest, LineWithoutACallWithAudio_IsRefused)
{
    calls.add(9, "4711", sfiCallStateRinging);
    auto const recorder = makeRecorder();

    EXPECT_FALSE(recorder->activateRecording("4711"));
    EXPECT_FALSE(recorder->activateRecording("no such line"));
    EXPECT_FALSE(recorder->activateRecording(""));
    EXPECT_FALSE(recorder->deactivateRecording("4711"));

    EXPECT_TRUE(files().empty());
    EXPECT_TRUE(events.lines().empty());
}

TEST_F(CallRecorderTest, NoFolder_IsRefusedWithEvent)
{
    recordings.folder.clear();
    calls.add(7, "4711", sfiCallStateConnected);
    auto const recorder = makeRecorder();

    EXPECT_FALSE(recorder->activateRecording("4711"));

    EXPECT_EQ(events.lines(), (Lines{"recording 4711 7 false", "security 4711 7 1 of"}));
    EXPECT_FALSE(calls.hasTap(7));
}

TEST_F(CallRecorderTest, FolderThatDoesNotExist_IsRefusedWithEvent)
{
    recordings.folder = folder.file("missing");
    calls.add(7, "4711", sfiCallStateConnected);
    auto const recorder = makeRecorder();

    EXPECT_FALSE(recorder->activateRecording("4711"));

    EXPECT_EQ(events.lines(), (Lines{"recording 4711 7 false", "security 4711 7 1 of"}));
}

TEST_F(CallRecorderTest, CallThatHasEnded_IsRefusedWithEvent)
{
    calls.add(7, "4711", sfiCallStateConnected);
    calls.refusesTaps = true;
    auto const recorder = makeRecorder();

    EXPECT_FALSE(recorder->activateRecording("4711"));

    ASSERT_TRUE(events.waitFor(4));
    EXPECT_EQ(events.lines()[2], "recording 4711 7 false");
    EXPECT_EQ(events.lines()[3], "security 4711 7 1 of");
}

TEST_F(CallRecorderTest, File_GrowsWhileTheCallIsRecorded)
{
    calls.add(7, "4711", sfiCallStateConnected);
    auto const recorder = makeRecorder();
    ASSERT_TRUE(recorder->activateRecording("4711"));
    calls.speak(7, 1, 2, 50);

    constexpr std::uintmax_t kHalf = 50U * 160U * 2U;  // the library buffers some
    auto const isGrowing = [this] { return files().size() == 1 && std::filesystem::file_size(files()[0]) > kHalf; };
    EXPECT_TRUE(test::eventually(isGrowing));
}

TEST_F(CallRecorderTest, FileOfALaterRecording_GrowsToo)
{
    calls.add(7, "4711", sfiCallStateConnected);
    auto const recorder = makeRecorder();
    ASSERT_TRUE(recorder->activateRecording("4711"));
    ASSERT_TRUE(recorder->deactivateRecording("4711"));
    ASSERT_TRUE(events.waitFor(4));
    auto const before = files();

    ASSERT_TRUE(recorder->activateRecording("4711"));
    calls.speak(7, 1, 2, 50);

    auto const isGrowing = [&] {
        for (auto const& file : files()) {
            bool const isNew = std::ranges::find(before, file) == before.end();
            if (isNew && std::filesystem::file_size(file) > 50U * 160U * 2U) {
                return true;
            }
        }
        return false;
    };
    EXPECT_TRUE(test::eventually(isGrowing));
}

TEST_F(CallRecorderTest, CallThatEndsWhileItGetsItsTap_IsRefusedAndLosesIt)
{
    calls.add(7, "4711", sfiCallStateConnected);
    auto const recorder = makeRecorder();
    calls.whenTapped = [&] { recorder->callChanged(ended(7), nullptr); };

    EXPECT_FALSE(recorder->activateRecording("4711"));

    ASSERT_TRUE(events.waitFor(4));
    EXPECT_FALSE(calls.hasTap(7));
    EXPECT_EQ(events.lines()[2], "recording 4711 7 false");
}

TEST_F(CallRecorderTest, EndOfTheCall_CompletesTheFile)
{
    calls.add(7, "4711", sfiCallStateConnected);
    auto const recorder = makeRecorder();
    ASSERT_TRUE(recorder->activateRecording("4711"));
    calls.speak(7, 1, 2, 10);

    recorder->callChanged(ended(7), nullptr);
    ASSERT_TRUE(events.waitFor(4));

    EXPECT_EQ(events.lines()[2], "recording 4711 7 false");
    EXPECT_FALSE(calls.hasTap(7));
    SF_INFO format;
    EXPECT_EQ(samplesOf(files()[0], format).size(), 10U * 160U * 2U);
}

TEST_F(CallRecorderTest, EndOfTheRecorder_CompletesTheFiles)
{
    calls.add(7, "4711", sfiCallStateConnected);
    auto recorder = makeRecorder();
    ASSERT_TRUE(recorder->activateRecording("4711"));
    calls.speak(7, 1, 2, 10);

    recorder.reset();

    SF_INFO format;
    EXPECT_EQ(samplesOf(files()[0], format).size(), 10U * 160U * 2U);
    EXPECT_FALSE(calls.hasTap(7));
}

TEST_F(CallRecorderTest, RecordingDisabledBySetting_IsRefusedAndEnded)
{
    auto const settings = open("");
    LocalManagement management(*settings);
    ContextWith context(&management);
    calls.add(7, "4711", sfiCallStateConnected);
    auto const recorder = makeRecorder();
    recorder->init(context, nullptr, nullptr, new RecordingConfigManager(&context));
    ASSERT_TRUE(recorder->activateRecording("4711"));

    EXPECT_TRUE(settings->set("recording-enabled", "false"));
    ManageableData notice;
    recorder->dataChangedEvent(notice);
    ASSERT_TRUE(events.waitFor(4));

    EXPECT_FALSE(calls.hasTap(7));
    EXPECT_FALSE(recorder->activateRecording("4711"));
    EXPECT_EQ(events.lines()[4], "recording 4711 7 false");
}

// Hands notices on to the recorder, as the service does.
class TellingAgent : public MgmtAgentIfc
{
public:
    explicit TellingAgent(CallRecorder& recorder)
        : recorder_(recorder)
    {}
    int setData(ManageableData&) override { return 0; }
    int getData(ManageableData&) override { return 0; }
    void manageableDataChanged(ManageableData& data) override { recorder_.dataChangedEvent(data); }
    void resetUserData() override {}

private:
    CallRecorder& recorder_;
};

TEST_F(CallRecorderTest, InitialisedRecorder_LearnsOfItsSettingThroughTheAgent)
{
    auto const settings = open("");
    LocalManagement management(*settings);
    ContextWith context(&management);
    calls.add(7, "4711", sfiCallStateConnected);
    auto const recorder = makeRecorder();
    TellingAgent agent(*recorder);
    recorder->init(context, nullptr, &agent, new RecordingConfigManager(&context));
    ASSERT_TRUE(recorder->activateRecording("4711"));

    EXPECT_TRUE(settings->set("recording-enabled", "false"));

    EXPECT_TRUE(events.waitFor(4));
    EXPECT_FALSE(calls.hasTap(7));
}

TEST_F(CallRecorderTest, FullDisk_EndsTheRecordingWithEvent)
{
    auto const disk = folder.file("disk");
    std::filesystem::create_directory(disk);
    if (::mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=64k") != 0) {
        std::cout << "no right to mount a small disk here\n";
        return;
    }
    recordings.folder = disk;
    calls.add(7, "4711", sfiCallStateConnected);
    {
        auto const recorder = makeRecorder();
        ASSERT_TRUE(recorder->activateRecording("4711"));
        calls.speak(7, 1, 2, 500);

        EXPECT_TRUE(events.waitFor(4));
        EXPECT_EQ(events.lines()[2], "recording 4711 7 false");
        EXPECT_FALSE(calls.hasTap(7));
        EXPECT_FALSE(recorder->deactivateRecording("4711"));
    }
    EXPECT_EQ(::umount(disk.c_str()), 0);
}

TEST_F(CallRecorderTest, RecordingService_IsTheRecorderWhileItLives)
{
    calls.add(7, "4711", sfiCallStateConnected);
    {
        auto const recorder = makeRecorder();
        EXPECT_EQ(MediaRecordingService::GetInstance(), recorder.get());
    }

    ASSERT_NE(MediaRecordingService::GetInstance(), nullptr);
    EXPECT_FALSE(MediaRecordingService::GetInstance()->activateRecording("4711"));
}

TEST_F(CallRecorderTest, FileName_HasLettersDigitsAndTwoSignsOfTheLine)
{
    std::string const line = "09azAZ-_/:@[`{.";
    calls.add(7, line, sfiCallStateConnected);
    auto const recorder = makeRecorder();

    ASSERT_TRUE(recorder->activateRecording(line));

    ASSERT_EQ(files().size(), 1U);
    auto const name = std::filesystem::path(files()[0]).filename().string();
    EXPECT_TRUE(name.starts_with("09azAZ-________-7-20")) << name;
}

TEST_F(CallRecorderTest, SecureCall_IsToldAsSecure)
{
    calls.add(7, "4711", sfiCallStateConnected, true);
    auto const recorder = makeRecorder();

    ASSERT_TRUE(recorder->activateRecording("4711"));

    EXPECT_EQ(events.lines(), (Lines{"recording 4711 7 true", "security 4711 7 2 of 4711:7"}));
}

TEST_F(CallRecorderTest, FolderThatIsAFile_IsRefused)
{
    recordings.folder = folder.file("file");
    std::ofstream(recordings.folder) << "x";
    calls.add(7, "4711", sfiCallStateConnected);
    auto const recorder = makeRecorder();

    EXPECT_FALSE(recorder->activateRecording("4711"));

    EXPECT_EQ(events.lines(), (Lines{"recording 4711 7 false", "security 4711 7 1 of"}));
}

TEST_F(CallRecorderTest, OtherCallsAndSettings_LeaveARecordingAlone)
{
    auto const settings = open("");
    LocalManagement management(*settings);
    ContextWith context(&management);
    calls.add(7, "4711", sfiCallStateHeldByBoth);
    calls.add(8, "4712", sfiCallStateConnected);
    auto const recorder = makeRecorder();
    ManageableData notice;
    recorder->dataChangedEvent(notice);
    recorder->init(context, nullptr, nullptr, new RecordingConfigManager(&context));
    ASSERT_TRUE(recorder->activateRecording("4711"));

    recorder->dataChangedEvent(notice);
    recorder->callChanged(ended(8), nullptr);
    CallSnapshot goesOn = ended(7);
    goesOn.state = sfiCallStateConnected;
    recorder->callChanged(goesOn, nullptr);

    EXPECT_TRUE(calls.hasTap(7));
    EXPECT_EQ(recorder->recordedCalls(), std::vector<int>{7});
    EXPECT_FALSE(recorder->deactivateRecording("4712"));
}

}  // namespace
}  // namespace telephone
