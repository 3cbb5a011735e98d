// The audio of calls on real RTP: tones, mute, hold, taps, digits and the mix of a conference.
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <numbers>

#include "telephone/media/ToneSource.h"
#include "telephone/media/WavSource.h"
#include "telephone/media/WavWriter.h"
#include "tests/helpers/EnginePhone.h"

namespace telephone::test {

namespace {

constexpr double kPi = std::numbers::pi;

// Share of one frequency in a frame, 0 to about 1 for a tone of full scale (Goertzel).
double shareOf(double frequency, sip::AudioFrame const& frame)
{
    double real = 0;
    double imaginary = 0;
    for (std::size_t at = 0; at < frame.size(); ++at) {
        double const angle = 2 * kPi * frequency * static_cast<double>(at) / sip::kSampleRate;
        real += frame[at] * std::cos(angle);
        imaginary += frame[at] * std::sin(angle);
    }
    return 2 * std::hypot(real, imaginary) / (32768.0 * static_cast<double>(frame.size()));
}

bool isSilent(sip::AudioFrame const& frame)
{
    return std::all_of(frame.begin(), frame.end(), [](std::int16_t sample) { return std::abs(sample) < 64; });
}

// Counts what a call hears; read under the phone lock.
class Ear final : public AudioTap
{
public:
    void onFrame(sip::AudioFrame const& heard, sip::AudioFrame const& sent) override
    {
        ++frames;
        last = heard;
        all.insert(all.end(), heard.begin(), heard.end());
        lastSent = sent;
        silent = isSilent(heard) ? silent + 1 : 0;
        sentSilent = isSilent(sent) ? sentSilent + 1 : 0;
    }

    int frames = 0;
    int silent = 0;      // in a row
    int sentSilent = 0;  // in a row
    sip::AudioFrame last{};
    sip::AudioFrame lastSent{};
    std::vector<std::int16_t> all;  // heard
};

bool hears(Ear const& ear, double frequency)
{
    std::lock_guard const guard(eventLoop());
    return shareOf(frequency, ear.last) > 0.1;
}

// A sound file of one tone, by which a telephone is recognised.
std::string toneFile(double frequency)
{
    auto const path = std::filesystem::temp_directory_path() / ("tone-" + std::to_string(::getpid()) + '-' +
                                                                std::to_string(static_cast<int>(frequency)) + ".wav");
    WavWriter file(path, 1);
    ToneSource tone(frequency);
    for (int count = 0; count < 50; ++count) {
        sip::AudioFrame frame{};
        tone.readFrame(frame);
        file.write(frame);
    }
    return path;
}

// Four telephones that send 400, 800, 1200 and 2000 Hz, whole periods in a frame and in the file.
class Sound : public ::testing::Test
{
protected:
    std::string const files_[4]{toneFile(400), toneFile(800), toneFile(1200), toneFile(2000)};
    Ear ears_[4];  // the telephones use them to their end
    EnginePhone alice_{saying(files_[0], "4711")};
    EnginePhone bob_{saying(files_[1], "4722")};
    EnginePhone carol_{saying(files_[2], "4733")};
    EnginePhone dave_{saying(files_[3], "4744")};

    static EnginePhone::Options saying(std::string const& file, std::string const& line)
    {
        EnginePhone::Options options;
        options.lines = {line};
        options.engine.audio.source = file;
        return options;
    }

    ~Sound() override
    {
        for (std::string const& file : files_) {
            std::filesystem::remove(file);
        }
    }

