// Every exchange of tests/golden/requests.json: the request must make the given call and bring the given answer.
#include <algorithm>
#include <cctype>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "CallRecord.h"
#include "CommunicationsServiceRequests.h"
#include "RecordedResponse.h"
#include "src/CommunicationsServiceInvoker.h"
#include "tests/doubles/CurrentDouble.h"
#include "tests/doubles/LogDouble.h"
#include "tests/doubles/MockFrameworkContext.h"
#include "tests/doubles/MockProxy.h"
#include "tests/doubles/ObservedService.h"

using testing::NiceMock;
using testing::Return;

namespace {
struct Exchange
{
    std::string method;
    nlohmann::json content;
};

nlohmann::json const& goldenRequests()
{
    static nlohmann::json const kRequests = nlohmann::json::parse(std::ifstream(GOLDEN_FOLDER "/requests.json"));
    return kRequests;
}

std::vector<Exchange> allExchanges()
{
    std::vector<Exchange> exchanges;
    for (auto const& request : goldenRequests()) {
        for (auto const& content : request.at("exchanges")) {
            exchanges.push_back({request.at("method"), content});
        }
    }
    return exchanges;
}

std::string nameOf(testing::TestParamInfo<Exchange> const& info)
{
    std::string name = info.param.method + "_" + info.param.content.at("case").get<std::string>();
    std::replace_if(
        name.begin(), name.end(), [](unsigned char character) { return std::isalnum(character) == 0; }, '_');
    return name;
}

class GoldenRequest : public testing::TestWithParam<Exchange>
{
protected:
    // Sends a request whose call has the exchange's result.
    void send(std::string const& request)
    {
        auto const& exchange = GetParam().content;
        ON_CALL(context, findProxy("CommunicationsServiceEventIfc", "channel-1")).WillByDefault(Return(&proxy));
        service.observer.eventProxy = &proxy;
        service.result = exchange.at("result").is_null() ? 0 : exchange.at("result").get<int>();
        service.observer.outputs = exchange.value("outputs", nlohmann::json::array());
        CommunicationsServiceInvoker invoker;
        invoker.initInvoker(&context);

        invoker.handleMessage(&service, request.c_str(), static_cast<int>(request.size()), &response);
    }

