#include "SipFixture.h"
#include "telephone/sip/DialogInfo.h"

namespace telephone::test {

// Seconds. The stack refreshes a subscription after nine tenths of its time.
constexpr std::uint32_t kShortSubscription = 3;

class EventPackages : public ExchangeTest
{
protected:
    sip::DialogInfo lastDialogs(SipPeer const& phone)
    {
        std::lock_guard guard(loop);
        if (phone.notifications.empty()) {
            return {};
        }
        return sip::DialogInfo::parse(phone.notifications.back().content.body).value_or(sip::DialogInfo{});
    }
    bool hasOneDialog(SipPeer const& phone, sip::DialogState state)
    {
        auto const info = lastDialogs(phone);
        return info.dialogs.size() == 1 && info.dialogs[0].state == state;
    }
};

TEST_F(EventPackages, MessageSummary_IsToldAtOnceAndAtEachChange)
{
    SipPeer phone(loop);

    phone.subscribe(at("4711"), "message-summary", "application/simple-message-summary");
    phone.registerAt(exchange.hostPort());
    ASSERT_TRUE(phone.waitFor("registered 3600"));
    EXPECT_FALSE(phone.waitFor("notify message-summary", 0ms)) << "nobody has that number yet";
    ASSERT_TRUE(exchange.setMessages("4711", {1, 2, 0, 0}));
    phone.subscribe(at("4711"), "message-summary", "application/simple-message-summary");

    ASSERT_TRUE(phone.waitFor("notify message-summary")) << phone.events();
    EXPECT_EQ("Messages-Waiting: yes\r\nMessage-Account: sip:4711@" + exchange.hostPort() +
                  "\r\nVoice-Message: 1/2 (0/0)\r\n",
              phone.notifications.back().content.body);
    ASSERT_TRUE(exchange.setMessages("4711", {0, 3, 0, 1}));
    ASSERT_TRUE(phone.waitFor("notify message-summary")) << phone.events();
    auto const summary = sip::MessageSummary::parse(phone.notifications.back().content.body);
    ASSERT_TRUE(summary);
    EXPECT_FALSE(summary->waiting);
    EXPECT_EQ((sip::MessageCounts{0, 3, 0, 1}), summary->voice);
}

TEST_F(EventPackages, UnsolicitedMessageSummary_ReachesTheRegisteredTelephone)
{
    SipPeer phone(loop);
    phone.registerAt(exchange.hostPort());
    ASSERT_TRUE(phone.waitFor("registered 3600"));

    ASSERT_TRUE(exchange.setMessages("4711", {5, 0, 0, 0}, true));

    EXPECT_TRUE(phone.waitFor("unsolicited message-summary")) << phone.events();
    EXPECT_TRUE(sip::MessageSummary::parse(phone.notifications.back().content.body)->waiting);
}

TEST_F(EventPackages, MessagesOfANumberThatNeverRegistered_AreRefused)
{
    auto const set = exchange.setMessages("4711", {1, 0, 0, 0});

    ASSERT_FALSE(set);
    EXPECT_EQ((Refusal{RefusalKind::kNotFound, "4711 has not registered with the exchange"}), set.error());
}

TEST_F(EventPackages, MessagesOfAMalformedNumber_AreRefused)
{
    auto const set = exchange.setMessages("47 11", {1, 0, 0, 0});

    ASSERT_FALSE(set);
    EXPECT_EQ((Refusal{RefusalKind::kBadInput, "the number must consist of 1 to 64 letters, digits, and + - . _ * #"}),
              set.error());
}

TEST_F(EventPackages, MessageCounts_AreAtMost9999)
{
    SipPeer phone(loop);
    phone.registerAt(exchange.hostPort());
    ASSERT_TRUE(phone.waitFor("registered 3600"));

    auto const tooMany = exchange.setMessages("4711", {9999, 10000, 0, 0}, true);
    EXPECT_TRUE(exchange.setMessages("4711", {9999, 9998, 0, 0}, true));

    ASSERT_FALSE(tooMany);
    EXPECT_EQ((Refusal{RefusalKind::kBadInput, "the number of messages must be 0 to 9999"}), tooMany.error());
    ASSERT_TRUE(phone.waitFor("unsolicited message-summary")) << phone.events();
    EXPECT_EQ("Messages-Waiting: yes\r\nMessage-Account: sip:4711@" + exchange.hostPort() +
                  "\r\nVoice-Message: 9999/9998 (0/0)\r\n",
              phone.notifications.front().content.body);
}

TEST_F(EventPackages, EndOfASubscription_IsSeenByTheExchange)
{
    SipPeer phone(loop);
    phone.subscribe(at("102"), "dialog", "application/dialog-info+xml");
    ASSERT_TRUE(phone.waitFor("notify dialog")) << phone.events();
    EXPECT_EQ(1U, exchange.watcherCount("102", "dialog"));

    phone.subscription.reset();

    EXPECT_TRUE(phone.waitUntil([this] { return exchange.watcherCount("102", "dialog") == 0; }));
}

TEST_F(EventPackages, Refresh_BringsADocumentWithTheNextVersion)
{
    SipPeer phone(loop);

    phone.subscribe(at("102"), "dialog", "application/dialog-info+xml", kShortSubscription);
    ASSERT_TRUE(phone.waitFor("notify dialog")) << phone.events();
    EXPECT_EQ(0U, lastDialogs(phone).version);

    ASSERT_TRUE(phone.waitFor("notify dialog")) << phone.events();
    EXPECT_EQ(1U, lastDialogs(phone).version);
    EXPECT_EQ(1U, exchange.watcherCount("102", "dialog"));
}

TEST_F(EventPackages, UnknownPackageOrNumber_IsRefused)
{
    SipPeer phone(loop);

    phone.subscribe(at("102"), "weather", "text/plain");
    EXPECT_TRUE(phone.waitFor("terminated 489 Bad Event")) << phone.events();
    phone.subscribe(at("555"), "dialog", "application/dialog-info+xml");
    EXPECT_TRUE(phone.waitFor("terminated 404 Not Found")) << phone.events();
}

TEST_F(EventPackages, DialogsOfANumber_FollowItsCalls)
{
    SipPeer watcher(loop, "4711");
    SipPeer caller(loop, "4712");
    watcher.subscribe(at("102"), "dialog", "application/dialog-info+xml");
    ASSERT_TRUE(watcher.waitFor("notify dialog"));
    EXPECT_TRUE(lastDialogs(watcher).dialogs.empty());

    sip::Session& call = caller.call(at("102"));
    ASSERT_TRUE(caller.waitFor("progress 180")) << caller.events();

    EXPECT_TRUE(watcher.waitUntil([&] { return hasOneDialog(watcher, sip::DialogState::kEarly); }));
    sip::DialogEntry const entry = lastDialogs(watcher).dialogs.at(0);
    EXPECT_TRUE(entry.recipient);
    EXPECT_TRUE(entry.dialog.matches(call.dialogId().replaces()));
    EXPECT_EQ("sip:4712@" + caller.agent->hostPort(), entry.remote.target);
    EXPECT_EQ("sip:102@" + exchange.hostPort(), entry.local.identity);
    call.hangUp();
    EXPECT_TRUE(watcher.waitUntil([&] { return hasOneDialog(watcher, sip::DialogState::kTerminated); }));
}

TEST_F(EventPackages, RingingDialog_CanBePickedUpByReplaces)
{
    SipPeer watcher(loop, "4711");
    SipPeer caller(loop, "4712");
    watcher.subscribe(at("102"), "dialog", "application/dialog-info+xml");
    caller.call(at("102"));
    ASSERT_TRUE(watcher.waitUntil([&] { return hasOneDialog(watcher, sip::DialogState::kEarly); }));
    sip::DialogId const ringing = lastDialogs(watcher).dialogs.at(0).dialog;

    watcher.call(at("102"), [&ringing](sip::CallRequest& request) {
        request.replaces = sip::Replaces{ringing.callId, ringing.localTag, ringing.remoteTag, true};
    });

    EXPECT_TRUE(watcher.waitFor("established")) << watcher.events();
    EXPECT_TRUE(caller.waitFor("established")) << caller.events();
}

TEST_F(EventPackages, BusyNumber_ShowsACallUntilItIsFree)
{
    SipPeer watcher(loop);

    watcher.subscribe(at("101"), "dialog", "application/dialog-info+xml");
    EXPECT_TRUE(watcher.waitUntil([&] { return hasOneDialog(watcher, sip::DialogState::kConfirmed); }));
    ASSERT_TRUE(exchange.define("101", "ring, answer"));

    EXPECT_TRUE(
        watcher.waitUntil([&] { return watcher.notifications.size() >= 2 && lastDialogs(watcher).dialogs.empty(); }));
}

TEST_F(EventPackages, DialogsOfARegisteredNumber_ComeFromItsTelephone)
{
    SipPeer watcher(loop, "4711");
    SipPeer watched(loop, "4712");
    watched.registerAt(exchange.hostPort());
    ASSERT_TRUE(watched.waitFor("registered 3600"));

    watcher.subscribe(at("4712"), "dialog", "application/dialog-info+xml");
    ASSERT_TRUE(watched.waitFor("subscribe")) << watched.events();
    sip::DialogInfo told;
    sip::DialogEntry entry;
    entry.id = "7";
    entry.state = sip::DialogState::kConfirmed;
    told.dialogs.push_back(entry);
    {
        std::lock_guard guard(loop);
        sip::Notifier& notifier = *watched.notifiers.at(0);
        EXPECT_TRUE(notifier.accept(sip::kDialogInfoType));
        notifier.notify(told.format());
    }

    EXPECT_TRUE(watcher.waitUntil([&] { return hasOneDialog(watcher, sip::DialogState::kConfirmed); }));
    EXPECT_EQ("sip:4712@" + exchange.hostPort(), lastDialogs(watcher).entity);
    watcher.subscription.reset();
    EXPECT_TRUE(watcher.waitUntil([&] { return !watched.notifiers.at(0)->isActive(); }));
}

TEST_F(EventPackages, PickUpOfARegisteredTelephone_ReplacesTheCallersCall)
{
    SipPeer caller(loop, "4711");
    SipPeer rings(loop, "4712");
    SipPeer picker(loop, "4713");
    rings.whenCalled = [](SipPeer&, sip::Session& session) { EXPECT_TRUE(session.ring()); };
    rings.registerAt(exchange.hostPort());
    ASSERT_TRUE(rings.waitFor("registered 3600"));
    caller.call(at("4712"));
    ASSERT_TRUE(caller.waitFor("progress 180")) << caller.events();

    picker.call(at("*974712"));
    ASSERT_TRUE(rings.waitFor("subscribe")) << rings.events();
    sip::DialogInfo told;
    sip::DialogEntry entry;
    entry.id = "1";
    entry.recipient = true;
    entry.state = sip::DialogState::kEarly;
    {
        std::lock_guard guard(loop);
        entry.dialog = rings.session().dialogId();
        entry.remote.target = rings.session().remoteContact();
        told.dialogs.push_back(entry);
        EXPECT_TRUE(rings.notifiers.at(0)->accept(sip::kDialogInfoType));
        rings.notifiers.at(0)->notify(told.format());
    }

    ASSERT_TRUE(caller.waitFor("called")) << caller.events();
    auto const replaces = caller.lastInvitation.replaces;
    ASSERT_TRUE(replaces);
    EXPECT_TRUE(caller.session(0).dialogId().matches(*replaces));
    EXPECT_TRUE(replaces->earlyOnly);
    EXPECT_TRUE(picker.waitFor("established")) << picker.events();
}

}  // namespace telephone::test
