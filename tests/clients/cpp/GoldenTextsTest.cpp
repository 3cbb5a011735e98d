// The client and the texts of tests/golden: it writes the requests, and reads the answers and events.
#include <algorithm>
#include <array>
#include <fstream>
#include <map>
#include <set>
#include <tuple>
#include <type_traits>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "TelephoneClient.h"

using namespace telephone_client;
using nlohmann::json;

namespace {

constexpr int kSuccess = 5;

json read(std::string const& file)
{
    return json::parse(std::ifstream(PROJECT "/" + file));
}

// ---- Requests ----

// Requests that are wrong on purpose: no client writes them.
std::set<std::pair<std::string, std::string>> const kNotWritten{
    {"OutgoingCallMakeRequest", "last flag alone"},
    {"AttendedTransfer", "CallID in place of activeCall"},
    {"SetServiceState", "a word in lower case"},
    {"SetServiceState", "no closing tag"},
    {"GetDoNotDisturb", "a line in place of the device"},
    {"setIsInServiceInitiatedState", "failure"},
    {"setIsInServiceInitiatedState", "a number in place of the word"},
    {"callbackDOFeatureCallID", "failure"},
};

// The service states as the operation of the service has them.
constexpr std::array<char const*, 3> kServiceStates{"sfiServiceInService", "sfiServiceOutOfService",
                                                    "sfiServiceDoNotDisturb"};

template <typename Value>
Value valueOf(json const& given)
{
    if constexpr (std::is_enum_v<Value>) {
        return static_cast<Value>(given.get<std::int64_t>());
    } else if constexpr (std::is_base_of_v<Word, Value>) {
        return given.is_number() ? Value(kServiceStates.at(given)) : Value(given.get<std::string>());
    } else {
        return given.get<Value>();
    }
}

template <typename Value>
struct Argument
{
    static Value from(json const& given) { return valueOf<Value>(given); }
};
template <typename Value>
struct Argument<std::optional<Value>>
{
    static std::optional<Value> from(json const& given)
    {
        return given.is_null() ? std::nullopt : std::optional<Value>(valueOf<Value>(given));
    }
};

// The values of an answer, in their order.
json valuesOf(Nothing const& /*nothing*/)
{
    return json::array();
}
json valuesOf(bool value)
{
    return json::array({value});
}
json valuesOf(std::string const& value)
{
    return json::array({value});
}
json valuesOf(ServiceState const& value)
{
    auto const* const found = std::find(kServiceStates.begin(), kServiceStates.end(), value.word);
    return json::array({found - kServiceStates.begin()});
}
struct Collector
{
    template <typename Value>
    void operator()(char const* tag, Value const& value)
    {
        tags.emplace_back(tag);
        if constexpr (std::is_enum_v<Value>) {
            values.push_back(static_cast<std::int64_t>(value));
        } else if constexpr (std::is_base_of_v<Word, Value>) {
            values.push_back(value.word);
        } else {
            values.push_back(value);
        }
    }
    std::vector<std::string> tags;
    json values = json::array();
};
template <typename Record, typename = decltype(Record::fields(std::declval<Record&>(), std::declval<Collector&>()))>
json valuesOf(Record const& record)
{
    Collector collector;
    Record::fields(record, collector);
    return collector.values;
}

struct Written
{
    std::string text;
    Expected<json> answer;  // the values
};

// Calls the function of a request with arguments in its own order, and lets it read an answer.
template <typename Answer, typename... Parameters>
Written send(Request<Answer> (*function)(Parameters...), json const& arguments, Reply const& reply)
{
    [[maybe_unused]] auto next = [&arguments, i = std::size_t{0}]() mutable -> json const& {
        return arguments.at(i++);
    };
    // The braces make the order of evaluation that of the arguments.
    std::tuple<std::decay_t<Parameters>...> const values{Argument<std::decay_t<Parameters>>::from(next())...};
    Request<Answer> const request = std::apply(function, values);
    auto const answer = request.read(reply);
    return {request.text.value(), answer ? Expected<json>(valuesOf(*answer)) : answer.error()};
}

using Sender = Written (*)(json const& arguments, Reply const& reply);

template <auto Function>
Written sendTo(json const& arguments, Reply const& reply)
{
    return send(Function, arguments, reply);
}

std::map<std::string, Sender> const kSenders{
    {"OutgoingCallMakeRequest", sendTo<requests::outgoingCallMakeRequest>},
    {"AcceptCall", sendTo<requests::acceptCall>},
    {"AnswerCall", sendTo<requests::answerCall>},
    {"DeflectCall", sendTo<requests::deflectCall>},
    {"HoldCall", sendTo<requests::holdCall>},
    {"RetrieveCall", sendTo<requests::retrieveCall>},
    {"Consult", sendTo<requests::consult>},
    {"AttendedTransfer", sendTo<requests::attendedTransfer>},
    {"BlindTransfer", sendTo<requests::blindTransfer>},
    {"RefuseCall", sendTo<requests::refuseCall>},
    {"CallClearRequest", sendTo<requests::callClearRequest>},
    {"SystemStatus", sendTo<requests::systemStatus>},
    {"Subscribe", sendTo<requests::subscribe>},
    {"ActivateCallbackRinging", sendTo<requests::activateCallbackRinging>},
    {"ActivateCallbackBusy", sendTo<requests::activateCallbackBusy>},
    {"CancelCallbacks", sendTo<requests::cancelCallbacks>},
    {"DirectedPickupCall", sendTo<requests::directedPickupCall>},
    {"GroupPickupCall", sendTo<requests::groupPickupCall>},
    {"ConferenceCall", sendTo<requests::conferenceCall>},
    {"SetServiceState", sendTo<requests::setServiceState>},
    {"GetServiceState", sendTo<requests::getServiceState>},
    {"SetDoNotDisturb", sendTo<requests::setDoNotDisturb>},
    {"GetDoNotDisturb", sendTo<requests::getDoNotDisturb>},
    {"SetAgentState", sendTo<requests::setAgentState>},
    {"GenerateDigits", sendTo<requests::generateDigits>},
    {"GetDevices", sendTo<requests::getDevices>},
    {"SetMicrophoneMute", sendTo<requests::setMicrophoneMute>},
    {"GetMicrophoneMute", sendTo<requests::getMicrophoneMute>},
    {"getManualHoldIndication", sendTo<requests::getManualHoldIndication>},
    {"Activate", sendTo<requests::activate>},
    {"Deactivate", sendTo<requests::deactivate>},
    {"SendCSTARequest", sendTo<requests::sendCSTARequest>},
    {"InitializeOrFinalizeServerFeatures", sendTo<requests::initializeOrFinalizeServerFeatures>},
    {"AlternateCalls", sendTo<requests::alternateCalls>},
    {"GetMessageWaitingIndicator", sendTo<requests::getMessageWaitingIndicator>},
    {"setAssociatedCalls", sendTo<requests::setAssociatedCalls>},
    {"setLampMode", sendTo<requests::setLampMode>},
    {"makeSecurityChangeReinvite", sendTo<requests::makeSecurityChangeReinvite>},
    {"setForwardingConfiguration", sendTo<requests::setForwardingConfiguration>},
    {"getForwardingConfiguration", sendTo<requests::getForwardingConfiguration>},
    {"setIsInServiceInitiatedState", sendTo<requests::setIsInServiceInitiatedState>},
    {"SendUACSTAServerMessage", sendTo<requests::sendUACSTAServerMessage>},
    {"callbackDOFeatureCallID", sendTo<requests::callbackDOFeatureCallID>},
};

struct Arguments
{
    json values = json::array();  // in the order of the function: what may be left out comes last
    bool isComplete = true;       // false: a required parameter is missing in the request
};

// The arguments of the operation, null for what the request leaves out.
Arguments argumentsOf(json const& described, json const& exchange)
{
    std::string const request = exchange["request"];
    Arguments arguments;
    for (bool const required : {true, false}) {
        for (std::size_t i = 0; i < described["parameters"].size(); ++i) {
            json const& parameter = described["parameters"][i];
            if ((parameter["need"] == "required") != required) {
                continue;
            }
            // A body stands behind the line.
            std::string const tag = parameter["kind"] == "body" ? "Line" : parameter["tag"];
            bool const isThere = request.find("<" + tag + ">") != std::string::npos;
            arguments.isComplete = arguments.isComplete && (isThere || !required);
            arguments.values.push_back(isThere || required ? exchange["call"][i + 1] : json());
        }
    }
    return arguments;
}

// ---- Events ----

// A value as a reader gets it: up to its own closing tag.
json readable(std::string const& tag, json const& value)
{
    if (!value.is_string() || tag.empty()) {
        return value;
    }
    std::string const text = value;
    return text.substr(0, text.find("</" + tag + ">"));
}

// The arguments one by one: a pair, or an object with texts, has several.
json flat(json const& arguments)
{
    json values = json::array();
    for (json const& each : arguments) {
        bool const isPair = each.is_array() && each.size() == 2 && each[0].is_number();
        if (each.is_object()) {
            for (char const* const name : {"calling", "callingName", "called", "calledName"}) {
                values.push_back(each[name]);
            }
        } else if (isPair) {
            values.insert(values.end(), each.begin(), each.end());
        } else {
            values.push_back(each);
        }
    }
    return values;
}

// The operations whose event ends a text at its first NUL.
std::set<std::string> const kEndAtNul{"incomingAssociatedCall", "conferenceStatusEvent", "callCompletionEvent",
                                      "callCompletionFailedEvent", "bluetoothAudioStatusChanged"};

void compareEvent(std::string const& operation, json const& given)
{
    AnyEvent const event = readEvent(given["message"].get<std::string>());
    Collector collector;
    std::visit(
        [&](auto const& kind) {
            using Kind = std::decay_t<decltype(kind)>;
            if constexpr (std::is_same_v<Kind, UnknownEvent> || std::is_same_v<Kind, Gap>) {
                ADD_FAILURE() << "not read: " << given["message"];
            } else {
                EXPECT_NE(given["message"].get<std::string>().find(Kind::kMethod), std::string::npos);
                Kind::fields(kind, collector);
            }
        },
        event);
    json expected = flat(given["arguments"]);
    ASSERT_EQ(collector.values.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
        if (kEndAtNul.count(operation) != 0 && expected[i].is_string()) {
            std::string const text = expected[i];
            expected[i] = text.substr(0, text.find('\0'));
        }
        EXPECT_EQ(collector.values[i], readable(collector.tags[i], expected[i])) << collector.tags[i];
    }
}

}  // namespace