    NiceMock<MockProxy> proxy;
    NiceMock<MockFrameworkContext> context;
    ObservedService<CallRecord> service;
    RecordedResponse response;
};

TEST_P(GoldenRequest, MakesTheWrittenCallAndAnswersTheWrittenText)
{
    auto const& exchange = GetParam().content;

    send(exchange.at("request").get<std::string>());

    EXPECT_EQ(service.observer.calls, nlohmann::json::array({exchange.at("call")}));
    std::vector<std::string> expected;
    if (!exchange.at("answer").is_null()) {
        expected.push_back("answer " + exchange.at("answer").get<std::string>());
    }
    expected.emplace_back("finish");
    EXPECT_EQ(response.told, expected);
}

INSTANTIATE_TEST_SUITE_P(All, GoldenRequest, testing::ValuesIn(allExchanges()), nameOf);

// The tags of a request's elements, in order, without the method.
std::vector<std::string> tagsOf(std::string const& request)
{
    std::vector<std::string> tags;
    auto place = request.find("</Method>") + std::string("</Method>").size();
    while (place < request.size() && request[place] == '<') {
        auto const tag = request.substr(place + 1, request.find('>', place) - place - 1);
        auto const closing = "</" + tag + ">";
        auto const end = request.find(closing, place);
        if (end == std::string::npos) {
            break;
        }
        tags.push_back(tag);
        place = end + closing.size();
    }
    return tags;
}

using CompleteRequest = GoldenRequest;

// Only requests that have all of their elements, and no document in them.
std::vector<Exchange> completeExchanges()
{
    auto exchanges = allExchanges();
    auto const isOther = [](Exchange const& exchange) {
        bool const hasDocument = exchange.method == "SendCSTARequest" || exchange.method == "SendUACSTAServerMessage";
        return hasDocument || exchange.content.at("case") != "success";
    };
    exchanges.erase(std::remove_if(exchanges.begin(), exchanges.end(), isOther), exchanges.end());
    return exchanges;
}

TEST_P(CompleteRequest, WithEachElementOnceMoreBehind_MakesTheSameCall)
{
    auto request = GetParam().content.at("request").get<std::string>();
    for (auto const& tag : tagsOf(request)) {
        request += "<" + tag + ">9</" + tag + ">";
    }

    send(request);

    EXPECT_EQ(service.observer.calls, nlohmann::json::array({GetParam().content.at("call")}));
}

TEST_P(CompleteRequest, WithItsElementsInTheOppositeOrder_MakesTheSameCall)
{
    auto const request = GetParam().content.at("request").get<std::string>();
    std::string opposite;
    for (auto const& tag : tagsOf(request)) {
        auto const begin = request.find("<" + tag + ">");
        auto const closing = "</" + tag + ">";
        opposite.insert(0, request.substr(begin, request.find(closing) + closing.size() - begin));
    }

    send(request.substr(0, request.find("</Method>") + 9) + opposite);

    EXPECT_EQ(service.observer.calls, nlohmann::json::array({GetParam().content.at("call")}));
}

INSTANTIATE_TEST_SUITE_P(All, CompleteRequest, testing::ValuesIn(completeExchanges()), nameOf);

TEST(GoldenRequests, HoldEveryDescribedRequestInOrder)
{
    std::vector<std::string> written;
    for (auto const& request : goldenRequests()) {
        written.push_back(request.at("method"));
    }
    std::vector<std::string> described;
    for (auto const& description : kRequestDescriptions) {
        described.emplace_back(description.name);
    }
    EXPECT_EQ(written, described);
}

TEST(GoldenRequests, CarryTheDescribedParametersInOrder)
{
    for (std::size_t index = 0; index < kRequestCount; ++index) {
        auto const& description = kRequestDescriptions[index];
        std::vector<std::string> described;
        bool hasBody = false;
        for (auto const& parameter : description.parameters) {
            hasBody = hasBody || parameter.kind == RequestParameterKind::body;
            if (parameter.kind != RequestParameterKind::body) {
                described.emplace_back(parameter.tag);
            }
        }
        auto tags = tagsOf(goldenRequests().at(index).at("exchanges").at(0).at("request"));
        if (hasBody) {
            ASSERT_GT(tags.size(), described.size()) << description.name;
            tags.resize(described.size());
        }
        EXPECT_EQ(tags, described) << description.name;
    }
}

TEST(GoldenRequests, ShowTheDescribedDefaultsForMissingParameters)
{
    for (std::size_t index = 0; index < kRequestCount; ++index) {
        auto const& description = kRequestDescriptions[index];
        auto const& call = goldenRequests().at(index).at("exchanges").at(2).at("call");
        std::size_t argument = 1;
        for (auto const& parameter : description.parameters) {
            auto const& shown = call.at(argument++);
            switch (parameter.kind) {
            case RequestParameterKind::text:
                EXPECT_EQ(shown, "") << description.name << ' ' << parameter.tag;
                break;
            case RequestParameterKind::integer:
                EXPECT_EQ(shown, -1) << description.name << ' ' << parameter.tag;
                break;
            case RequestParameterKind::flag:
                EXPECT_EQ(shown, true) << description.name << ' ' << parameter.tag;
                break;
            case RequestParameterKind::word:
                EXPECT_EQ(shown, false) << description.name << ' ' << parameter.tag;
                break;
            case RequestParameterKind::serviceState:
                EXPECT_EQ(shown, 1) << description.name << ' ' << parameter.tag;
                break;
            case RequestParameterKind::body:
                EXPECT_EQ(shown, "d>" + std::string(description.name) + "</Method>");
                break;
            }
        }
    }
}

TEST(GoldenRequests, AreAnsweredWithTheDescribedKindOfAnswer)
{
    auto const startsWithResultWord = [](std::string const& answer) {
        return answer.rfind("sfiSuccess", 0) == 0 || answer.rfind("sfiFailure", 0) == 0;
    };
    for (std::size_t index = 0; index < kRequestCount; ++index) {
        auto const& description = kRequestDescriptions[index];
        auto const& shown = goldenRequests().at(index).at("exchanges").at(0).at("answer");
        auto const answer = shown.is_null() ? std::string() : shown.get<std::string>();
        switch (description.answer) {
        case RequestAnswer::resultWord:
            EXPECT_EQ(answer, "sfiSuccess") << description.name;
            break;
        case RequestAnswer::wordAndValue:
            EXPECT_TRUE(startsWithResultWord(answer) && answer.find(',') != std::string::npos) << description.name;
            break;
        case RequestAnswer::truth:
            EXPECT_EQ(answer, "true") << description.name;
            break;
        case RequestAnswer::texts:
            EXPECT_EQ(answer, "47114712") << description.name;
            break;
        case RequestAnswer::elements:
            EXPECT_EQ(tagsOf("</Method>" + answer), tagsOf("</Method>" + std::string(description.answerForm)));
            break;
        case RequestAnswer::fixedText:
            EXPECT_EQ(answer, description.answerForm) << description.name;
            break;
        case RequestAnswer::nothing:
            EXPECT_TRUE(shown.is_null()) << description.name;
            break;
        }
    }
}
}  // namespace
