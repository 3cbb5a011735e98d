// Every event of tests/golden/events.json: the operation called with the arguments must send the given message.
#include <algorithm>
#include <cstring>
#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "CommunicationsServiceEvents.h"
#include "RecordedRequest.h"
#include "src/CommunicationsServiceEventProxy.h"

namespace {
using nlohmann::json;

// One argument, converted to the type of the operation's parameter.
class Argument
{
public:
    explicit Argument(json const& value)
        : value_(value)
    {}

    operator std::string() const { return value_.get<std::string>(); }    // NOLINT(google-explicit-constructor)
    operator bool() const { return value_.get<bool>(); }                  // NOLINT(google-explicit-constructor)
    operator int() const { return value_.get<int>(); }                    // NOLINT(google-explicit-constructor)
    operator unsigned int() const { return value_.get<unsigned int>(); }  // NOLINT(google-explicit-constructor)
    operator sfiAdditionalCallInfo() const
    {
        return {value_.at(0), value_.at(1)};
    }  // NOLINT(google-explicit-constructor)

    template <typename Enumeration>
    Enumeration as() const
    {
        return static_cast<Enumeration>(value_.get<int>());
    }
    sfiReplacesDisplay display() const
    {
        sfiReplacesDisplay record{};
        fill(record.calling, "calling");
        fill(record.callingName, "callingName");
        fill(record.called, "called");
        fill(record.calledName, "calledName");
        return record;
    }
    template <typename Element>
    std::vector<Element> list() const
    {
        return value_.get<std::vector<Element>>();
    }

private:
    void fill(char (&party)[sfiReplacesDisplay::kPartySize], char const* name) const
    {
        auto const text = value_.at(name).get<std::string>();
        std::memcpy(party, text.data(), std::min(text.size(), sizeof party));
    }

    json const& value_;
};

class Arguments
{
public:
    explicit Arguments(json const& values)
        : values_(values)
    {}

