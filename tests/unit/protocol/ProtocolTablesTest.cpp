// The tables in include/ against the golden texts, and against what the tables promise their readers.
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "CommunicationsServiceEvents.h"
#include "CommunicationsServiceRequests.h"
#include "telephone/protocol/Phrases.h"
#include "telephone/protocol/Vocabulary.h"

namespace telephone {
namespace {

using nlohmann::json;

json golden(char const* file)
{
    return json::parse(std::ifstream(std::string(GOLDEN_FOLDER "/") + file));
}

// Calls `check(where, element)` for every parameter of a request and every element of an answer and of an event.
template <typename Check>
void forEachElement(Check check)
{
    for (auto const& request : kRequestDescriptions) {
        for (auto const& parameter : request.parameters) {
            check(std::string(request.name), parameter);
        }
        for (auto const& element : request.answerElements) {
            check(std::string(request.name), element);
        }
    }
    for (auto const& event : kEventDescriptions) {
        for (auto const& element : event.elements) {
            check(std::string(event.operation), element);
        }
    }
}

std::string tag(std::string_view name, char const* slash = "")
{
    return "<" + std::string(slash) + std::string(name) + ">";
}

// What is left of an event's text when the elements of its row are taken from the front. A value may hold anything, its
// own closing tag too, so the one before the next element counts.
std::string restOf(std::string text, EventDescription const& event)
{
    text.erase(0, tag("Method").size() + event.method.size() + tag("Method", "/").size());
    for (auto const* element = event.elements.begin(); element != event.elements.end(); ++element) {
        if (element->kind == EventElementKind::body) {
            return {};
        }
        bool const isLast = element + 1 == event.elements.end();
        bool const isFollowedByTag = !isLast && (element + 1)->kind != EventElementKind::body;
        std::string const closing = tag(element->tag, "/");
        auto const end =
            isLast ? text.rfind(closing) : text.find(closing + (isFollowedByTag ? tag((element + 1)->tag) : ""));
        if (text.rfind(tag(element->tag), 0) != 0 || end == std::string::npos) {
            return text;
        }
        text.erase(0, end + closing.size());
    }
    return text;
}

TEST(ProtocolTables, EveryEventButFourIsSentByThisTelephone)
{
    std::map<EventSource, std::string> names;
    for (auto const& event : kEventDescriptions) {
        names[event.source] += std::string(event.operation) + " ";
        EXPECT_EQ(event.method.empty(), event.source == EventSource::nobody) << event.operation;
    }

    EXPECT_EQ(names[EventSource::nobody], "csCommunicationsServiceEvent ");
    EXPECT_EQ(names[EventSource::otherTelephones], "devicesChanged impactLevelChanged bluetoothAudioStatusChanged ");
}

TEST(ProtocolTables, EveryNumberHasAnEnumerationOrSaysWhatItCounts)
{
    forEachElement([](std::string const& where, auto const& element) {
        bool const isNumber = kindName(element.kind) == "number";
        EXPECT_TRUE(!isNumber || element.values != nullptr || !element.form.empty()) << where << " " << element.tag;
    });
}

TEST(ProtocolTables, NumbersWithoutEnumerationAreIdsCountsAndLevels)
{
    std::string forms;
    forEachElement([&forms](std::string const&, auto const& element) {
        std::string const form = std::string(element.form) + "; ";
        bool const isBare = kindName(element.kind) == "number" && element.values == nullptr;
        forms += isBare && forms.find(form) == std::string::npos ? form : "";
    });

    EXPECT_EQ(forms, "call id; number of messages; number of rings; number of a feature instance; impact level; ");
}

TEST(ProtocolTables, EveryMeaningIsASentence)
{
    forEachElement([](std::string const& where, auto const& element) {
        ASSERT_FALSE(element.meaning.empty()) << where << " " << element.tag;
        EXPECT_EQ(element.meaning.back(), '.') << where << " " << element.tag;
    });
    for (auto const* const enumeration : kEnumerations) {
        for (auto const& value : *enumeration) {
            EXPECT_EQ(value.meaning.back(), '.') << enumeration->name << " " << value.name;
        }
    }
}

TEST(ProtocolTables, EnumerationsHoldAsManyValuesAsTheirTypes)
{
    std::string counts;
    for (auto const* const enumeration : kEnumerations) {
        counts += std::string(enumeration->name) + " " + std::to_string(enumeration->count) + "\n";
    }

    EXPECT_EQ(counts, "CallState 16\nReason 15\nForwardReason 7\nSendOptions 3\nCallType 5\nResourcePriority 6\n"
                      "PreemptionCause 5\nSecurityStatus 3\nRecordingStatus 2\nRegistrationResult 5\nFeature 14\n"
                      "FeatureFailure 6\nRefuseCall 5\nEventCause 6\nForwardingType 10\nCallCompletionType 2\n"
                      "CallCompletionState 4\nCallCompletionFailureType 3\nCancelCallBackType 3\nMWIServiceType 3\n"
                      "MWIMessageReturnType 2\nMWIAvailableInfo 3\nMessagesWaiting 2\nServiceState 3\nAgentState 5\n"
                      "ServerFeatureStatus 3\nSystemStatus 4\nLamp 2\nLampMode 4\nResult 6\n");
}

TEST(ProtocolTables, EveryEnumerationIsUsed)
{
    for (auto const* const enumeration : kEnumerations) {
        bool used = false;
        forEachElement([&](std::string const&, auto const& element) { used = used || element.values == enumeration; });
        EXPECT_TRUE(used) << enumeration->name;
    }
}

TEST(ProtocolTables, EverySampleIsAValueOfItsEnumeration)
{
    for (auto const& request : kRequestDescriptions) {
        for (auto const& parameter : request.parameters) {
            if (parameter.values != nullptr) {
                EXPECT_EQ(nameOfValue(*parameter.values, parameter.sample).find('?'), std::string::npos)
                    << request.name << " " << parameter.tag;
            }
        }
    }
}

TEST(ProtocolTables, SamplesOfTheRequestsWithABody_EndWithIt)
{
    EXPECT_EQ(sampleOf(*findRequestDescription("SendCSTARequest")),
              "<Method>SendCSTARequest</Method><Line>4711</Line>"
              "<MonitorStart><monitorObject><deviceObject>4711</deviceObject></monitorObject></MonitorStart>");
    EXPECT_EQ(sampleOf(*findRequestDescription("SendUACSTAServerMessage")),
              "<Method>SendUACSTAServerMessage</Method><Line>4711</Line>"
              "<MonitorStart><monitorObject><deviceObject>4711</deviceObject></monitorObject></MonitorStart>");
}

TEST(ProtocolTables, GoldenEvents_ConsistOfTheElementsOfTheirRowsInOrder)
{
    json const events = golden("events.json");
    ASSERT_EQ(events.size(), kEventCount);
    for (std::size_t row = 0; row < events.size(); ++row) {
        EventDescription const& description = kEventDescriptions[row];
        EXPECT_EQ(events[row].at("operation"), description.operation);
        for (auto const& event : events[row].at("events")) {
            if (!event.at("message").is_null()) {
                EXPECT_EQ(restOf(event.at("message"), description), "")
                    << description.operation << " " << event.at("case");
            }
        }
    }
}

// The tags of a request that holds no tags in its values.
std::vector<std::string> tagsOf(std::string const& request)
{
    std::vector<std::string> tags;
    std::size_t place = 0;
    while ((place = request.find('<', place)) != std::string::npos) {
        auto const end = request.find('>', place);
        std::string const name = request.substr(place + 1, end - place - 1);
        std::string const closing = tag(name, "/");
        auto const found = request.find(closing, end);
        tags.push_back(name);
        place = found == std::string::npos ? end : found + closing.size();
    }
    return tags;
}

TEST(ProtocolTables, GoldenRequests_HaveTheParametersOfTheirRows)
{
    json const requests = golden("requests.json");
    ASSERT_EQ(requests.size(), kRequestCount);
    for (std::size_t row = 0; row < requests.size(); ++row) {
        RequestDescription const& description = kRequestDescriptions[row];
        std::string expected = "Method ";
        bool hasBody = false;
        for (auto const& parameter : description.parameters) {
            hasBody = hasBody || parameter.kind == RequestParameterKind::body;
            expected += parameter.kind == RequestParameterKind::body ? "" : std::string(parameter.tag) + " ";
        }
        std::string found;
        for (auto const& name : tagsOf(requests[row].at("exchanges").at(0).at("request"))) {
            found += name + " ";
        }
        EXPECT_EQ(requests[row].at("method"), description.name);
        EXPECT_EQ(hasBody ? found.substr(0, expected.size()) : found, expected);
    }
}

}  // namespace
}  // namespace telephone
