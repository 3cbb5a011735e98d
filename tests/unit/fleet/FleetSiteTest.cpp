// The fleet's page and addresses, for telephones that are shell scripts.
#include "telephone/fleet/FleetSite.h"

#include <gmock/gmock.h>

#include "FleetDouble.h"
#include "telephone/http/HttpServer.h"
#include "tests/unit/http/HttpConnection.h"

using namespace telephone;
using testing::HasSubstr;

namespace {

class FleetSiteTest : public FleetDouble
{
protected:
    void SetUp() override
    {
        make(3, kRuns);
        HttpServer::Settings const settings{{"127.0.0.1:0", "", ""}, folder_.file("token"), folder_.file("browsers")};
        server_ = HttpServer::open(settings, std::make_unique<FleetSite>(*members_)).value();
        std::string const address = server_->address();
        token_ = address.substr(address.find("token=") + 6);
    }
    void TearDown() override { server_.reset(); }

    // The status and the whole answer.
    std::string answerTo(std::string const& target, std::string const& body = {})
    {
        HttpConnection connection(server_->port());
        connection.send(target + " HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(server_->port()) +
                        "\r\nAuthorization: Bearer " + token_ +
                        "\r\nConnection: close\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
        std::string const text = connection.readAll();
        EXPECT_EQ(text.substr(0, 9), "HTTP/1.1 ");
        return text.substr(std::min<std::size_t>(9, text.size()));
    }
    static std::string bodyOf(std::string const& answer) { return answer.substr(answer.find("\r\n\r\n") + 4); }

    std::unique_ptr<HttpServer> server_;
    std::string token_;
};

TEST_F(FleetSiteTest, Root_ListsTheAddresses)
{
    EXPECT_EQ(bodyOf(answerTo("GET /")), R"(The telephone over HTTP. Every request needs the token.

GET   /              this list
GET   /fleet         the fleet, as a page for a browser
GET   /panel/{file}  what the page consists of
GET   /telephones    the telephones at this moment
GET   /telephones/{number} leads to the panel of one telephone
POST  /commands      runs a command of the fleet, as its prompt does
)");
}

TEST_F(FleetSiteTest, Page_IsServedAtItsPathWithItsFiles)
{
    EXPECT_THAT(server_->panelAddress(), HasSubstr("/fleet?token="));
    std::string const page = answerTo("GET /fleet");
    EXPECT_THAT(page, testing::StartsWith("200 "));
    EXPECT_THAT(page, HasSubstr("Content-Type: text/html"));
    EXPECT_THAT(answerTo("GET /panel/fleet.js"), testing::StartsWith("200 "));
    EXPECT_THAT(answerTo("GET /panel/no.js"), testing::StartsWith("404 "));
}

TEST_F(FleetSiteTest, Telephones_AreListedWithTheirConditions)
{
    start();
    telephone(2).end(true);
    members_->wakeUp();
    waitForNotes(1);

    auto const answer = nlohmann::json::parse(bodyOf(answerTo("GET /telephones")));

    ASSERT_EQ(answer["telephones"].size(), 3U);
    EXPECT_EQ(answer["telephones"][0]["number"], 1);
    EXPECT_EQ(answer["telephones"][0]["condition"], "running");
    EXPECT_EQ(answer["telephones"][0]["starts"], 1);
    EXPECT_EQ(answer["telephones"][1]["condition"], "stopped");
    EXPECT_EQ(answer["telephones"][1]["process"], nullptr);
    EXPECT_EQ(answer["telephones"][2]["number"], 3);
}

TEST_F(FleetSiteTest, Telephone_LeadsToItsPanelWhileItRuns)
{
    EXPECT_THAT(answerTo("GET /telephones/2"), testing::StartsWith("503 "));
    EXPECT_EQ(bodyOf(answerTo("GET /telephones/2")), "{\"error\":\"the telephone does not run at the moment\"}\n");

    start();

    std::string const answer = answerTo("GET /telephones/2");
    EXPECT_THAT(answer, testing::StartsWith("303 "));
    EXPECT_THAT(answer, HasSubstr("Location: http://127.0.0.1:1/panel\r\n"));
}

TEST_F(FleetSiteTest, WhatIsNotOneTelephone_IsNotFound)
{
    for (auto const& [path, error] : {std::pair("4", "there is no telephone 4; the fleet has 1 to 3"),
                                      std::pair("1-2", "name one telephone"), std::pair("all", "name one telephone")}) {
        std::string const answer = answerTo("GET /telephones/" + std::string(path));
        EXPECT_THAT(answer, testing::StartsWith("404 "));
        EXPECT_EQ(bodyOf(answer), "{\"error\":\"" + std::string(error) + "\"}\n");
    }
}

TEST_F(FleetSiteTest, Command_IsRunAsAtThePrompt)
{
    start();

    std::string const answer = answerTo("POST /commands", " stop 2\n");

    EXPECT_THAT(answer, testing::StartsWith("200 "));
    EXPECT_EQ(bodyOf(answer), "{\"result\":\"\"}\n");
    waitForNotes(1);
    EXPECT_EQ(notes_[0], "telephone 2 is stopped");
    std::string const refused = answerTo("POST /commands", "press 3");
    EXPECT_THAT(refused, testing::StartsWith("400 "));
    EXPECT_EQ(bodyOf(refused), "{\"error\":\"\\\"press\\\" is not a command of the fleet; help lists them\"}\n");
}

}  // namespace
