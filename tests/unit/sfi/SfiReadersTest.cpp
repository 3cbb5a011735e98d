// The free readers of the SIP configuration: the keys of each forwarding rule, and the values of the configuration.
#include "telephone/sfi/SfiReaders.h"

#include "platform/sfi/SfiConfiguration.h"
#include "tests/unit/management/StoreFixture.h"

namespace telephone {
namespace {

struct Rule
{
    char const* activation;
    char const* address;
    int (*enabled)();
    void (*uri)(std::string&);
};

constexpr Rule kRules[] = {
    {"cfu-activated", "cfu-address", sfiGetForwardUnconditionalEnable, sfiGetForwardUnconditionalUri},
    {"cfu-ext-activated", "cfu-ext-address", sfiGetForwardUnconditionalExtEnable, sfiGetForwardUnconditionalExtUri},
    {"cfu-int-activated", "cfu-int-address", sfiGetForwardUnconditionalIntEnable, sfiGetForwardUnconditionalIntUri},
    {"cfb-activated", "cfb-address", sfiGetForwardBusyEnable, sfiGetForwardBusyUri},
    {"cfb-ext-activated", "cfb-ext-address", sfiGetForwardBusyExtEnable, sfiGetForwardBusyExtUri},
    {"cfb-int-activated", "cfb-int-address", sfiGetForwardBusyIntEnable, sfiGetForwardBusyIntUri},
    {"cfnr-activated", "cfnr-address", sfiGetForwardNoReplyEnable, sfiGetForwardNoReplyUri},
    {"cfnr-ext-activated", "cfnr-ext-address", sfiGetForwardNoReplyExtEnable, sfiGetForwardNoReplyExtUri},
    {"cfnr-int-activated", "cfnr-int-address", sfiGetForwardNoReplyIntEnable, sfiGetForwardNoReplyIntUri},
};

std::string uriOf(void (*reader)(std::string&))
{
    std::string uri = "left over";
    reader(uri);
    return uri;
}

void PrintTo(Rule const& rule, std::ostream* out)
{
    *out << rule.activation;
}

class ForwardingReaders : public StoreFixture, public testing::WithParamInterface<Rule>
{};

TEST_P(ForwardingReaders, ReadTheKeysOfTheirRuleAndNoOthers)
{
    auto const settings = open("");
    Configuration const configuration = Configuration::standard();
    LineTable const lines(configuration);
    SfiReaders const readers(*settings, configuration, lines);

    EXPECT_TRUE(settings->set(GetParam().activation, "true"));
    EXPECT_TRUE(settings->set(GetParam().address, "102"));

    for (auto const& rule : kRules) {
        bool const own = rule.enabled == GetParam().enabled;
        EXPECT_EQ(rule.enabled(), own ? 1 : 0) << rule.activation;
        EXPECT_EQ(uriOf(rule.uri), own ? "102" : "") << rule.address;
    }
}

INSTANTIATE_TEST_SUITE_P(SfiReaders, ForwardingReaders, testing::ValuesIn(kRules), [](auto const& row) {
    std::string name(row.param.activation);
    std::erase(name, '-');
    return name;
});

class SfiReadersTest : public StoreFixture
{
protected:
    std::unique_ptr<Settings> const settings = open("");
    Configuration configuration = Configuration::standard();

    static std::string registrationId(unsigned char registration)
    {
        std::string id = "left over";
        sfiGetRegistrationId(registration, id);
        return id;
    }
};

TEST_F(SfiReadersTest, NoReplyDelay_IsInForceWhenSet)
{
    LineTable const lines(configuration);
    SfiReaders const readers(*settings, configuration, lines);
    EXPECT_EQ(sfiGetForwardNoReplyTime(), 3);

    EXPECT_TRUE(settings->set("cfnr-delay", "5"));

    EXPECT_EQ(sfiGetForwardNoReplyTime(), 5);
}

TEST_F(SfiReadersTest, ServerValues_ComeFromTheConfiguration)
{
    configuration.server.type = 2;
    configuration.server.serverFeatures = true;
    configuration.server.forwardingPrivacy = true;
    configuration.server.groupPickup = "*8";
    configuration.server.directedPickup = "**";
    configuration.server.voiceMail = "500";
    Settings const fromFile(ConfigurationStore::open({}).value(), configuration);

    LineTable const lines(configuration);
    SfiReaders const readers(fromFile, configuration, lines);

    EXPECT_EQ(sfiGetServerType(), 2);
    EXPECT_TRUE(sfiGetServerBasedFeaturesEnabled());
    EXPECT_EQ(sfiGetCFPrivacyMode(), 1);
    EXPECT_TRUE(sfiBuiltInForwardingEnabled());
    EXPECT_EQ(uriOf(sfiGetCPUAddr), "*8");
    EXPECT_EQ(uriOf(sfiGetDirectedPickupUri), "**");
    EXPECT_EQ(uriOf(sfiGetVoiceMailDialURI), "500");
}

TEST_F(SfiReadersTest, CurrentPhoneNumber_IsThePrimaryLine)
{
    configuration.lines[0].primary = false;
    configuration.lines[1].primary = true;

    LineTable const lines(configuration);
    SfiReaders const readers(*settings, configuration, lines);

    EXPECT_EQ(uriOf(sfiGetCurrentPhoneNumber), "4712");
}

TEST_F(SfiReadersTest, Registrations_AreCountedOverTheLinesThatRegister)
{
    configuration.lines[0].registers = false;

    LineTable const lines(configuration);
    SfiReaders const readers(*settings, configuration, lines);

    EXPECT_EQ(registrationId(0), "4712");
    EXPECT_EQ(registrationId(1), "");
    EXPECT_EQ(registrationId(255), "");
}

TEST(SfiReadersAlone, WithoutSettings_ReadAsATelephoneWithoutAny)
{
    EXPECT_EQ(sfiGetForwardBusyEnable(), 0);
    EXPECT_EQ(uriOf(sfiGetForwardBusyUri), "");
    EXPECT_EQ(sfiGetForwardNoReplyTime(), 0);
    EXPECT_EQ(sfiGetServerType(), 0);
    EXPECT_FALSE(sfiGetServerBasedFeaturesEnabled());
    EXPECT_EQ(uriOf(sfiGetCurrentPhoneNumber), "");
    EXPECT_EQ(uriOf(sfiGetVoiceMailDialURI), "");
}

}  // namespace
}  // namespace telephone