    // alice makes the first call of another telephone.
    void connect(EnginePhone& called, int callID)
    {
        ASSERT_TRUE(alice_.engine().outgoing().make(1, 0, callID, called.uri()));
        ASSERT_TRUE(eventually([&called] { return called.alerts(); }));
        ASSERT_TRUE(called.engine().answer(1001));
        ASSERT_TRUE(
            eventually([this, callID] { return alice_.engine().call(callID)->state == sfiCallStateConnected; }));
    }
    // alice's calls 1 to 3.
    void conferenceOfFour()
    {
        connect(bob_, 1);
        connect(carol_, 2);
        ASSERT_TRUE(alice_.engine().joined().conference(2));
        ASSERT_TRUE(eventually([this] { return alice_.engine().call(1)->state == sfiCallStateConference; }));
        connect(dave_, 3);
        ASSERT_TRUE(alice_.engine().joined().conference(3));
        ASSERT_TRUE(eventually([this] {
            auto const calls = alice_.engine().calls();
            return std::ranges::all_of(calls, [](auto const& call) { return call.state == sfiCallStateConference; });
        }));
    }
};

}  // namespace

TEST_F(Sound, Call_HearsTheOtherOne)
{
    connect(bob_, 1);
    ASSERT_TRUE(alice_.engine().list().addTap(1, ears_[0]));
    ASSERT_TRUE(bob_.engine().list().addTap(1001, ears_[1]));

    EXPECT_TRUE(eventually([this] { return hears(ears_[0], 800); }));
    EXPECT_TRUE(eventually([this] { return hears(ears_[1], 400); }));
}

TEST_F(Sound, MicrophoneMute_SendsSilence)
{
    connect(bob_, 1);
    ASSERT_TRUE(bob_.engine().list().addTap(1001, ears_[1]));
    ASSERT_TRUE(eventually([this] { return hears(ears_[1], 400); }));

    alice_.engine().list().setMicrophoneMute(true);

    EXPECT_TRUE(alice_.engine().list().microphoneMute());
    EXPECT_TRUE(eventually([this] {
        std::lock_guard const guard(eventLoop());
        return ears_[1].silent >= 10;
    }));
    alice_.engine().list().setMicrophoneMute(false);
    EXPECT_TRUE(eventually([this] { return hears(ears_[1], 400); }));
}

TEST_F(Sound, HeldCall_HearsNothing)
{
    connect(bob_, 1);
    ASSERT_TRUE(bob_.engine().list().addTap(1001, ears_[1]));
    ASSERT_TRUE(eventually([this] { return hears(ears_[1], 400); }));

    ASSERT_TRUE(alice_.engine().established().hold(1));

    EXPECT_TRUE(eventually([this] {
        std::lock_guard const guard(eventLoop());
        return ears_[1].silent >= 10;
    }));
    ASSERT_TRUE(alice_.engine().established().retrieve(1));
    EXPECT_TRUE(eventually([this] { return hears(ears_[1], 400); }));
}

TEST_F(Sound, Conference_EachHearsTheOtherTwo)
{
    connect(bob_, 1);
    connect(carol_, 2);
    ASSERT_TRUE(alice_.engine().joined().conference(1));
    ASSERT_TRUE(eventually([this] { return alice_.engine().call(2)->state == sfiCallStateConference; }));
    ASSERT_TRUE(bob_.engine().list().addTap(1001, ears_[1]));
    ASSERT_TRUE(carol_.engine().list().addTap(1001, ears_[2]));

    EXPECT_TRUE(eventually([this] { return hears(ears_[1], 400) && hears(ears_[1], 1200); }));
    EXPECT_TRUE(eventually([this] { return hears(ears_[2], 400) && hears(ears_[2], 800); }));
    EXPECT_FALSE(hears(ears_[1], 800));
    EXPECT_FALSE(hears(ears_[2], 1200));
}

TEST_F(Sound, ConferenceOfFour_EachHearsTheOtherThree)
{
    conferenceOfFour();
    ASSERT_TRUE(bob_.engine().list().addTap(1001, ears_[1]));
    ASSERT_TRUE(dave_.engine().list().addTap(1001, ears_[3]));

    EXPECT_TRUE(eventually([this] { return hears(ears_[1], 400) && hears(ears_[1], 1200) && hears(ears_[1], 2000); }));
    EXPECT_TRUE(eventually([this] { return hears(ears_[3], 400) && hears(ears_[3], 800) && hears(ears_[3], 1200); }));
    EXPECT_FALSE(hears(ears_[1], 800));
    EXPECT_FALSE(hears(ears_[3], 2000));
}

TEST_F(Sound, ConferenceOfFour_GoesOnWithThree)
{
    conferenceOfFour();
    ASSERT_TRUE(bob_.engine().list().addTap(1001, ears_[1]));
    ASSERT_TRUE(eventually([this] { return hears(ears_[1], 2000); }));

    ASSERT_TRUE(dave_.engine().clear(1001));

    EXPECT_TRUE(eventually([this] { return hears(ears_[1], 1200) && !hears(ears_[1], 2000); }));
    EXPECT_EQ(alice_.engine().call(1)->state, sfiCallStateConference);
    EXPECT_EQ(alice_.engine().call(2)->state, sfiCallStateConference);
}

TEST_F(Sound, ConferenceOfFourOnHold_IsHeldAndRetrievedAsAWhole)
{
    conferenceOfFour();
    auto const areAll = [this](sfiCallState state) {
        return eventually([this, state] {
            auto const calls = alice_.engine().calls();
            return std::ranges::all_of(calls, [state](auto const& call) { return call.state == state; });
        });
    };

    ASSERT_TRUE(alice_.engine().established().hold(2));
    EXPECT_TRUE(areAll(sfiCallStateHeld));
    ASSERT_TRUE(alice_.engine().established().retrieve(3));

    EXPECT_TRUE(areAll(sfiCallStateConference));
}

// Carol's telephone bridges into the call of Alice and Bob.
TEST_F(Sound, CallThatAnotherTelephoneJoins_IsHeardByAll)
{
    connect(bob_, 1);
    sip::DialogId const dialog = [this] {
        std::lock_guard const guard(eventLoop());
        return alice_.engine().list().find(1)->session()->dialogId();
    }();
    PickupTarget target;
    target.targetURI = alice_.uri();
    target.replaces = {dialog.callId, dialog.localTag, dialog.remoteTag, false};
    target.joins = true;

    ASSERT_TRUE(carol_.engine().takeOver({1, 1, 0, "4733"}, 7, target));

    ASSERT_TRUE(eventually([this] { return alice_.engine().call(1)->state == sfiCallStateConference; }));
    ASSERT_TRUE(bob_.engine().list().addTap(1001, ears_[1]));
    ASSERT_TRUE(carol_.engine().list().addTap(7, ears_[2]));
    EXPECT_TRUE(eventually([this] { return hears(ears_[1], 400) && hears(ears_[1], 1200); }));
    EXPECT_TRUE(eventually([this] { return hears(ears_[2], 400) && hears(ears_[2], 800); }));
    EXPECT_EQ(carol_.engine().call(7)->state, sfiCallStateConnected);

    ASSERT_TRUE(carol_.engine().clear(7));
    EXPECT_TRUE(eventually([this] { return alice_.engine().call(1)->state == sfiCallStateConnected; }));
}

TEST_F(Sound, ConferenceThatIsMuted_StillConnectsTheOthers)
{
    connect(bob_, 1);
    connect(carol_, 2);
    ASSERT_TRUE(alice_.engine().joined().conference(1));
    ASSERT_TRUE(eventually([this] { return alice_.engine().call(2)->state == sfiCallStateConference; }));
    ASSERT_TRUE(bob_.engine().list().addTap(1001, ears_[1]));

    alice_.engine().list().setMicrophoneMute(true);

    EXPECT_TRUE(eventually([this] { return !hears(ears_[1], 400) && hears(ears_[1], 1200); }));
}

TEST_F(Sound, ConferencePartyThatLeft_IsNoLongerHeard)
{
    connect(bob_, 1);
    connect(carol_, 2);
    ASSERT_TRUE(alice_.engine().joined().conference(1));
    ASSERT_TRUE(bob_.engine().list().addTap(1001, ears_[1]));
    ASSERT_TRUE(eventually([this] { return hears(ears_[1], 1200); }));

    ASSERT_TRUE(carol_.engine().clear(1001));

    EXPECT_TRUE(eventually([this] { return hears(ears_[1], 400) && !hears(ears_[1], 1200); }));
}

TEST_F(Sound, RemovedTap_HearsNothing)
{
    connect(bob_, 1);
    ASSERT_TRUE(alice_.engine().list().addTap(1, ears_[0]));
    ASSERT_TRUE(eventually([this] { return hears(ears_[0], 800); }));

    alice_.engine().list().removeTap(1, ears_[0]);
    int const frames = ears_[0].frames;
    ASSERT_TRUE(bob_.engine().list().addTap(1001, ears_[1]));
    ASSERT_TRUE(eventually([this] {
        std::lock_guard const guard(eventLoop());
        return ears_[1].frames > 10;
    }));

    EXPECT_EQ(ears_[0].frames, frames);
    EXPECT_FALSE(alice_.engine().list().addTap(99, ears_[0]));
}

TEST(Heard, IsWrittenToAFile)
{
    auto const path = std::filesystem::temp_directory_path() / ("heard-" + std::to_string(::getpid()) + ".wav");
    Ear ear;
    {
        EnginePhone::Options speaking;
        speaking.lines = {"4722"};
        speaking.engine.audio.source = "tone";
        EnginePhone bob(speaking);
        EnginePhone::Options listening;
        listening.engine.heardFile = path;
        EnginePhone alice(listening);
        ASSERT_TRUE(alice.engine().outgoing().make(1, 0, 1, bob.uri()));
        ASSERT_TRUE(bob.events().waitFor("state 4722 1001 ringing normal 4711"));
        ASSERT_TRUE(bob.engine().answer(1001));
        ASSERT_TRUE(alice.events().waitFor("state 4711 1 connected normal 4722"));
        ASSERT_TRUE(alice.engine().list().addTap(1, ear));
        ASSERT_TRUE(eventually([&ear] { return hears(ear, ToneSource::kFrequency); }));
        ASSERT_TRUE(eventually([&ear] {
            std::lock_guard const guard(eventLoop());
            return ear.frames > 20;
        }));
    }

    auto const samples = loadSamples(path);

    ASSERT_GT(ear.all.size(), 20 * sip::kFrameSamples);
    ASSERT_GE(samples->size(), ear.all.size());
    EXPECT_TRUE(std::equal(ear.all.rbegin(), ear.all.rend(), samples->rbegin())) << "the end of the file";
    std::filesystem::remove(path);
}

TEST(Sources, FileThatCannotBeRead_IsRefusedWithItsName)
{
    EnginePhone::Options options;
    options.engine.audio.source = "/nowhere/at-all.wav";

    try {
        EnginePhone phone(options);
        FAIL() << "the file was accepted";
    } catch (std::runtime_error const& error) {
        EXPECT_NE(std::string(error.what()).find("/nowhere/at-all.wav"), std::string::npos);
    }
}

}  // namespace telephone::test