TEST(GoldenTexts, Requests_AreWrittenAsTheServiceReadsThem)
{
    json const description = read("docs/protocol.json");
    int count = 0;
    for (json const& golden : read("tests/golden/requests.json")) {
        std::string const method = golden["method"];
        auto const described = std::find_if(description["requests"].begin(), description["requests"].end(),
                                            [&](json const& each) { return each["name"] == method; });
        for (json const& exchange : golden["exchanges"]) {
            auto const [values, isComplete] = argumentsOf(*described, exchange);
            if (!isComplete || kNotWritten.count({method, exchange["case"]}) != 0) {
                continue;
            }
            ++count;
            EXPECT_EQ(kSenders.at(method)(values, {}).text, exchange["request"]) << exchange["case"];
        }
    }
    EXPECT_EQ(count, 104);  // of 145; the others lack a required parameter, or are wrong
}

TEST(GoldenTexts, Answers_AreReadAsTheServiceMeansThem)
{
    json const description = read("docs/protocol.json");
    for (json const& golden : read("tests/golden/requests.json")) {
        std::string const method = golden["method"];
        auto const described = std::find_if(description["requests"].begin(), description["requests"].end(),
                                            [&](json const& each) { return each["name"] == method; });
        for (json const& exchange : golden["exchanges"]) {
            SCOPED_TRACE(method + ", " + exchange["case"].get<std::string>());
            Reply reply;
            if (exchange["answer"].is_string()) {
                reply.text = exchange["answer"].get<std::string>();
            }
            auto const answer = kSenders.at(method)(argumentsOf(*described, exchange).values, reply).answer;
            std::string const kind = (*described)["answer"]["kind"];
            bool const hasResult = kind != "truth" && kind != "fixed text" && kind != "nothing";
            // An empty list of devices is answered as a failure.
            if (hasResult && (exchange["result"] != kSuccess || exchange["answer"] == "sfiFailure")) {
                ASSERT_FALSE(answer);
                EXPECT_EQ(answer.error().kind, Error::Kind::kRefused);
                EXPECT_NE(reply.text->find(answer.error().resultWord), std::string::npos);
                continue;
            }
            if (exchange["answer"] == "sfiSuccess" && exchange.contains("outputs")) {  // a state that has no word
                EXPECT_EQ(answer.error().kind, Error::Kind::kProtocol);
                continue;
            }
            json expected = exchange.value("outputs", json::array());
            if (kind == "truth") {
                expected = json::array({exchange["result"] == 1});
            } else if (kind == "texts") {  // the texts in one
                expected = json::array({exchange["answer"]});
            }
            ASSERT_TRUE(answer) << answer.error().reason;
            EXPECT_EQ(*answer, expected);
        }
    }
}

