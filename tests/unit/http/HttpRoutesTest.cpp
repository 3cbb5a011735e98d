// Requests and commands, and what the telephone says about itself.
#include <algorithm>

#include "HttpTest.h"
#include "telephone/base/Version.h"

using namespace telephone;

namespace {

using HttpRoutesTest = HttpTest;

}  // namespace

TEST_F(HttpRoutesTest, RequestInShortForm_IsAnswered)
{
    HttpAnswer const answer = post("/requests", "HoldCall Line=4711 CallID=1\n");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "{\"answer\":\"sfiSuccess\",\"reasons\":[],\"finished\":true}\n");
    EXPECT_EQ(telephone_.invoker.requests,
              std::vector<std::string>{"<Method>HoldCall</Method><Line>4711</Line><CallID>1</CallID>"});
}

TEST_F(HttpRoutesTest, RequestInFull_IsSentAsItStands)
{
    EXPECT_EQ(post("/requests", "<Method>GetDevices</Method>").status, 200);
    EXPECT_EQ(post("/requests", R"({"text": "<Method>GetDevices</Method>\n"})").status, 400);
    EXPECT_EQ(post("/requests?lenient", R"({"text": "<Method>GetDevices</Method>\n"})").status, 200);

    EXPECT_EQ(telephone_.invoker.requests,
              (std::vector<std::string>{"<Method>GetDevices</Method>", "<Method>GetDevices</Method>\n"}));
}

TEST_F(HttpRoutesTest, RequestAsJson_TakesTextsNumbersAndFlags)
{
    EXPECT_EQ(post("/requests", R"({"request": "holdcall", "parameters": {"Line": "4711", "CallID": 1}})").status, 200);
    EXPECT_EQ(post("/requests", R"({"request": "GetDevices"})").status, 200);
    EXPECT_EQ(post("/requests", R"({"request": "SetDoNotDisturb",
                                    "parameters": {"Line": "4711", "doNotDisturbOn": true}})")
                  .status,
              200);

    EXPECT_EQ(telephone_.invoker.requests,
              (std::vector<std::string>{
                  "<Method>HoldCall</Method><Line>4711</Line><CallID>1</CallID>",
                  "<Method>GetDevices</Method>",
                  "<Method>SetDoNotDisturb</Method><Line>4711</Line><doNotDisturbOn>1</doNotDisturbOn>",
              }));
}

TEST_F(HttpRoutesTest, FailedRequest_IsAnsweredWithItsReasons)
{
    telephone_.invoker.answer = [](std::string const&) { return "sfiFailure"; };

    HttpAnswer const answer = post("/requests", "HoldCall Line=4711 CallID=7");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "{\"answer\":\"sfiFailure\",\"reasons\":[\"there is no call 7; the telephone has no "
                           "calls\"],\"finished\":true}\n");
}

TEST_F(HttpRoutesTest, RequestWithoutAnswer_IsAnsweredWithNull)
{
    telephone_.invoker.answer = [](std::string const&) { return ""; };

    EXPECT_EQ(
        post("/requests", "<Method>callbackDOFeatureCallID</Method><CallID>1</CallID><instanceId>1</instanceId>").body,
        "{\"answer\":null,\"reasons\":[],\"finished\":true}\n");
}

TEST_F(HttpRoutesTest, UnknownRequest_ReachesTheServiceOnlyIfLenient)
{
    HttpAnswer const strict = post("/requests", "<Method>HoldCal</Method>");
    EXPECT_EQ(strict.status, 400);
    EXPECT_EQ(strict.body, "{\"error\":\"there is no request HoldCal (did you mean HoldCall?)\"}\n");
    EXPECT_TRUE(telephone_.invoker.requests.empty());

    EXPECT_EQ(post("/requests?lenient", "<Method>HoldCal</Method>").status, 200);
    EXPECT_EQ(telephone_.invoker.requests, std::vector<std::string>{"<Method>HoldCal</Method>"});
}

TEST_F(HttpRoutesTest, WrongRequests_AreRefusedWithASentence)
{
    struct
    {
        std::string body;
        char const* error;
    } const rows[] = {
        {"", "the message is empty"},
        {"HoldCal", "no request or command HoldCal (did you mean HoldCall?); help lists them"},
        {"HoldCall Lin=4711",
         "HoldCall has no parameter Lin (did you mean Line?); it has Line, CallID, HoldCallReason, Manual"},
        {"press 1", "this is a command: send it to /commands"},
        {std::string("HoldCall\0Line=4711", 18), "the text must not contain a NUL byte"},
        {R"({"text": "HoldCall\u0000"})", "the text must not contain a NUL byte"},
        {"{", "the body begins as JSON and is not a JSON object"},
        {"{}", R"(the object must have \"request\" and \"parameters\", or only \"text\")"},
        {R"({"request": "HoldCall", "Line": "4711"})",
         R"(the object must have \"request\" and \"parameters\", or only \"text\")"},
        {R"({"request": 1})", R"(\"request\" must be a text, and \"parameters\" an object)"},
        {R"({"request": "HoldCall", "parameters": []})", R"(\"request\" must be a text, and \"parameters\" an object)"},
        {R"({"request": "HoldCall", "parameters": {"CallID": 1.5}})",
         "the value of CallID must be a text, an integer, true or false"},
        {R"({"request": "press"})", "no request press"},
    };
    for (auto const& row : rows) {
        HttpAnswer const answer = post("/requests", row.body);
        EXPECT_EQ(answer.status, 400) << row.body;
        EXPECT_EQ(answer.body, "{\"error\":\"" + std::string(row.error) + "\"}\n");
    }
    EXPECT_TRUE(telephone_.invoker.requests.empty());
}

