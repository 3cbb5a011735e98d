// Which contacts a registrar keeps, and how it says so (RFC 3261 section 10.3).
#include <chrono>

#include <gtest/gtest.h>

#include "FakeRegister.h"
#include "telephone/exchange/Registrar.h"
#include "telephone/sip/Stack.h"
#include "telephone/time/VirtualTime.h"
#include "telephone/time/Waiting.h"

namespace telephone::exchange {
namespace {

std::string md5Of(std::string const& text)
{
    std::array<std::uint8_t, MD5_SIZE> sum{};
    md5(reinterpret_cast<std::uint8_t const*>(text.data()), text.size(), sum.data());
    std::string hex;
    for (std::uint8_t const byte : sum) {
        hex += "0123456789abcdef"[byte >> 4U];
        hex += "0123456789abcdef"[byte & 15U];
    }
    return hex;
}

class RegistrarBindingsTest : public testing::Test
{
protected:
    RegistrarBindingsTest()
    {
        config_.users = {{"4711", "secret"}};
        config_.longestExpires = 600;
        registrar_.emplace(config_, [this](std::string const& number) { changed_ += number + " "; });
    }

    // "200 OK", and its contacts: "<sip:a@h>;expires=60, <sip:b@h>;expires=60".
    std::string answerTo(sip::Headers headers, std::string const& callId = "call")
    {
        FakeRegister unknown("4711", headers);
        registrar_->handle(unknown);
        std::string const challenge = unknown.replyHeaders.value("WWW-Authenticate");
        auto const nonceAt = challenge.find("nonce=\"") + 7;
        std::string const nonce = challenge.substr(nonceAt, challenge.find('"', nonceAt) - nonceAt);
        headers.add("Authorization",
                    "Digest username=\"4711\", realm=\"exchange\", nonce=\"" + nonce +
                        "\", uri=\"sip:127.0.0.1\", response=\"" +
                        md5Of(md5Of("4711:exchange:secret") + ":" + nonce + ":" + md5Of("REGISTER:sip:127.0.0.1")) +
                        "\"");
        FakeRegister request("4711", headers, callId);
        registrar_->handle(request);
        reachedHere_ = request.reachedHere;
        std::string answer = std::to_string(request.replied) + " " + request.replyReason;
        for (auto const& contact : request.replyHeaders.values("Contact")) {
            answer += (answer.find('<') == std::string::npos ? ": " : ", ") + contact;
        }
        return answer;
    }

    static sip::Headers contact(std::string const& value, std::string const& cseq = "1 REGISTER")
    {
        return {{"Contact", value}, {"CSeq", cseq}};
    }

