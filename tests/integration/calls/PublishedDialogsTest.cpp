// The dialogs of a line as a watcher receives them (RFC 4235, RFC 7463): whole documents.
#include <regex>

#include "tests/helpers/EnginePhone.h"
#include "tests/integration/sip/ScriptedEnd.h"

namespace telephone::test {

namespace {

class PublishedDialogs : public ::testing::Test
{
protected:
    void start(bool shared = false)
    {
        EnginePhone::Options options = EnginePhone::optionsOf("4711");
        options.lines = {"4711", "4712"};
        options.shared = shared;
        options.isPrivate = shared;
        options.engine.permissions.set(sip::RequestKind::kSubscription, sip::Sender::kAnybody);
        phone_ = std::make_unique<EnginePhone>(options);
        watcher_.ask("SUBSCRIBE", "4711", hostPort(),
                     "Event: dialog\r\nExpires: 600\r\nAccept: application/dialog-info+xml\r\n");
        EXPECT_EQ(firstLineOf(watcher_.receive("SIP/2.0")), "SIP/2.0 200 OK");
    }

    std::string hostPort() { return phone_->engine().userAgent().hostPort(); }

    // The next document. PHONE and FAR stand for the addresses, TAG and ID for what is drawn for each dialog.
    std::string document()
    {
        std::string const notify = watcher_.receive("NOTIFY");
        watcher_.answer(notify, "200 OK");
        std::string text = notify.substr(notify.find("\r\n\r\n") + 4);
        for (auto const& [what, with] : {std::pair{hostPort(), "PHONE"}, std::pair{far_.hostPort(), "FAR"}}) {
            for (auto at = text.find(what); at != std::string::npos; at = text.find(what)) {
                text.replace(at, what.size(), with);
            }
        }
        text = std::regex_replace(text, std::regex("call-id=\"[^\"]+\""), "call-id=\"ID\"");
        text = std::regex_replace(text, std::regex("(local|remote)-tag=\"[^\"]+\""), "$1-tag=\"TAG\"");
        return text.substr(text.find("<dialog-info"));
    }

    static std::string documentOf(int version, std::string const& dialogs, std::string const& namespaces = {})
    {
        std::string const head = "<dialog-info xmlns=\"urn:ietf:params:xml:ns:dialog-info\"" + namespaces +
                                 " version=\"" + std::to_string(version) +
                                 "\" state=\"full\" entity=\"sip:4711@PHONE\"";
        return dialogs.empty() ? head + "/>" : head + ">" + dialogs + "</dialog-info>";
    }

    static std::string outgoing(std::string const& state, std::string const& rendering = "/>")
    {
        return "<dialog id=\"1\" call-id=\"ID\" local-tag=\"TAG\" remote-tag=\"TAG\" direction=\"initiator\"><state>" +
               state + "</state><local><identity>sip:4711@PHONE</identity><target uri=\"sip:4711@PHONE\"" + rendering +
               "</local><remote><identity>sip:far@FAR</identity><target uri=\"sip:far@FAR\"/></remote></dialog>";
    }

    std::unique_ptr<EnginePhone> phone_;
    ScriptedEnd far_{eventLoop()};
    ScriptedEnd watcher_{eventLoop()};
};

}  // namespace

TEST_F(PublishedDialogs, OutgoingCall_IsToldInEachOfItsStates)
{
    start();
    EXPECT_EQ(document(), documentOf(0, ""));

    ASSERT_TRUE(phone_->engine().outgoing().make(1, 0, 1, far_.uri()));
    EXPECT_EQ(
        document(),
        documentOf(1, "<dialog id=\"1\" call-id=\"ID\" direction=\"initiator\"><state>trying</state><local><identity>"
                      "sip:4711@PHONE</identity><target uri=\"sip:4711@PHONE\"/></local><remote><identity>"
                      "sip:far@FAR</identity></remote></dialog>"));
    std::string const invite = far_.receive("INVITE");
    far_.answer(invite, "183 Session Progress");
    EXPECT_EQ(document(), documentOf(2, outgoing("proceeding")));
    far_.answer(invite, "180 Ringing");
    EXPECT_EQ(document(), documentOf(3, outgoing("early")));
    far_.accept(invite);
    EXPECT_EQ(document(), documentOf(4, outgoing("confirmed")));
    ASSERT_TRUE(phone_->engine().hold(1));
    EXPECT_EQ(document(),
              documentOf(5, outgoing("confirmed", "><param pname=\"+sip.rendering\" pvalue=\"no\"/></target>")));
    ASSERT_TRUE(phone_->engine().clear(1));
    EXPECT_EQ(document(), documentOf(6, ""));
}

TEST_F(PublishedDialogs, CallsOfOtherLines_AreNotTold)
{
    start();
    (void)document();

    far_.ask("INVITE", "4712", hostPort(), "", ScriptedEnd::description());
    ASSERT_TRUE(eventually([this] { return phone_->alerts(); }));

    EXPECT_TRUE(watcher_.hearsNothingOf("NOTIFY", 1s));
    far_.ask("INVITE", "4711", hostPort(), "", ScriptedEnd::description());
    EXPECT_EQ(document(),
              documentOf(1, "<dialog id=\"1002\" call-id=\"ID\" local-tag=\"TAG\" remote-tag=\"TAG\" "
                            "direction=\"recipient\"><state>early</state><local><identity>sip:4711@PHONE</identity>"
                            "<target uri=\"sip:4711@PHONE\"/></local><remote><identity>sip:far@FAR</identity>"
                            "<target uri=\"sip:far@FAR\"/></remote></dialog>"));
}

TEST_F(PublishedDialogs, CallOfASharedPrivateLine_HasItsAppearanceAndIsExclusive)
{
    start(true);
    (void)document();

    ASSERT_TRUE(phone_->engine().outgoing().make(1, 2, 1, far_.uri()));

    EXPECT_EQ(
        document(),
        documentOf(1,
                   "<dialog id=\"1\" call-id=\"ID\" direction=\"initiator\"><state>trying</state><local><identity>"
                   "sip:4711@PHONE</identity><target uri=\"sip:4711@PHONE\"/></local><remote><identity>"
                   "sip:far@FAR</identity></remote><sa:appearance>2</sa:appearance><sa:exclusive>true"
                   "</sa:exclusive></dialog>",
                   " xmlns:sa=\"urn:ietf:params:xml:ns:sa-dialog-info\""));
    EXPECT_EQ(headerOf(far_.receive("INVITE"), "Alert-Info"), "<urn:alert:service:normal>;appearance=2");
    ASSERT_TRUE(phone_->engine().clear(1));
    ASSERT_TRUE(phone_->engine().outgoing().make(1, 0, 2, far_.uri()));
    EXPECT_EQ(headerOf(far_.receive("INVITE"), "Alert-Info"), "");
}

}  // namespace telephone::test