TEST_F(HttpRoutesTest, Command_IsAnsweredWithItsResult)
{
    telephone_.controls.present.start = "abc";

    EXPECT_EQ(post("/commands", "store list").body, "{\"result\":\"agent-state = ready\"}\n");
    EXPECT_EQ(post("/commands", "press 1\n").body, "{\"result\":\"\"}\n");
    EXPECT_EQ(post("/commands", "hello").body, R"({"result":{"telephone":"reference telephone","version":")" +
                                                   std::string(kTelephoneVersion) +
                                                   R"(","protocol":1,"start":"abc",)"
                                                   R"("ready":false,"domain":""}})"
                                                   "\n");
    EXPECT_EQ(post("/commands", "say {not JSON").body, "{\"result\":\"{not JSON\"}\n");
    EXPECT_EQ(telephone_.controls.asked, std::vector<std::string>{"press 1"});
}

TEST_F(HttpRoutesTest, WrongCommands_AreRefusedWithASentence)
{
    HttpAnswer const refused = post("/commands", "press 99");
    EXPECT_EQ(refused.status, 400);
    EXPECT_EQ(refused.body, "{\"error\":\"no key 99\"}\n");

    EXPECT_EQ(post("/commands", "press").body, "{\"error\":\"KEY is missing; write it as: press KEY\"}\n");
    EXPECT_EQ(post("/commands", "HoldCall Line=4711").body,
              "{\"error\":\"this is a request: send it to /requests\"}\n");
    EXPECT_EQ(post("/commands", "<Method>HoldCall</Method>").body,
              "{\"error\":\"this is a request: send it to /requests\"}\n");
}

TEST_F(HttpRoutesTest, Hello_IdentifiesTheTelephone)
{
    telephone_.controls.present.start = "abc";
    telephone_.controls.present.ready = true;
    telephone_.controls.present.domain = "127.0.0.1:5060";

    HttpAnswer const answer = get("/hello");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, R"({"telephone":"reference telephone","version":")" + std::string(kTelephoneVersion) +
                               R"(","protocol":1,"start":"abc",)"
                               R"("ready":true,"domain":"127.0.0.1:5060"})"
                               "\n");
    EXPECT_NE(answer.header.find("Content-Type: application/json\r\n"), std::string::npos) << answer.header;
}

TEST_F(HttpRoutesTest, State_IsTheStateOfThisMoment)
{
    telephone_.controls.present.start = "abc";
    telephone_.held(1);

    HttpAnswer const answer = get("/state");

    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body.substr(0, 26), "{\"start\":\"abc\",\"event\":1,\"");
}

TEST_F(HttpRoutesTest, Describe_PrintsTheProtocolOrOneName)
{
    HttpAnswer const all = get("/describe");
    EXPECT_EQ(all.status, 200);
    EXPECT_EQ(all.body.substr(0, 1), "{");
    EXPECT_NE(all.body.find("\"name\": \"HoldCall\""), std::string::npos);

    HttpAnswer const one = get("/describe?name=CallState%206");
    EXPECT_EQ(one.status, 200);
    EXPECT_NE(one.body.find("connected"), std::string::npos) << one.body;
    EXPECT_NE(one.header.find("Content-Type: text/plain; charset=utf-8"), std::string::npos) << one.header;

    EXPECT_EQ(get("/describe?name=HoldCal").status, 400);
}

TEST_F(HttpRoutesTest, Root_ListsTheAddresses)
{
    EXPECT_EQ(get("/").body, R"(The telephone over HTTP. Every request needs the token.

GET   /              this list
POST  /requests      sends a request to the service and answers with its answer and the reasons
POST  /commands      runs a command of the telephone itself, as the console does
GET   /state         the telephone at this moment
GET   /events        the events as they happen, as server-sent events
GET   /describe      the protocol
GET   /hello         which telephone this is, and whether it is ready
GET   /panel         the telephone itself, as a page for a browser
GET   /panel/{file}  what the page consists of
GET   /openapi.json  this interface as an OpenAPI page
)");
}

TEST_F(HttpRoutesTest, OpenApiPage_IsServed)
{
    EXPECT_EQ(get("/openapi.json").body, contentOf(PROJECT_FOLDER "/docs/openapi.json"));
}