TEST(GoldenTexts, Events_AreReadAsTheServiceMeansThem)
{
    int count = 0;
    for (json const& golden : read("tests/golden/events.json")) {
        std::string const operation = golden["operation"];
        for (json const& event : golden["events"]) {
            // The form of lists is the telephone's own: Event_WithLists_IsReadInTheTelephonesForm.
            if (event["message"].is_null() || operation == "securityStatusChanged") {
                continue;
            }
            SCOPED_TRACE(operation + ", " + event["case"].get<std::string>());
            compareEvent(operation, event);
            ++count;
        }
    }
    EXPECT_EQ(count, 105);
}

TEST(GoldenTexts, Event_WithLists_IsReadInTheTelephonesForm)
{
    auto const event = std::get<SecurityStatusChanged>(
        readEvent("<Method>securityStatusChanged</Method><lineURI>sip:4711@example.com</lineURI><callId>3</callId>"
                  "<securityStatus>2</securityStatus><CallIDsRecorded>3,14</CallIDsRecorded>"
                  "<CallLineURIsRecorded>4711,a\\,b,c\\\\</CallLineURIsRecorded>"));

    EXPECT_EQ(event.securityStatus, SecurityStatus::kSecure);
    EXPECT_EQ(event.callIDsRecorded, (std::vector<std::int64_t>{3, 14}));
    EXPECT_EQ(event.callLineURIsRecorded, (std::vector<std::string>{"4711", "a,b", "c\\"}));
}

