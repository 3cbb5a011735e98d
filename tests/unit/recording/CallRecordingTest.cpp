// One recording: its file, and what ends it.
#include "telephone/recording/CallRecording.h"

#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>
#include <sndfile.h>
#include <sys/stat.h>

#include "tests/doubles/TemporaryFolder.h"

namespace telephone {
namespace {

class CallRecordingTest : public testing::Test
{
protected:
    std::shared_ptr<CallRecording> create()
    {
        CallSnapshot call;
        call.callID = 7;
        return CallRecording::create(call, file_).value();
    }
    static void speak(CallRecording& recording, int frames)
    {
        sip::AudioFrame frame;
        frame.fill(100);
        for (int i = 0; i < frames; ++i) {
            recording.onFrame(frame, frame);
        }
    }
    sf_count_t framesInFile() const
    {
        SF_INFO format{};
        auto* const file = sf_open(file_.c_str(), SFM_READ, &format);
        sf_close(file);
        return format.frames;
    }

    TemporaryFolder const folder_;
    std::string const file_ = folder_.file("call.wav");
};

TEST_F(CallRecordingTest, File_IsItsOwnersAndCanBePlayedBeforeTheEnd)
{
    auto const recording = create();
    speak(*recording, 10);
    EXPECT_TRUE(recording->write());

    struct stat status = {};
    ASSERT_EQ(::stat(file_.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    EXPECT_EQ(framesInFile(), 1600);
}

TEST_F(CallRecordingTest, FinishedRecording_WritesWhatIsQueuedAndNothingMore)
{
    auto const recording = create();
    speak(*recording, 2);
    recording->finish();
    speak(*recording, 3);

    EXPECT_FALSE(recording->write());
    recording->close();

    EXPECT_TRUE(recording->outcome());
    EXPECT_EQ(framesInFile(), 320);
}

// A frame has 160 samples of each direction.
TEST_F(CallRecordingTest, MoreThanAMinuteOfAudioThatWaits_EndsIt)
{
    auto const recording = create();
    speak(*recording, 3000);
    EXPECT_TRUE(recording->write());
    EXPECT_TRUE(recording->outcome());
    speak(*recording, 3001);

    EXPECT_FALSE(recording->write());

    EXPECT_EQ(recording->outcome().error().reason, "the recording of call 7 has ended: the disk is too slow");
    speak(*recording, 1);
    EXPECT_FALSE(recording->write());
    recording->close();
    EXPECT_EQ(framesInFile(), 3000 * 160);
}

TEST_F(CallRecordingTest, FileThatIsThere_IsNotOverwritten)
{
    std::ofstream(file_) << "kept";

    auto const created = CallRecording::create(CallSnapshot(), file_);

    EXPECT_EQ(created.error().reason, "\"" + file_ + "\" cannot be created: File exists");
    EXPECT_EQ(std::filesystem::file_size(file_), 4U);
}

TEST_F(CallRecordingTest, DiscardedRecording_LeavesNoFile)
{
    create()->discard();

    EXPECT_FALSE(std::filesystem::exists(file_));
}

}  // namespace
}  // namespace telephone
