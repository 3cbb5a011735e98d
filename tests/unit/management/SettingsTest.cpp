// Values by key: reading, refusals with their reasons, and listeners to changes.
#include "telephone/management/Settings.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "StoreFixture.h"
#include "platform/management/ManageableData.h"

namespace telephone {
namespace {

using Keys = std::vector<std::string>;
using Items = std::vector<Settings::Item>;

class SettingsTest : public StoreFixture
{
protected:
    std::unique_ptr<Settings> const settings = open("");
};

TEST_F(SettingsTest, UntouchedStore_GivesStandardValues)
{
    EXPECT_FALSE(settings->flag("cfu-activated"));
    EXPECT_EQ(settings->text("cfu-address"), "");
    EXPECT_EQ(settings->number("cfnr-delay"), 3);
    EXPECT_TRUE(settings->flag("call-dnd-enabled"));
    EXPECT_TRUE(settings->flag("agent-feature-enabled"));
    EXPECT_EQ(settings->text("agent-state"), "loggedOff");
    EXPECT_EQ(settings->text("no-such-key"), "");
}

TEST(SettingsStandards, ComeFromTheConfiguration)
{
    auto configuration = Configuration::standard();
    configuration.server.serverFeatures = true;
    configuration.server.type = 7;
    configuration.server.forwardingPrivacy = true;
    configuration.calls.dialRestriction = 4;

    Settings const settings(ConfigurationStore::open({}).value(), configuration);

    EXPECT_TRUE(settings.flag("server-based-features"));
    EXPECT_EQ(settings.number("server-type"), 7);
    EXPECT_TRUE(settings.flag("forwarding-privacy"));
    EXPECT_EQ(settings.number("dial-restriction-mode"), 4);
}

TEST(SettingsStandards, OfTheConfigurationAsItIs_AreListedInWords)
{
    Settings const settings(ConfigurationStore::open({}).value(), Configuration::standard());

    auto const items = settings.all();

    EXPECT_NE(std::find(items.begin(), items.end(), Settings::Item("server-based-features", "false")), items.end());
    EXPECT_NE(std::find(items.begin(), items.end(), Settings::Item("forwarding-privacy", "false")), items.end());
    EXPECT_NE(std::find(items.begin(), items.end(), Settings::Item("server-type", "0")), items.end());
}

TEST_F(SettingsTest, SetValue_IsInForceWhenSetReturns)
{
    EXPECT_TRUE(settings->set("cfb-address", "102"));
    EXPECT_TRUE(settings->set("cfb-activated", "true"));
    EXPECT_TRUE(settings->set("cfnr-delay", "007"));

    EXPECT_EQ(settings->text("cfb-address"), "102");
    EXPECT_TRUE(settings->flag("cfb-activated"));
    EXPECT_EQ(settings->text("cfnr-delay"), "7");
}

TEST_F(SettingsTest, AcceptedSettings_AreInTheStore)
{
    EXPECT_TRUE(settings->set("cfb-address", "102"));
    settings->setStoreFull(true);
    EXPECT_FALSE(settings->set("cfb-activated", "true"));

    EXPECT_EQ(settings->missingInStore().value(), Items());
}

TEST_F(SettingsTest, SettingThatAnotherProgramRemoved_IsMissingUntilItIsNoticed)
{
    auto const own = open(storePath());
    EXPECT_TRUE(own->set("cfb-address", "102"));
    auto const other = ConfigurationStore::open(storePath()).value();
    ASSERT_TRUE(other->write({{"cfb-address", std::nullopt}}));

    EXPECT_EQ(own->missingInStore().value(), (Items{{"cfb-address", "102"}}));

    own->refresh();
    EXPECT_EQ(own->missingInStore().value(), Items());
}

TEST_F(SettingsTest, LongestValue_IsAccepted)
{
    EXPECT_TRUE(settings->set("cfu-address", std::string(4096, 'x')));
    EXPECT_EQ(settings->text("cfu-address").size(), 4096U);
}

struct Refused
{
    char const* name;
    std::string key;
    std::string value;
    RefusalKind kind;
    std::string reason;
};

class RefusedSetting : public SettingsTest, public testing::WithParamInterface<Refused>
{};

TEST_P(RefusedSetting, IsNamedWithTheReason_AndChangesNothing)
{
    auto const before = settings->all();

    auto const outcome = settings->set(GetParam().key, GetParam().value);

    EXPECT_EQ(outcome.error().kind, GetParam().kind);
    EXPECT_EQ(outcome.error().reason, GetParam().reason);
    EXPECT_EQ(settings->all(), before);
}

INSTANTIATE_TEST_SUITE_P(
    Settings, RefusedSetting,
    testing::Values(
        Refused{"UnknownKey", "cfu-activate", "true", RefusalKind::kNotFound,
                "there is no setting \"cfu-activate\"; the nearest is \"cfu-activated\""},
        Refused{"EmptyKey", "", "true", RefusalKind::kNotFound, "there is no setting \"\"; the nearest is \"line/*\""},
        Refused{"FamilyItself", "line/", "x", RefusalKind::kNotFound,
                "there is no setting \"line/\"; the nearest is \"line/*\""},
        Refused{"TextForFlag", "cfu-activated", "yes", RefusalKind::kBadInput,
                "\"cfu-activated\" takes true or false, not \"yes\""},
        Refused{"CapitalFlag", "cfu-activated", "True", RefusalKind::kBadInput,
                "\"cfu-activated\" takes true or false, not \"True\""},
        Refused{"TextForNumber", "cfnr-delay", "soon", RefusalKind::kBadInput,
                "\"cfnr-delay\" takes a number from 0 to 99, not \"soon\""},
        Refused{"HalfANumber", "cfnr-delay", "3s", RefusalKind::kBadInput,
                "\"cfnr-delay\" takes a number from 0 to 99, not \"3s\""},
        Refused{"EmptyNumber", "cfnr-delay", "", RefusalKind::kBadInput,
                "\"cfnr-delay\" takes a number from 0 to 99, not \"\""},
        Refused{"NegativeNumber", "cfnr-delay", "-1", RefusalKind::kBadInput,
                "\"cfnr-delay\" takes a number from 0 to 99, not \"-1\""},
        Refused{"HugeNumber", "cfnr-delay", "99999999999999999999", RefusalKind::kBadInput,
                "\"cfnr-delay\" takes a number from 0 to 99, not \"99999999999999999999\""},
        Refused{
            "UnknownAgentState", "agent-state", "LoggedOn", RefusalKind::kBadInput,
            "\"agent-state\" takes one of loggedOn, loggedOff, notReady, ready, workingAfterCall, not \"LoggedOn\""},
        Refused{"TooLong", "cfu-address", std::string(4097, 'x'), RefusalKind::kBadInput,
                "\"cfu-address\" takes a text of at most 4096 bytes without a NUL, not "
                "\"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx...\""},
        Refused{"Nul", "cfu-address", std::string("a\0b", 3), RefusalKind::kBadInput,
                "\"cfu-address\" takes a text of at most 4096 bytes without a NUL, not \"a?b\""},
        Refused{"ReadOnly", "server-type", "2", RefusalKind::kNotPermitted, "\"server-type\" is read-only"},
        Refused{"ReadOnlyWithItsOwnValue", "server-type", "0", RefusalKind::kNotPermitted,
                "\"server-type\" is read-only"}),
    [](auto const& row) { return row.param.name; });

TEST_F(SettingsTest, Numbers_AreAcceptedUpToTheirLimits)
{
    EXPECT_TRUE(settings->set("cfnr-delay", "0"));
    EXPECT_TRUE(settings->set("cfnr-delay", "99"));
    EXPECT_FALSE(settings->set("cfnr-delay", "100"));
    EXPECT_TRUE(settings->set("dial-restriction-mode", "4"));
    EXPECT_FALSE(settings->set("dial-restriction-mode", "5"));
    EXPECT_EQ(settings->number("cfnr-delay"), 99);
}

TEST_F(SettingsTest, RefusedValue_IsShownWithAtMostFortyCharactersAndNoControlCharacter)
{
    auto const shown = [this](std::string const& value) {
        std::string const reason = settings->set("cfu-activated", value).error().reason;
        return reason.substr(std::string("\"cfu-activated\" takes true or false, not ").size());
    };
    EXPECT_EQ(shown(std::string(40, 'x')), "\"" + std::string(40, 'x') + "\"");
    EXPECT_EQ(shown(std::string(41, 'x')), "\"" + std::string(40, 'x') + "...\"");
    EXPECT_EQ(shown("a\x1f \x7f~b"), "\"a? ?~b\"");
}

TEST_F(SettingsTest, KeyOfAFamily_HasAtMost256BytesAndNoNul)
{
    EXPECT_TRUE(settings->set("line/" + std::string(251, 'x'), "1"));
    EXPECT_EQ(settings->set("line/" + std::string(252, 'x'), "1").error().kind, RefusalKind::kNotFound);
    EXPECT_EQ(settings->set(std::string("line/\0x", 7), "1").error().kind, RefusalKind::kNotFound);
}

TEST_F(SettingsTest, HugeBinaryKey_IsRefused)
{
    EXPECT_EQ(settings->set(std::string(1024 * 1024, '\xff'), "1").error().kind, RefusalKind::kNotFound);
    EXPECT_EQ(settings->set("line/" + std::string(300, 'x'), "1").error().kind, RefusalKind::kNotFound);
}

TEST_F(SettingsTest, OneRefusedItem_RefusesAllItems)
{
    auto const outcome = settings->setAll({{"cfu-address", "100"}, {"cfu-activated", "maybe"}});

    EXPECT_EQ(outcome.error().reason, "\"cfu-activated\" takes true or false, not \"maybe\"");
    EXPECT_EQ(settings->text("cfu-address"), "");
}

TEST_F(SettingsTest, KeyTwiceInOneWrite_TakesTheLastValue)
{
    EXPECT_TRUE(settings->setAll({{"cfu-address", "100"}, {"cfu-address", "101"}}));

    EXPECT_EQ(settings->text("cfu-address"), "101");
}

TEST_F(SettingsTest, Families_ContainEveryKeyWithTheirPrefix)
{
    EXPECT_TRUE(settings->set("agent-cockpit/queue", "support"));
    EXPECT_TRUE(settings->set("line/4712/cfu-address", "100"));
    EXPECT_TRUE(settings->set("line/4711/cfu-address", "101"));
    EXPECT_TRUE(settings->set("feature-toggle/11", "true"));

    EXPECT_EQ(settings->text("agent-cockpit/queue"), "support");
    EXPECT_TRUE(settings->flag("feature-toggle/11"));
    EXPECT_FALSE(settings->flag("feature-toggle/12"));
    EXPECT_EQ(allUnder("line/4712/", *settings), (std::vector<Settings::Item>{{"line/4712/cfu-address", "100"}}));
}

TEST_F(SettingsTest, Listener_ReceivesItsKeyAfterTheWrite)
{
    std::vector<std::string> heard;
    settings->listenToKey("cfu-address", [&](Keys const& keys) {
        for (auto const& key : keys) {
            heard.push_back(key + "=" + settings->text(key));
        }
    });

    EXPECT_TRUE(settings->set("cfb-address", "1"));
    EXPECT_TRUE(settings->set("cfu-address", "2"));
    EXPECT_TRUE(settings->set("cfu-address", "2"));

    EXPECT_EQ(heard, (Keys{"cfu-address=2"}));
}

TEST_F(SettingsTest, TagListener_ReceivesAllKeysOfOneWriteAtOnce)
{
    std::vector<Keys> heard;
    settings->listenToTag("forwarding", [&heard](Keys const& keys) { heard.push_back(keys); });

    EXPECT_TRUE(settings->setAll({{"cfu-activated", "true"}, {"call-dnd-activated", "true"}, {"cfu-address", "1"}}));

    ASSERT_EQ(heard.size(), 1U);
    EXPECT_EQ(heard[0], (Keys{"cfu-activated", "cfu-address"}));
}

TEST_F(SettingsTest, PrefixListener_ReceivesTheFamily)
{
    Keys heard;
    settings->listenToKey("agent-cockpit/", [&heard](Keys const& keys) { heard = keys; });

    EXPECT_TRUE(settings->set("agent-cockpit/queue", "x"));

    EXPECT_EQ(heard, (Keys{"agent-cockpit/queue"}));
}

TEST_F(SettingsTest, RefusedValue_ReachesNoListener)
{
    int heard = 0;
    settings->listenToTag("forwarding", [&heard](Keys const&) { ++heard; });

    EXPECT_FALSE(settings->setAll({{"cfu-address", "1"}, {"cfu-activated", "x"}}));

    EXPECT_EQ(heard, 0);
}

TEST_F(SettingsTest, Listener_MaySetAndReadAndLeave)
{
    Settings::ListenerId id = 0;
    id = settings->listenToKey("cfu-activated", [&](Keys const&) {
        EXPECT_TRUE(settings->set("cfu-address", "from the listener"));
        settings->endListening(id);
    });

    EXPECT_TRUE(settings->set("cfu-activated", "true"));
    EXPECT_TRUE(settings->set("cfu-activated", "false"));

    EXPECT_EQ(settings->text("cfu-address"), "from the listener");
}

TEST_F(SettingsTest, ListenerThatThrows_DoesNotAffectOthers)
{
    int heard = 0;
    settings->listenToKey("cfu-address", [](Keys const&) { throw std::runtime_error("broken"); });
    settings->listenToKey("cfu-address", [&heard](Keys const&) { ++heard; });

    EXPECT_TRUE(settings->set("cfu-address", "1"));

    EXPECT_EQ(heard, 1);
}

// A listener that waits for a lock which another setter holds: with a lock of the settings held this would never end.
TEST_F(SettingsTest, ListenerRuns_WithNoLockOfTheSettingsHeld)
{
    std::mutex phoneLock;
    settings->listenToKey("cfu-address", [&](Keys const&) { std::lock_guard const guard(phoneLock); });

    std::unique_lock guard(phoneLock);
    std::thread other([&] { EXPECT_TRUE(settings->set("cfu-address", "1")); });
    while (settings->text("cfu-address") != "1") {
        std::this_thread::yield();
    }
    EXPECT_TRUE(settings->set("cfb-address", "2"));
    guard.unlock();
    other.join();

    EXPECT_EQ(settings->text("cfb-address"), "2");
}

TEST_F(SettingsTest, EndListening_WaitsForARunningListener)
{
    std::mutex mutex;
    std::condition_variable entered;
    bool isIn = false;
    bool mayLeave = false;
    std::atomic<bool> left{false};
    auto const id = settings->listenToKey("cfu-address", [&](Keys const&) {
        std::unique_lock guard(mutex);
        isIn = true;
        entered.notify_all();
        entered.wait(guard, [&] { return mayLeave; });
        left = true;
    });
    std::thread setter([&] { EXPECT_TRUE(settings->set("cfu-address", "1")); });
    std::unique_lock guard(mutex);
    entered.wait(guard, [&] { return isIn; });
    std::thread releaser([&] {
        std::lock_guard const inner(mutex);
        mayLeave = true;
        entered.notify_all();
    });
    guard.unlock();

    settings->endListening(id);

    EXPECT_TRUE(left);
    setter.join();
    releaser.join();
}

TEST_F(SettingsTest, Reset_RestoresUserSettings_AndKeepsAdministratorSettings)
{
    EXPECT_TRUE(settings->setAll(
        {{"cfu-activated", "true"}, {"cfu-address", "1"}, {"call-dnd-enabled", "false"}, {"line/4712/dnd", "true"}}));
    Keys heard;
    settings->listenToTag("forwarding", [&heard](Keys const& keys) { heard = keys; });

    EXPECT_TRUE(settings->resetUserSettings());

    EXPECT_FALSE(settings->flag("cfu-activated"));
    EXPECT_EQ(settings->text("cfu-address"), "");
    EXPECT_TRUE(allUnder("line/", *settings).empty());
    EXPECT_FALSE(settings->flag("call-dnd-enabled"));
    EXPECT_EQ(heard, (Keys{"cfu-activated", "cfu-address"}));
}

TEST_F(SettingsTest, ManyThreads_SetAndReadAndListen)
{
    std::atomic<int> heard{0};
    settings->listenToTag("line", [&heard](Keys const& keys) { heard += static_cast<int>(keys.size()); });
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([this, thread] {
            for (int i = 0; i < 50; ++i) {
                auto const key = "line/" + std::to_string(thread) + "/" + std::to_string(i);
                EXPECT_TRUE(settings->set(key, "x"));
                EXPECT_EQ(settings->text(key), "x");
            }
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }

    EXPECT_EQ(heard, 200);
    EXPECT_EQ(allUnder("line/", *settings).size(), 200U);
}

}  // namespace
}  // namespace telephone