    VirtualTime const time_{{}};
    ExchangeConfig config_;
    std::optional<Registrar> registrar_;
    std::string changed_;
    std::string reachedHere_;  // of the last request
};

TEST_F(RegistrarBindingsTest, Expiry_IsThatOfTheContactElseOfTheRequestElseTheLongest)
{
    EXPECT_EQ(answerTo(contact("<sip:a@h>;expires=60")), "200 OK: <sip:a@h>;expires=60");
    EXPECT_EQ(answerTo({{"Contact", "<sip:a@h>"}, {"Expires", "70"}, {"CSeq", "2 REGISTER"}}),
              "200 OK: <sip:a@h>;expires=70");
    EXPECT_EQ(answerTo(contact("<sip:a@h>", "3 REGISTER")), "200 OK: <sip:a@h>;expires=600");
    EXPECT_EQ(answerTo(contact("<sip:a@h>;expires=601", "4 REGISTER")), "200 OK: <sip:a@h>;expires=600");
    EXPECT_EQ(answerTo(contact("<sip:a@h>;expires=soon", "5 REGISTER")), "200 OK: <sip:a@h>;expires=600");
}

TEST_F(RegistrarBindingsTest, Change_IsToldWhenTheFirstContactComesAndTheLastOneGoes)
{
    (void)answerTo(contact("<sip:a@h>"));
    EXPECT_EQ(changed_, "4711 ");
    (void)answerTo(contact("<sip:b@h>", "2 REGISTER"));
    EXPECT_EQ(answerTo(contact("<sip:a@h>;expires=0", "3 REGISTER")), "200 OK: <sip:b@h>;expires=600");
    EXPECT_EQ(changed_, "4711 ");
    EXPECT_EQ(answerTo(contact("<sip:b@h>;expires=0", "4 REGISTER")), "200 OK");

    EXPECT_EQ(changed_, "4711 4711 ");
    EXPECT_TRUE(registrar_->registeredNumbers().empty());
    EXPECT_TRUE(registrar_->knows("4711"));
}

TEST_F(RegistrarBindingsTest, Contacts_AreListedWithTheLatestFirst)
{
    (void)answerTo(contact("<sip:a@h>, <sip:b@h>"));

    EXPECT_EQ(registrar_->contactsOf("4711"), (std::vector<std::string>{"sip:b@h", "sip:a@h"}));
    EXPECT_EQ(registrar_->registeredNumbers(), std::vector<std::string>{"4711"});
    EXPECT_TRUE(registrar_->contactsOf("4712").empty());
}

TEST_F(RegistrarBindingsTest, Contact_IsReachedOverTheConnectionOfItsRequest)
{
    answerTo(contact("<sip:4711@127.0.0.1:5070>"));
    EXPECT_EQ(reachedHere_, "sip:4711@127.0.0.1:5070");

    answerTo(contact("<sip:4711@127.0.0.1:5070>;expires=0", "2 REGISTER"));
    EXPECT_EQ(reachedHere_, "");
}

TEST_F(RegistrarBindingsTest, EleventhContact_DisplacesTheOldest)
{
    for (int i = 1; i <= 11; ++i) {
        (void)answerTo(contact("<sip:" + std::to_string(i) + "@h>", std::to_string(i) + " REGISTER"));
    }

    auto const contacts = registrar_->contactsOf("4711");
    ASSERT_EQ(contacts.size(), 10U);
    EXPECT_EQ(contacts.front(), "sip:11@h");
    EXPECT_EQ(contacts.back(), "sip:2@h");
}

TEST_F(RegistrarBindingsTest, Star_RemovesAllIfTheRequestExpiresAtOnce)
{
    (void)answerTo(contact("<sip:a@h>, <sip:b@h>"));

    EXPECT_EQ(answerTo(contact("*")), "400 Contact * without Expires 0");
    EXPECT_EQ(registrar_->contactsOf("4711").size(), 2U);
    EXPECT_EQ(answerTo({{"Contact", "*"}, {"Expires", "0"}}), "200 OK");
    EXPECT_TRUE(registrar_->contactsOf("4711").empty());
}

TEST_F(RegistrarBindingsTest, RequestWithoutAContact_IsAnsweredWithThePresentOnes)
{
    (void)answerTo(contact("<sip:a@h>"));
    sleepFor(std::chrono::milliseconds(1500));

    EXPECT_EQ(answerTo({}), "200 OK: <sip:a@h>;expires=599");
}

TEST_F(RegistrarBindingsTest, MalformedContact_IsABadRequest)
{
    EXPECT_EQ(answerTo(contact("<sip:")), "400 Bad Contact");
    EXPECT_EQ(changed_, "");
}

TEST_F(RegistrarBindingsTest, LateRepetition_UndoesNothing)
{
    (void)answerTo(contact("<sip:a@h>", "9 REGISTER"));
    (void)answerTo(contact("<sip:a@h>", "10 REGISTER"));

    EXPECT_EQ(answerTo(contact("<sip:a@h>;expires=0", "9 REGISTER")), "500 Out of order");
    EXPECT_EQ(registrar_->contactsOf("4711").size(), 1U);
    EXPECT_EQ(answerTo(contact("<sip:a@h>;expires=0", "10 REGISTER")), "200 OK");
}

TEST_F(RegistrarBindingsTest, TelephoneThatHasStartedAnew_CountsFromOneAgain)
{
    (void)answerTo(contact("<sip:a@h>", "9 REGISTER"));

    EXPECT_EQ(answerTo(contact("<sip:a@h>;expires=60", "1 REGISTER"), "another"), "200 OK: <sip:a@h>;expires=60");
}

TEST_F(RegistrarBindingsTest, ContactThatExpires_IsNoLongerRegistered)
{
    (void)answerTo(contact("<sip:a@h>;expires=60"));

    sleepFor(std::chrono::seconds(60));

    EXPECT_TRUE(registrar_->contactsOf("4711").empty());
    EXPECT_TRUE(registrar_->registeredNumbers().empty());
    EXPECT_EQ(answerTo({}), "200 OK");
}

TEST_F(RegistrarBindingsTest, Forget_RemovesTheContactsAndTellsIt)
{
    (void)answerTo(contact("<sip:a@h>"));
    changed_.clear();

    registrar_->setConduct({.kind = RegistrarConduct::Kind::kForget});

    EXPECT_EQ(changed_, "4711 ");
    EXPECT_TRUE(registrar_->contactsOf("4711").empty());
    EXPECT_EQ(answerTo(contact("<sip:a@h>", "2 REGISTER")), "200 OK: <sip:a@h>;expires=600");
}

}  // namespace
}  // namespace telephone::exchange