    Argument operator[](std::size_t index) const { return Argument(values_.at(index)); }
    std::string text(std::size_t index) const { return (*this)[index]; }

private:
    json const& values_;
};

using Operation = std::function<void(CommunicationsServiceEventIfc&, Arguments const&)>;

void callStateChange(CommunicationsServiceEventIfc& events, Arguments const& a)
{
    auto display = a[7].display();
    events.callStateChange(a.text(0), a[1], a[2].as<sfiCallState>(), a[3].as<sfiReason>(), a[4].as<sfiSendOptions>(),
                           a.text(5), a.text(6), &display, a[8].as<sfiResourcePriority>(),
                           a[9].as<sfiPreemptionCause>(), a.text(10), a[11], a[12]);
}

void incomingCall(CommunicationsServiceEventIfc& events, Arguments const& a)
{
    events.incomingCall(a.text(0), a[1], a.text(2), a.text(3), a.text(4), a.text(5), a[6], a[7].as<sfiCallType>(),
                        a.text(8), a.text(9), a[10].as<sfiForwardReason>(), a[11], a[12].as<sfiResourcePriority>(),
                        a[13], a[14]);
}

void securityStatusChanged(CommunicationsServiceEventIfc& events, Arguments const& a)
{
    auto callIDs = a[3].list<int>();
    auto lineURIs = a[4].list<std::string>();
    events.securityStatusChanged(a.text(0), a[1], a[2].as<sfiSecurityStatus>(), callIDs, lineURIs);
}

std::map<std::string, Operation> const& operations()
{
    using E = CommunicationsServiceEventIfc;
    using A = Arguments;
    static std::map<std::string, Operation> const kOperations = {
        {"callStateChange", callStateChange},
        {"registrationStateChange",
         [](E& e, A const& a) {
             e.registrationStateChange(a.text(0), a[1], a[2], a[3].as<sfiRegistrationResult>());
         }},
        {"incomingCall", incomingCall},
        {"incomingPickupCall",
         [](E& e, A const& a) { e.incomingPickupCall(a.text(0), a[1], a.text(2), a.text(3)); }},
        {"callHeld", [](E& e, A const& a) { e.callHeld(a.text(0), a[1]); }},
        {"callRetrieved",
         [](E& e, A const& a) { e.callRetrieved(a.text(0), a[1], a.text(2), a.text(3), a[4], a[5]); }},
        {"featureSuccess", [](E& e, A const& a) { e.featureSuccess(a.text(0), a[1], a[2].as<sfiFeature>()); }},
        {"featureFailed",
         [](E& e, A const& a) {
             e.featureFailed(a.text(0), a[1], a[2].as<sfiFeature>(), a[3].as<sfiFeatureFailure>());
         }},
        {"remoteEndpointDetailsChanged",
         [](E& e, A const& a) {
             e.remoteEndpointDetailsChanged(a.text(0), a[1], a.text(2), a.text(3), a[4], a[5]);
         }},
        {"incomingCallMissed",
         [](E& e, A const& a) {
             e.incomingCallMissed(a.text(0), a[1], a.text(2), a.text(3), a[4].as<sfiReason>(), a.text(5), a.text(6),
                                  a[7].as<sfiForwardReason>());
         }},
        {"callForwarded",
         [](E& e, A const& a) {
             e.callForwarded(a.text(0), a[1], a.text(2), a.text(3), a.text(4), a[5].as<sfiForwardReason>());
         }},
        {"incomingAssociatedCall", [](E& e, A const& a) { e.incomingAssociatedCall(a.text(0), a[1], a[2]); }},
        {"devicesChanged", [](E& e, A const& /*a*/) { e.devicesChanged(); }},
        {"messageWaiting",
         [](E& e, A const& a) {
             e.messageWaiting(a.text(0), a[1].as<sfiMWIServiceType>(), a[2], a[3], a[4], a[5],
                              a[6].as<sfiMWIMessageReturnType>(), a[7].as<sfiMWIAvailableInfo>(),
                              a[8].as<sfiMessagesWaiting>(), a.text(9));
         }},
        {"doNotDisturbSet", [](E& e, A const& a) { e.doNotDisturbSet(a.text(0), a[1]); }},
        {"agentStateSet", [](E& e, A const& a) { e.agentStateSet(a.text(0), a.text(1)); }},
        {"securityStatusChanged", securityStatusChanged},
        {"callRecordingStatus", [](E& e, A const& a) { e.callRecordingStatus(a.text(0), a[1], a.text(2)); }},
        {"preemptionStatusChanged",
         [](E& e, A const& a) {
             e.preemptionStatusChanged(a.text(0), a[1], a[2].as<sfiResourcePriority>(), a[3].as<sfiPreemptionCause>(),
                                       a.text(4));
         }},
        {"impactLevelChanged", [](E& e, A const& a) { e.impactLevelChanged(a.text(0), a[1], a[2]); }},
        {"systemStatusChange", [](E& e, A const& a) { e.systemStatusChange(a.text(0), a.text(1)); }},
        {"serverFeatureStatusChange", [](E& e, A const& a) { e.serverFeatureStatusChange(a.text(0), a.text(1)); }},
        {"b2buaCSTAResponse", [](E& e, A const& a) { e.b2buaCSTAResponse(a.text(0), a[1], a.text(2)); }},
        {"b2buaCSTAEventOrRequest", [](E& e, A const& a) { e.b2buaCSTAEventOrRequest(a.text(0), a.text(1)); }},
        {"conferenceStatusEvent", [](E& e, A const& a) { e.conferenceStatusEvent(a.text(0), a[1], a.text(2)); }},
        {"callCompletionEvent",
         [](E& e, A const& a) {
             e.callCompletionEvent(a.text(0), a.text(1), a[2].as<sfiCallCompletionType>(),
                                   a[3].as<sfiCallCompletionState>(), a[4]);
         }},
        {"callCompletionFailedEvent",
         [](E& e, A const& a) {
             e.callCompletionFailedEvent(a.text(0), a.text(1), a[2].as<sfiCallCompletionFailureType>());
         }},
        {"bluetoothAudioStatusChanged",
         [](E& e, A const& a) { e.bluetoothAudioStatusChanged(a.text(0), a[1], a[2], a[3], a[4]); }},
        {"csCommunicationsServiceEvent", [](E& e, A const& a) { e.csCommunicationsServiceEvent(a.text(0)); }},
    };
    return kOperations;
}

struct Event
{
    std::string operation;
    json content;
};

json const& goldenEvents()
{
    static json const kEvents = json::parse(std::ifstream(GOLDEN_FOLDER "/events.json"));
    return kEvents;
}

std::vector<Event> allEvents()
{
    std::vector<Event> events;
    for (auto const& operation : goldenEvents()) {
        for (auto const& content : operation.at("events")) {
            events.push_back({operation.at("operation"), content});
        }
    }
    return events;
}

std::string nameOf(testing::TestParamInfo<Event> const& info)
{
    return info.param.operation + "_" + info.param.content.at("case").get<std::string>();
}

class GoldenEvent : public testing::TestWithParam<Event>
{};

TEST_P(GoldenEvent, IsSentAsTheWrittenMessage)
{
    RecordedRequest request;
    CommunicationsServiceEventProxy proxy;
    proxy.initProxy(request);

    operations().at(GetParam().operation)(proxy, Arguments(GetParam().content.at("arguments")));

    std::vector<std::string> expected;
    if (!GetParam().content.at("message").is_null()) {
        expected.push_back(GetParam().content.at("message"));
    }
    EXPECT_EQ(request.messages, expected);
}

INSTANTIATE_TEST_SUITE_P(All, GoldenEvent, testing::ValuesIn(allEvents()), nameOf);

TEST(GoldenEvents, HoldEveryDescribedEventInOrder)
{
    std::vector<std::string> written;
    for (auto const& operation : goldenEvents()) {
        written.push_back(operation.at("operation"));
    }
    std::vector<std::string> described;
    for (auto const& description : kEventDescriptions) {
        described.emplace_back(description.operation);
    }
    EXPECT_EQ(written, described);
}

// The elements of a message whose values contain no tags, as names and values; the text after them is named "Body".
std::vector<std::pair<std::string, std::string>> elementsOf(std::string const& message)
{
    std::vector<std::pair<std::string, std::string>> elements;
    std::size_t place = 0;
    while (place < message.size()) {
        auto const start = message.find('>', place) + 1;
        auto const tag = message.substr(place + 1, start - place - 2);
        auto const end = message.find("</" + tag + ">", start);
        elements.emplace_back(tag, message.substr(start, end - start));
        place = end + tag.size() + 3;
    }
    return elements;
}

TEST(GoldenEvents, CarryTheDescribedElementsInOrder)
{
    for (std::size_t index = 0; index < kEventCount; ++index) {
        auto const& description = kEventDescriptions[index];
        auto const& message = goldenEvents().at(index).at("events").at(0).at("message");
        if (description.method.empty()) {
            EXPECT_TRUE(message.is_null());
            continue;
        }
        std::vector<std::string> described = {"Method"};
        for (auto const& element : description.elements) {
            described.emplace_back(element.kind == EventElementKind::body ? "" : element.tag);
        }
        auto const elements = elementsOf(message);
        EXPECT_EQ(elements.front().second, description.method);
        ASSERT_EQ(elements.size(), described.size()) << description.operation;
        for (std::size_t place = 0; place < elements.size(); ++place) {
            if (!described[place].empty()) {
                EXPECT_EQ(elements[place].first, described[place]) << description.operation;
            }
        }
    }
}

// The kinds of a row match the JSON types of the arguments: text, number, truth value.
TEST(GoldenEvents, TakeTheDescribedKindsOfValues)
{
    for (std::size_t index = 0; index < kEventCount; ++index) {
        auto const& description = kEventDescriptions[index];
        auto const& golden = goldenEvents().at(index).at("events");
        auto const& elements = description.elements;
        auto const awkward = golden.size() > 3 ? golden.at(3).value("message", std::string()) : std::string();
        for (auto const& element : elements) {
            auto const& tag = element.tag;
            auto const opening = "<" + std::string(tag) + ">";
            if (element.kind == EventElementKind::cutText) {
                EXPECT_NE(awkward.find(opening + "47</"), std::string::npos) << description.operation;
            }
            if (element.kind == EventElementKind::text && (tag == "LineID" || tag == "lineURI" || tag == "deviceId")) {
                EXPECT_NE(awkward.find(opening + std::string("47\0"
                                                             "11",
                                                             5)),
                          std::string::npos)
                    << description.operation;
            }
            if (element.kind == EventElementKind::integer) {
                auto const place = awkward.find(opening);
                EXPECT_TRUE(awkward.compare(place + opening.size(), 1, "-") == 0 || tag == "ILCallLevel")
                    << description.operation << ' ' << tag;
            }
            if (element.kind == EventElementKind::count) {
                EXPECT_NE(awkward.find(opening + "21474836"), std::string::npos) << tag;
            }
            if (element.kind == EventElementKind::flag) {
                EXPECT_TRUE(awkward.find(opening + "0<") != std::string::npos ||
                            awkward.find(opening + "1<") != std::string::npos)
                    << tag;
            }
            if (element.kind == EventElementKind::list) {
                EXPECT_NE(awkward.find(opening + "["), std::string::npos) << tag;
            }
        }
    }
}
}  // namespace