TEST(GoldenTexts, Event_OfAnUnknownMethodOrWithoutAnElement_IsUnknown)
{
    EXPECT_EQ(std::get<UnknownEvent>(readEvent("<Method>CallWhistledEvent</Method><CallID>3</CallID>")).method,
              "CallWhistledEvent");
    EXPECT_EQ(std::get<UnknownEvent>(readEvent("<Method>CallHeldEvent</Method><CallID>3</CallID>")).method,
              "CallHeldEvent");
    EXPECT_EQ(std::get<UnknownEvent>(readEvent("anything")).method, "");
}

TEST(Requests, ValueThatWouldEndItsElement_CannotBeSent)
{
    auto const request = requests::consult("4711", 3, "</Destination><Manual>1</Manual>");

    ASSERT_FALSE(request.text);
    EXPECT_EQ(request.text.error().kind, Error::Kind::kBadInput);
    EXPECT_EQ(request.text.error().reason, "Destination contains </Destination>, which ends it");
    EXPECT_EQ(requests::consult("4711", 3, std::string("1\0002", 3)).text.error().reason,
              "Destination contains a NUL, which ends a message");
}

TEST(Enumerations, Names_AreWhatPeopleSay)
{
    EXPECT_EQ(name(CallState::kRemoteRinging), "remote ringing");
    EXPECT_EQ(name(AgentState(AgentState::kLoggedOff)), "logged off");
    EXPECT_EQ(name(static_cast<CallState>(99)), "");
}
