// One user agent subscribes to the dialogs of another.
#include "telephone/sip/DialogSubscription.h"

#include "LoopFixture.h"
#include "telephone/sip/UserAgent.h"

namespace telephone::sip {
namespace {

// Keeps the subscriptions that it is asked for.
class Watched final : public UserAgentObserver
{
public:
    void onSubscribe(std::unique_ptr<Notifier> notifier) override { notifiers.push_back(std::move(notifier)); }

    std::vector<std::unique_ptr<Notifier>> notifiers;
};

DialogEntry entryOf(std::string const& id, DialogState state)
{
    DialogEntry entry;
    entry.id = id;
    entry.state = state;
    return entry;
}

std::string documentOf(std::uint32_t version, bool full, DialogEntry const& entry)
{
    DialogInfo info;
    info.version = version;
    info.full = full;
    info.dialogs = {entry};
    return info.format();
}

class DialogSubscriptionTest : public LoopFixture
{
protected:
    DialogSubscription::Changed const changed_ = [this](std::vector<DialogEntry> const& dialogs) {
        ++changes_;
        dialogs_ = dialogs;
    };
    DialogSubscription::Ended const ended_ = [this](int status, std::string const& reason) {
        end_ = std::to_string(status) + " " + reason;
        subscription_.reset();
    };

    ~DialogSubscriptionTest() override
    {
        std::lock_guard const guard(loop);
        subscription_.reset();
        watched_.notifiers.clear();
    }

    static UserAgentConfig logging(std::vector<std::string>& log)
    {
        UserAgentConfig config;
        config.log = [&log](LogLevel, std::string const& line) { log.push_back(line); };
        return config;
    }

    Account account() const
    {
        Account account;
        account.user = "4711";
        account.domain = watcherAgent_.hostPort();
        return account;
    }

    std::string target() const { return "sip:103@" + watchedAgent_.hostPort(); }

    void subscribe(std::uint32_t expires = 3600)
    {
        auto started = DialogSubscription::start(watcherAgent_, account(), target(), changed_, ended_, expires);
        ASSERT_TRUE(started) << started.error().reason;
        subscription_ = std::move(*started);
        ASSERT_TRUE(eventually([this] { return watched_.notifiers.size() == 1; }));
    }

    void accept()
    {
        std::lock_guard const guard(loop);
        ASSERT_TRUE(watched_.notifiers.at(0)->accept(kDialogInfoType));
    }

    void notify(std::string const& body, SubscriptionState state = SubscriptionState::kActive)
    {
        watched_.notifiers.at(0)->notify(body, state, "timeout");
    }

    Watched watched_;
    UserAgentObserver watcher_;
    std::vector<std::string> log_;
    UserAgent watchedAgent_{loop, {}, watched_};
    UserAgent watcherAgent_{loop, logging(log_), watcher_};
    std::unique_ptr<DialogSubscription> subscription_;
    int changes_ = 0;
    std::vector<DialogEntry> dialogs_;
    std::string end_;
};

TEST_F(DialogSubscriptionTest, Documents_AreMerged)
{
    subscribe();
    EXPECT_EQ(watched_.notifiers.at(0)->event(), "dialog");
    EXPECT_EQ(watched_.notifiers.at(0)->headers().value("Accept"), kDialogInfoType);
    accept();

    notify(documentOf(1, true, entryOf("a", DialogState::kConfirmed)));
    notify(documentOf(2, false, entryOf("b", DialogState::kEarly)));

    ASSERT_TRUE(eventually([this] { return changes_ == 2; }));
    ASSERT_EQ(dialogs_.size(), 2U);
    EXPECT_EQ(dialogs_[0].id, "a");
    EXPECT_EQ(dialogs_[1].id, "b");
    std::lock_guard const guard(loop);
    EXPECT_EQ(subscription_->dialogs().size(), 2U);
}

TEST_F(DialogSubscriptionTest, UnusableDocuments_AreOnlyLogged)
{
    subscribe();
    accept();
    notify(documentOf(5, true, entryOf("a", DialogState::kConfirmed)));
    ASSERT_TRUE(eventually([this] { return changes_ == 1; }));

    notify("");
    notify("<presence/>");
    // The stack sends only the latest of the documents that wait for the answer to a NOTIFY.
    ASSERT_TRUE(eventually([this] { return log_.size() == 1; }));
    notify(documentOf(5, true, entryOf("b", DialogState::kConfirmed)));

    ASSERT_TRUE(eventually([this] { return log_.size() == 2; }));
    EXPECT_EQ(log_[0], "Dialogs of " + target() + ": a malformed document is ignored");
    EXPECT_EQ(log_[1], "Dialogs of " + target() + ": an outdated document is ignored");
    EXPECT_EQ(changes_, 1);
}

TEST_F(DialogSubscriptionTest, Refresh_IsAnsweredWithThePresentState)
{
    subscribe(3);  // refreshed after 2.7 seconds
    accept();
    watched_.notifiers.at(0)->onRefreshed([] { return documentOf(2, true, entryOf("b", DialogState::kEarly)); });
    notify(documentOf(1, true, entryOf("a", DialogState::kConfirmed)));
    ASSERT_TRUE(eventually([this] { return changes_ == 1; }));

    ASSERT_TRUE(eventually([this] { return changes_ == 2; }));
    ASSERT_EQ(dialogs_.size(), 1U);
    EXPECT_EQ(dialogs_[0].id, "b");
    EXPECT_TRUE(log_.empty());
    EXPECT_EQ(end_, "");
}

TEST_F(DialogSubscriptionTest, RefusedSubscription_EndsWithItsStatus)
{
    subscribe();

    watched_.notifiers.at(0)->reject(403, "Forbidden");

    EXPECT_TRUE(eventually([this] { return end_ == "403 Forbidden"; })) << end_;
    EXPECT_EQ(subscription_, nullptr);
}

TEST_F(DialogSubscriptionTest, NotifierThatEndsTheSubscription_IsReportedWithItsReason)
{
    subscribe();
    accept();

    notify("", SubscriptionState::kTerminated);

    EXPECT_TRUE(eventually([this] { return end_ == "200 timeout"; })) << end_;
}

TEST_F(DialogSubscriptionTest, DestroyedSubscription_UnsubscribesWithoutACallback)
{
    subscribe();
    accept();
    notify(documentOf(1, true, entryOf("a", DialogState::kConfirmed)));
    ASSERT_TRUE(eventually([this] { return changes_ == 1; }));

    {
        std::lock_guard const guard(loop);
        subscription_.reset();
    }

    EXPECT_TRUE(eventually([this] { return !watched_.notifiers.at(0)->isActive(); }));
    EXPECT_EQ(end_, "");
}

TEST_F(DialogSubscriptionTest, MalformedTarget_IsRefused)
{
    auto const started = DialogSubscription::start(watcherAgent_, account(), "somebody", changed_, ended_);

    ASSERT_FALSE(started);
    EXPECT_EQ(started.error(), (Refusal{RefusalKind::kBadInput, "\"somebody\" is not a SIP URI"}));
}

}  // namespace
}  // namespace telephone::sip
