// Two telephones with nothing between them but TLS and SRTP: what somebody on the way sees, and what an application
// learns of a certificate that is not accepted.
#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>
#include <unistd.h>

#include "LoopbackCapture.h"
#include "TelephoneAt.h"
#include "tests/helpers/TestCertificates.h"
#include "tests/helpers/TestTime.h"

namespace {

using telephone::test::TestCertificates;
using Packet = LoopbackCapture::Packet;

std::string contentOfFile(std::string const& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// The greatest sample of a WAV file of 16 bits.
int loudestSample(std::string const& path)
{
    constexpr std::size_t kHeader = 44;
    std::string const bytes = contentOfFile(path);
    int loudest = 0;
    for (std::size_t at = kHeader; at + 1 < bytes.size(); at += 2) {
        std::int16_t sample = 0;
        std::memcpy(&sample, bytes.data() + at, sizeof sample);
        loudest = std::max(loudest, std::abs(int{sample}));
    }
    return loudest;
}

// The first telephone has the exchange; the second registers there and calls the first. Their addresses are their own,
// so that nobody else's traffic is recorded.
class EncryptedTelephones : public testing::Test
{
protected:
    static std::string ownAddress(int number)
    {
        return "127." + std::to_string(100 + getpid() % 100) + "." + std::to_string(getpid() / 100 % 250) + "." +
               std::to_string(number);
    }
    std::string file(std::string const& name) const { return folder_.file(name); }

    std::string configuration(int number, bool encrypted)
    {
        auto const own = certificates_.make("IP:" + ownAddress(number));
        std::string const tls = "transport = \"tls\"\ncertificate = \"" + own.certificate + "\"\nkey = \"" + own.key +
                                "\"\n[certificates]\nfolder = \"" + certificates_.folder() + "\"\n";
        return "[sip]\naddress = \"" + ownAddress(number) + "\"\n" + (encrypted ? tls : "") + "[media]\nsource = \"" +
               (number == 1 ? "tone" : "silence") + "\"\nheard = \"" + file("heard" + std::to_string(number) + ".wav") +
               "\"\nencryption = \"" + (encrypted ? "required" : "none") + "\"\n[store]\npath = \"" +
               file("store" + std::to_string(number)) + "\"\n[[line]]\nid = \"471" + std::to_string(number) +
               "\"\npassword = \"secret\"\nprimary = true\n";
    }

    // Calls the first telephone, listens for a moment and hangs up. What passed between the two, and between them and
    // the exchange.
    std::vector<Packet> recordedCall(bool encrypted)
    {
        int const port = freePort();
        auto const exchange = certificates_.make("IP:127.0.0.1");
        LoopbackCapture capture([port](Packet const& packet) {
            auto const isOurs = [port](std::string const& address, std::uint16_t used) {
                return address == ownAddress(1) || address == ownAddress(2) || used == port || used == port + 1;
            };
            return isOurs(packet.from, packet.fromPort) || isOurs(packet.to, packet.toPort);
        });
        TelephoneAt first(
            configuration(1, encrypted) + "[exchange]\nport = " + std::to_string(port) + "\n" +
            (encrypted ? "certificate = \"" + exchange.certificate + "\"\nkey = \"" + exchange.key + "\"\n" : ""));
        TelephoneAt second(configuration(2, encrypted) + "[server]\nregistrar = \"sip:127.0.0.1:" +
                           std::to_string(encrypted ? port + 1 : port) + "\"\n");
        long const before = capture.datagrams();
        call(first, second, encrypted,
             [&] { EXPECT_TRUE(telephone::test::eventually([&] { return capture.datagrams() > before + 200; })); });
        return capture.stop();
    }

    static void call(TelephoneAt& called, TelephoneAt& caller, bool encrypted, std::function<void()> const& listen)
    {
        ASSERT_EQ(caller.call("OutgoingCallMakeRequest", "4712", 1, "<Destination>4711</Destination>"), "sfiSuccess");
        std::string const incoming =
            called.application.event("<Method>IncomingCallEvent</Method><LineID>4711</LineID>");
        int const id = std::stoi(callIdOf(incoming));
        ASSERT_EQ(called.call("AnswerCall", "4711", id), "sfiSuccess");
        caller.application.event(state(1, kStateConnected));
        called.application.event(state(id, kStateConnected));
        listen();
        std::string const secure = std::string("\"secure\":") + (encrypted ? "true" : "false");
        EXPECT_NE(caller.application.command("state").find(secure), std::string::npos);
        EXPECT_NE(called.application.command("state").find(secure), std::string::npos);
        ASSERT_EQ(caller.call("CallClearRequest", "4712", 1), "sfiSuccess");
        caller.application.event(state(1, kStateIdle));
        called.application.event(state(id, kStateIdle));
    }

    static bool contains(std::vector<Packet> const& packets, std::string const& text)
    {
        return std::ranges::any_of(
            packets, [&text](Packet const& each) { return each.payload.find(text) != std::string::npos; });
    }
    // RTP of PCMU, 20 ms each.
    static long audioPackets(std::vector<Packet> const& packets)
    {
        return std::ranges::count_if(packets, [](Packet const& each) {
            return each.isDatagram && each.payload.size() >= 172 && (each.payload[1] & 0x7f) == 0 &&
                   static_cast<unsigned char>(each.payload[0]) == 0x80;
        });
    }

    TemporaryFolder const folder_;
    TestCertificates certificates_;
};

// What is said in SIP, and a frame of silence in PCMU.
constexpr std::array kClear{"SIP/2.0", "INVITE", "REGISTER", "4711", "a=crypto", "inline:", "m=audio"};
std::string const kSilence(160, '\xff');

struct Refused
{
    char const* name;
    std::function<TestCertificates::Files(TestCertificates&)> make;
    char const* reason;  // its beginning
};

// A server of another make, which writes what it receives to its output.
class RefusedCertificates : public testing::TestWithParam<Refused>
{
protected:
    void startServer(TestCertificates::Files const& own)
    {
        server_.emplace(std::vector<std::string>{"openssl", "s_server", "-accept", "127.0.0.1:" + std::to_string(port_),
                                                 "-cert", own.certificate, "-key", own.key});
        server_->readUntil("ACCEPT\n");
    }
    std::string configuration() const
    {
        return "[sip]\ntransport = \"tls\"\n[server]\nregistrar = \"sip:127.0.0.1:" + std::to_string(port_) +
               "\"\n[certificates]\nfolder = \"" + certificates_.folder() + "\"\n[log]\nfile = \"" + log() +
               "\"\n[store]\npath = \"" + folder_.file("store") + "\"\n[[line]]\nid = \"4711\"\n";
    }
    std::string log() const { return folder_.file("log"); }

    TemporaryFolder const folder_;
    TestCertificates certificates_;
    int const port_ = freePort();
    std::optional<Process> server_;
};

}  // namespace

TEST_P(RefusedCertificates, Application_LearnsTheReasonAndTheServerReceivesNothing)
{
    std::string const reason = GetParam().reason;
    startServer(GetParam().make(certificates_));
    TelephoneAt telephone(configuration());
    telephone.application.command("reasons on");

    telephone.application.command("events after 0 only RegistrationStateChangeEvent");
    telephone.application.event("<Method>RegistrationStateChangeEvent</Method><LineID>4711</LineID><CallID>0</CallID>"
                                "<Registered>0</Registered><RegistrationResult>2</RegistrationResult>");
    EXPECT_EQ(telephone.call("OutgoingCallMakeRequest", "4711", 1, "<Destination>4712</Destination>"), "sfiFailure");

    ASSERT_EQ(telephone.application.reasons().size(), 1U);
    EXPECT_EQ(telephone.application.reasons()[0].substr(0, reason.size()), reason);
    telephone.end();
    EXPECT_NE(contentOfFile(log()).find("TLS fails: " + reason), std::string::npos) << contentOfFile(log());
    server_->signal(SIGTERM);
    EXPECT_EQ(server_->readAll().find("SIP/2.0"), std::string::npos) << server_->output();
}

TEST_F(RefusedCertificates, CertificateThatIsAccepted_IsFollowedByARequest)
{
    startServer(certificates_.make());
    TelephoneAt const telephone(configuration());

    server_->readUntil("REGISTER sip:127.0.0.1:" + std::to_string(port_) + ";transport=tls SIP/2.0");

    server_->signal(SIGTERM);
    (void)server_->readAll();
}

INSTANTIATE_TEST_SUITE_P(
    Certificates, RefusedCertificates,
    testing::Values(Refused{"WrongName", [](TestCertificates& from) { return from.make("DNS:other.example"); },
                            "the certificate of 127.0.0.1 is for other.example"},
                    Refused{"Expired", [](TestCertificates& from) { return from.make("IP:127.0.0.1", -1); },
                            "the certificate of 127.0.0.1 expired on 20"},
                    Refused{"UnknownAuthority", [](TestCertificates& from) { return from.makeUntrusted(); },
                            "the certificate of 127.0.0.1 is from an unknown authority, \"Strange Authority\""}),
    [](auto const& each) { return each.param.name; });

TEST_F(EncryptedTelephones, CallWithoutEncryption_IsReadAndHeardOnTheWay)
{
    if (!LoopbackCapture::isPermitted()) {
        GTEST_SKIP() << "packets of others can be recorded by root only";
    }
    auto const packets = recordedCall(false);

    EXPECT_TRUE(contains(packets, "INVITE sip:4711@"));
    EXPECT_GT(audioPackets(packets), 50);
    EXPECT_TRUE(contains(packets, kSilence));
}

TEST_F(EncryptedTelephones, EncryptedCall_ShowsNothingOnTheWay)
{
    if (!LoopbackCapture::isPermitted()) {
        GTEST_SKIP() << "packets of others can be recorded by root only";
    }
    auto const packets = recordedCall(true);

    for (auto const* const text : kClear) {
        EXPECT_FALSE(contains(packets, text)) << text;
    }
    EXPECT_GT(audioPackets(packets), 50);
    EXPECT_FALSE(contains(packets, kSilence));
    // The second has heard the tone of the first all the same.
    EXPECT_GT(loudestSample(file("heard2.wav")), 1000);
}
