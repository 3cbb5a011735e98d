#include "telephone/sip/MessageTap.h"

#include "LoopFixture.h"

namespace telephone::sip {
namespace {

std::string message(std::string const& firstLine, std::string const& method, std::string const& more = {})
{
    return firstLine +
           "\r\nVia: SIP/2.0/UDP 127.0.0.1:5099;branch=z9hG4bK1\r\n"
           "From: <sip:1@127.0.0.1>;tag=ours\r\nTo: <sip:2@127.0.0.1>;tag=theirs\r\n"
           "Call-ID: call\r\nCSeq: 1 " +
           method + "\r\n" + more + "Content-Length: 0\r\n\r\n";
}

class FakeSession final : public MessageTapListener
{
public:
    FakeSession(bool outgoing, std::string localTag)
        : outgoing_(outgoing)
        , localTag_(std::move(localTag))
    {}

    bool isOutgoing() const override { return outgoing_; }
    std::string localTag() const override { return localTag_; }
    void onReason(std::string const& reason) override { events += "reason " + reason; }
    void onInviteRefused(Response const& response) override { events += "refused " + std::to_string(response.status); }
    void onInviteRedirected(Response const& response) override
    {
        events += "redirected " + std::to_string(response.status);
    }
    bool takeRedirection(Response const&) override { return takesRedirection; }
    void onEndIgnored() override { events += "end ignored "; }

    std::string events;
    bool takesRedirection = false;

private:
    bool outgoing_;
    std::string localTag_;
};

class MessageTapTest : public LoopFixture
{
protected:
    MessageTapTest()
    {
        tap_->add("call", caller_);
        tap_->add("call", called_);
    }

    void receive(std::string& packet)
    {
        std::lock_guard const guard(loop);
        tap_->onReceived(packet);
    }

    std::shared_ptr<MessageTap> const tap_ = std::make_shared<MessageTap>(loop);
    FakeSession caller_{true, "ours"};
    FakeSession called_{false, "theirs"};
};

TEST_F(MessageTapTest, ReasonOfACancel_ReachesTheIncomingCall)
{
    std::string cancel = message("CANCEL sip:2@127.0.0.1 SIP/2.0", "CANCEL",
                                 "Reason: SIP;cause=200;text=\"Call completed elsewhere\"\r\n");

    receive(cancel);

    EXPECT_EQ(called_.events, "reason SIP;cause=200;text=\"Call completed elsewhere\"");
    EXPECT_EQ(caller_.events, "");
}

TEST_F(MessageTapTest, PacketsOfASilentCall_AreKeptFromTheStack)
{
    tap_->silence(called_);
    std::string info = message("INFO sip:2@127.0.0.1 SIP/2.0", "INFO");
    std::string cancel = message("CANCEL sip:2@127.0.0.1 SIP/2.0", "CANCEL");
    std::string response = message("SIP/2.0 200 OK", "INFO");
    std::string const unchanged = response;
    auto const isBlank = [](std::string const& packet) { return packet == std::string(packet.size(), ' '); };

    receive(info);
    EXPECT_EQ(called_.events, "");
    receive(cancel);
    receive(response);

    EXPECT_TRUE(isBlank(info)) << info;
    EXPECT_TRUE(isBlank(cancel)) << cancel;
    EXPECT_EQ(response, unchanged) << "of the other end with the same Call-ID";
    EXPECT_EQ(called_.events, "end ignored ");
    EXPECT_EQ(caller_.events, "");
}

TEST_F(MessageTapTest, RefusedInvite_IsReportedToTheCaller)
{
    std::string refusal = message("SIP/2.0 488 Not Acceptable Here", "INVITE");

    receive(refusal);

    EXPECT_TRUE(eventually([this] { return caller_.events == "refused 488"; })) << caller_.events;
    EXPECT_EQ(called_.events, "");
}

TEST_F(MessageTapTest, RedirectionWithoutDiversion_IsLeftToTheStack)
{
    caller_.takesRedirection = true;
    std::string const original =
        message("SIP/2.0 302 Moved Temporarily", "INVITE", "Contact: <sip:3@127.0.0.1:5080>\r\n");
    std::string redirection = original;

    receive(redirection);

    EXPECT_EQ(redirection, original);
    EXPECT_TRUE(eventually([this] { return caller_.events == "redirected 302"; })) << caller_.events;
}

TEST_F(MessageTapTest, RedirectionThatTheSessionTakes_LosesItsContact)
{
    caller_.takesRedirection = true;
    std::string redirection =
        message("SIP/2.0 302 Moved Temporarily", "INVITE",
                "Contact: <sip:3@127.0.0.1:5080>\r\nDiversion: <sip:2@127.0.0.1>;reason=user-busy\r\n");

    receive(redirection);

    EXPECT_EQ(redirection.find("sip:3@"), std::string::npos);
    EXPECT_NE(redirection.find("Diversion: <sip:2@127.0.0.1>;reason=user-busy"), std::string::npos);
}

TEST_F(MessageTapTest, OtherResponsesAndGarbage_AreIgnored)
{
    std::string refusedBye = message("SIP/2.0 481 Call Does Not Exist", "BYE");
    std::string garbage = "CANCEL nothing";
    std::string refusal = message("SIP/2.0 486 Busy Here", "INVITE");

    receive(refusedBye);
    receive(garbage);
    receive(refusal);

    EXPECT_TRUE(eventually([this] { return caller_.events == "refused 486"; })) << caller_.events;
    EXPECT_EQ(called_.events, "");
}

TEST_F(MessageTapTest, RemovedSession_IsNotCalledAnyMore)
{
    {
        std::lock_guard const guard(loop);
        tap_->remove(called_);
    }
    std::string cancel = message("CANCEL sip:2@127.0.0.1 SIP/2.0", "CANCEL", "Reason: SIP;cause=200\r\n");

    receive(cancel);

    EXPECT_EQ(called_.events, "");
}

}  // namespace
}  // namespace telephone::sip
