#include "telephone/exchange/Registrar.h"

#include <gtest/gtest.h>

#include "FakeRegister.h"

namespace telephone::exchange {
namespace {

class RegistrarTest : public ::testing::Test
{
protected:
    ExchangeConfig config_;
    std::vector<std::string> changed_;

    Registrar makeRegistrar()
    {
        return Registrar(config_, [this](std::string const& number) { changed_.push_back(number); });
    }
};

TEST_F(RegistrarTest, RequestWithoutCredentials_IsChallenged)
{
    Registrar registrar = makeRegistrar();
    FakeRegister request("4711", {{"Contact", "<sip:4711@127.0.0.1:5080>"}});

    registrar.handle(request);

    EXPECT_EQ(request.replied, 401);
    EXPECT_EQ(request.replyHeaders.value("WWW-Authenticate").find("Digest realm=\"exchange\""), 0U);
    EXPECT_TRUE(registrar.contactsOf("4711").empty());
    EXPECT_TRUE(changed_.empty());
}

TEST_F(RegistrarTest, WrongResponse_IsForbidden)
{
    Registrar registrar = makeRegistrar();
    FakeRegister request("4711",
                         {{"Authorization", "Digest username=\"4711\", realm=\"exchange\", nonce=\"1.2\", "
                                            "uri=\"sip:127.0.0.1\", response=\"0123456789abcdef0123456789abcdef\""}});

    registrar.handle(request);

    EXPECT_EQ(request.replied, 403);
}

TEST_F(RegistrarTest, AddressWithoutUser_IsNotFound)
{
    Registrar registrar = makeRegistrar();
    FakeRegister request("", {});

    registrar.handle(request);

    EXPECT_EQ(request.replied, 404);
}

TEST_F(RegistrarTest, SwitchedOff_IgnoresRequestsUntilItIsOnAgain)
{
    Registrar registrar = makeRegistrar();
    FakeRegister first("4711", {{"Contact", "<sip:4711@127.0.0.1:5080>"}});
    FakeRegister second("4711", {{"Contact", "<sip:4711@127.0.0.1:5080>"}});

    registrar.setConduct({.kind = RegistrarConduct::Kind::kAway});
    registrar.handle(first);
    registrar.setConduct({});
    registrar.handle(second);

    EXPECT_TRUE(first.ignored);
    EXPECT_EQ(first.replied, 0);
    EXPECT_FALSE(second.ignored);
    EXPECT_EQ(second.replied, 401);
}

TEST_F(RegistrarTest, ToldToRefuse_RefusesWithThatStatus)
{
    Registrar registrar = makeRegistrar();
    FakeRegister request("4711", {{"Contact", "<sip:4711@127.0.0.1:5080>"}});

    registrar.setConduct({.kind = RegistrarConduct::Kind::kRefuse, .status = 403});
    registrar.handle(request);

    EXPECT_EQ(request.replied, 403);
    EXPECT_TRUE(registrar.contactsOf("4711").empty());
}

TEST_F(RegistrarTest, ToldToRedirect_NamesTheOtherRegistrar)
{
    Registrar registrar = makeRegistrar();
    FakeRegister request("4711", {{"Contact", "<sip:4711@127.0.0.1:5080>"}});

    registrar.setConduct({.kind = RegistrarConduct::Kind::kRedirect, .target = "sip:127.0.0.1:5099"});
    registrar.handle(request);

    EXPECT_EQ(request.replied, 302);
    EXPECT_EQ(request.replyHeaders.value("Contact"), "<sip:127.0.0.1:5099>");
}

std::string conductAgain(std::string const& text)
{
    auto const read = RegistrarConduct::read(text);
    return read ? read->format() : read.error().reason;
}

TEST(RegistrarConduct, EachForm_IsReadAndWritten)
{
    for (char const* const text : {"accept", "refuse 403", "redirect sip:127.0.0.1:5099", "away", "forget"}) {
        EXPECT_EQ(conductAgain(text), text);
    }
}

TEST(RegistrarConduct, WrongForms_AreRefusedWithWhatIsPossible)
{
    std::string const possible = "; the registrar can accept, refuse STATUS, redirect URI, go away or forget";

    EXPECT_EQ(conductAgain("sleep"), "\"sleep\" is not understood" + possible);
    EXPECT_EQ(conductAgain(""), "\"\" is not understood" + possible);
    EXPECT_EQ(conductAgain("away now"), "\"away now\" is not understood" + possible);
    EXPECT_EQ(conductAgain("refuse"), "\"refuse\" is not understood" + possible);
    EXPECT_EQ(conductAgain("refuse 200"), "\"200\" is not a status from 400 to 699");
    EXPECT_EQ(conductAgain("redirect 4711"), "\"4711\" is not a SIP URI" + possible);
}

TEST_F(RegistrarTest, ConfiguredNumber_IsKnownBeforeItRegisters)
{
    config_.users = {{"4711", "secret"}};
    Registrar const registrar = makeRegistrar();

    EXPECT_TRUE(registrar.knows("4711"));
    EXPECT_FALSE(registrar.knows("4712"));
    EXPECT_TRUE(registrar.registeredNumbers().empty());
}

}  // namespace
}  // namespace telephone::exchange
