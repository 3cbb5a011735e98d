// The engine against SIPp's built-in scenarios: a hundred calls each way, and a peer that is killed.
#include <deque>

#include "tests/helpers/ChildProcess.h"
#include "tests/helpers/EnginePhone.h"

namespace telephone::test {

namespace {

constexpr int kCalls = 100;

// Answers the calls that ring, one after the other: SIPp's scenario does not expect that a call is put on hold for the
// answer to the next one.
class Answerer final : public CallObserver
{
public:
    explicit Answerer(CallEngine& engine)
        : engine_(engine)
    {
        engine_.addObserver(*this);
    }
    ~Answerer() override { engine_.removeObserver(*this); }

    void callChanged(CallSnapshot const& now, CallSnapshot const*) override
    {
        connected_ += now.state == sfiCallStateConnected ? 1 : 0;
        failed_ += now.state == sfiCallStateFailed ? 1 : 0;
        if (now.state == sfiCallStateRinging) {
            ringing_.push_back(now.callID);
        } else if (now.ended() && now.callID == answered_) {
            answered_ = 0;
        }
        if (answered_ == 0 && !ringing_.empty()) {
            answered_ = ringing_.front();
            ringing_.pop_front();
            eventLoop().post([this, callID = answered_] { failed_ += engine_.answer(callID) ? 0 : 1; });
        }
    }

    int connected() const { return read(connected_); }
    int failed() const { return read(failed_); }

private:
    static int read(int const& value)
    {
        std::lock_guard const guard(eventLoop());
        return value;
    }

    CallEngine& engine_;
    std::deque<int> ringing_;
    int answered_ = 0;
    int connected_ = 0;
    int failed_ = 0;
};

class Sipp : public ::testing::Test
{
protected:
    EnginePhone phone_{EnginePhone::Options{}};
    std::string const folder_ = ::testing::TempDir();
    int const port_ = freeUdpPort();

    std::vector<std::string> common() const
    {
        return {"-i", "127.0.0.1", "-p", std::to_string(port_), "-mi", "127.0.0.1", "-nostdin"};
    }

    std::vector<std::string> with(std::vector<std::string> arguments) const
    {
        auto const rest = common();
        arguments.insert(arguments.end(), rest.begin(), rest.end());
        return arguments;
    }
};

}  // namespace

TEST_F(Sipp, HundredCallsToTheTelephone_NoneFails)
{
    Answerer answerer(phone_.engine());

    ChildProcess sipp("sipp",
                      with({phone_.engine().userAgent().hostPort(), "-sn", "uac", "-s", "4711", "-m",
                            std::to_string(kCalls), "-r", "50", "-l", "20", "-timeout", "40", "-timeout_error"}),
                      folder_);

    EXPECT_EQ(sipp.wait(std::chrono::seconds(45)), 0);
    EXPECT_TRUE(eventually([this] { return phone_.engine().calls().empty(); }));
    EXPECT_EQ(answerer.failed(), 0);
    EXPECT_EQ(answerer.connected(), kCalls);
}

TEST_F(Sipp, HundredCallsFromTheTelephone_NoneFails)
{
    ChildProcess sipp("sipp", with({"-sn", "uas", "-m", std::to_string(kCalls), "-timeout", "40"}), folder_);
    std::string const target = "sip:service@127.0.0.1:" + std::to_string(port_);

    for (int callID = 1; callID <= kCalls; ++callID) {
        std::string const id = std::to_string(callID);
        ASSERT_TRUE(phone_.engine().outgoing().make(1, 0, callID, target));
        ASSERT_TRUE(phone_.events().waitFor("state 4711 " + id + " connected normal service"));
        ASSERT_TRUE(phone_.engine().clear(callID));
        ASSERT_TRUE(phone_.events().waitFor("state 4711 " + id + " idle normal service"));
    }

    EXPECT_EQ(sipp.wait(std::chrono::seconds(45)), 0);
}

TEST_F(Sipp, PeerKilledInMidCall_AnUnansweredHoldEndsTheCall)
{
    EnginePhone::Options options;
    options.engine.reinviteTimeout = std::chrono::milliseconds(300);
    EnginePhone phone(options);
    ChildProcess sipp("sipp", with({"-sn", "uas"}), folder_);
    std::string const target = "sip:service@127.0.0.1:" + std::to_string(port_);
    ASSERT_TRUE(phone.engine().outgoing().make(1, 0, 1, target));
    ASSERT_TRUE(phone.events().waitFor("state 4711 1 connected normal service"));

    sipp.kill();
    ASSERT_TRUE(phone.engine().established().hold(1));

    phone.expect({"failed 4711 1 hold 2", "state 4711 1 failed timeout service"});
    EXPECT_TRUE(phone.engine().calls().empty());
}

TEST_F(Sipp, PeerKilledInMidCall_AConsultationGoesOnWithoutIt)
{
    EnginePhone::Options options;
    options.engine.reinviteTimeout = std::chrono::milliseconds(300);
    EnginePhone phone(options);
    ChildProcess sipp("sipp", with({"-sn", "uas"}), folder_);
    std::string const target = "sip:service@127.0.0.1:" + std::to_string(port_);
    ASSERT_TRUE(phone.engine().outgoing().make(1, 0, 1, target));
    ASSERT_TRUE(phone.events().waitFor("state 4711 1 connected normal service"));
    sipp.kill();

    ASSERT_TRUE(phone.engine().outgoing().make(1, 0, 2, phone_.uri(), CallPurpose::kConsultation));

    phone.expect({"state 4711 2 dialling normal 4711", "failed 4711 1 consultation hold 2",
                  "state 4711 1 failed timeout service", "state 4711 2 proceeding normal 4711",
                  "state 4711 2 remote ringing normal 4711"});
}

TEST_F(Sipp, PeerKilledInMidCall_ClearEndsTheCallAtOnce)
{
    ChildProcess sipp("sipp", with({"-sn", "uas"}), folder_);
    std::string const target = "sip:service@127.0.0.1:" + std::to_string(port_);
    ASSERT_TRUE(phone_.engine().outgoing().make(1, 0, 1, target));
    ASSERT_TRUE(phone_.events().waitFor("state 4711 1 connected normal service"));
    sipp.kill();

    ASSERT_TRUE(phone_.engine().clear(1));

    phone_.expect({"state 4711 1 idle normal service"});
    EXPECT_TRUE(phone_.engine().calls().empty());
}

}  // namespace telephone::test
