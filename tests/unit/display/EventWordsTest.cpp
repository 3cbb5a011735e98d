// What people read of each event: the words and labels of all its elements.
#include <algorithm>
#include <iterator>

#include <gtest/gtest.h>

#include "DisplayTexts.h"
#include "telephone/display/ElementWords.h"

namespace telephone {
namespace {

// The event with this value for every number, flag and enumeration, and the name of its element for every text.
std::string eventWith(std::string_view method, std::string_view number)
{
    test::Values values;
    for (auto const& each : findEventDescription(method)->elements) {
        bool const isText = each.kind == EventElementKind::text || each.kind == EventElementKind::cutText ||
                            each.kind == EventElementKind::list || each.kind == EventElementKind::body;
        values[each.tag] = isText ? each.tag : number;
    }
    return test::eventText(method, values);
}

struct Row
{
    std::string_view method;
    std::string_view ones;   // in words, if every number is 1
    std::string_view twos;   // 2
    std::string_view zeros;  // 0
};

// clang-format off
constexpr Row kRows[] = {
    {"CallStateChangeEvent",
     R"(CallStateChangeEvent LineID call 1: dialling, "Name" URI, busy, digits as events, caller "GPUCLGName" GPUCLG, called "GPUCLDName" GPUCLD, precedence routine, preempted: user agent, "PreemptionText", call-back possible, call level 1, local level 1)",
     R"(CallStateChangeEvent LineID call 2: proceeding, "Name" URI, no answer, digits as INFO, caller "GPUCLGName" GPUCLG, called "GPUCLDName" GPUCLD, precedence priority, preempted: reserved resources, "PreemptionText", call level 2, local level 2)",
     R"(CallStateChangeEvent LineID: idle, "Name" URI, caller "GPUCLGName" GPUCLG, called "GPUCLDName" GPUCLD, "PreemptionText")"},
    {"RegistrationStateChangeEvent",
     R"(RegistrationStateChangeEvent LineID call 1: registered, unauthorised)",
     R"(RegistrationStateChangeEvent LineID call 2: not registered, refused)",
     R"(RegistrationStateChangeEvent LineID: not registered)"},
    {"IncomingCallEvent",
     R"(IncomingCallEvent LineID call 1: incoming call, "Name" URI, ring tone "AlertInformation_AlertURI", ringing "AlertInformation_InfoParam", to be answered automatically, internal, diverted by "DiversionName" DiversionURI, diversion reason unconditional, precedence routine, call level 1, local level 1, video)",
     R"(IncomingCallEvent LineID call 2: incoming call, "Name" URI, ring tone "AlertInformation_AlertURI", ringing "AlertInformation_InfoParam", external, diverted by "DiversionName" DiversionURI, diversion reason busy, precedence priority, call level 2, local level 2)",
     R"(IncomingCallEvent LineID: incoming call, "Name" URI, ring tone "AlertInformation_AlertURI", ringing "AlertInformation_InfoParam", diverted by "DiversionName" DiversionURI)"},
    {"IncomingPickupCallEvent",
     R"(IncomingPickupCallEvent LineID call 1: picked up, "Name" URI)",
     R"(IncomingPickupCallEvent LineID call 2: picked up, "Name" URI)",
     R"(IncomingPickupCallEvent LineID: picked up, "Name" URI)"},
    {"CallHeldEvent",
     R"(CallHeldEvent LineID call 1: held)",
     R"(CallHeldEvent LineID call 2: held)",
     R"(CallHeldEvent LineID: held)"},
    {"CallRetrievedEvent",
     R"(CallRetrievedEvent LineID call 1: retrieved, "Name" URI, call level 1, local level 1, at a media server)",
     R"(CallRetrievedEvent LineID call 2: retrieved, "Name" URI, call level 2, local level 2)",
     R"(CallRetrievedEvent LineID: retrieved, "Name" URI)"},
    {"FeatureSuccessEvent",
     R"(FeatureSuccessEvent LineID call 1: feature done, deflect)",
     R"(FeatureSuccessEvent LineID call 2: feature done, blind transfer)",
     R"(FeatureSuccessEvent LineID: feature done, alternate)"},
    {"FeatureFailedEvent",
     R"(FeatureFailedEvent LineID call 1: feature failed, deflect, refused)",
     R"(FeatureFailedEvent LineID call 2: feature failed, blind transfer, timeout)",
     R"(FeatureFailedEvent LineID: feature failed, alternate)"},
    {"RemoteEndpointDetailsChangedEvent",
     R"(RemoteEndpointDetailsChangedEvent LineID call 1: party changed, "Name" URI, out of the conference, in a conference)",
     R"(RemoteEndpointDetailsChangedEvent LineID call 2: party changed, "Name" URI)",
     R"(RemoteEndpointDetailsChangedEvent LineID: party changed, "Name" URI)"},
    {"IncomingCallMissedEvent",
     R"(IncomingCallMissedEvent LineID call 1: missed, "Name" URI, busy, diverted by "DiversionName" DiversionURI, diversion reason unconditional)",
     R"(IncomingCallMissedEvent LineID call 2: missed, "Name" URI, no answer, diverted by "DiversionName" DiversionURI, diversion reason busy)",
     R"(IncomingCallMissedEvent LineID: missed, "Name" URI, diverted by "DiversionName" DiversionURI)"},
    {"CallForwardedEvent",
     R"(CallForwardedEvent LineID call 1: forwarded, "CallingPartyName" CallingParty, to NewDestination, unconditional)",
     R"(CallForwardedEvent LineID call 2: forwarded, "CallingPartyName" CallingParty, to NewDestination, busy)",
     R"(CallForwardedEvent LineID: forwarded, "CallingPartyName" CallingParty, to NewDestination)"},
    {"IncomingAssociatedCallEvent",
     R"(IncomingAssociatedCallEvent LineID call 1: associated call, 1)",
     R"(IncomingAssociatedCallEvent LineID call 2: associated call, 2)",
     R"(IncomingAssociatedCallEvent LineID call 0: associated call)"},
    {"DevicesChangedEvent",
     R"(DevicesChangedEvent: devices changed)",
     R"(DevicesChangedEvent: devices changed)",
     R"(DevicesChangedEvent: devices changed)"},
    {"messageWaitingEvent",
     R"(messageWaitingEvent LineID: mailbox, 1 new, 1 old, 1 new urgent, 1 old urgent, flag only known, messages waiting, number voiceMailNumber)",
     R"(messageWaitingEvent LineID: mailbox, fax, 2 new, 2 old, 2 new urgent, 2 old urgent, return type 2?, waiting 2?, number voiceMailNumber)",
     R"(messageWaitingEvent LineID: mailbox, nothing known, no messages, number voiceMailNumber)"},
    {"DoNotDisturbEvent",
     R"(DoNotDisturbEvent deviceId: do-not-disturb, on)",
     R"(DoNotDisturbEvent deviceId: do-not-disturb, off)",
     R"(DoNotDisturbEvent deviceId: do-not-disturb, off)"},
    {"AgentStateEvent",
     R"(AgentStateEvent deviceId: agent, agentState?)",
     R"(AgentStateEvent deviceId: agent, agentState?)",
     R"(AgentStateEvent deviceId: agent, agentState?)"},
    {"securityStatusChanged",
     R"(securityStatusChanged lineURI call 1: security, plain, recorded: call CallIDsRecorded, line CallLineURIsRecorded)",
     R"(securityStatusChanged lineURI call 2: security, secure, recorded: call CallIDsRecorded, line CallLineURIsRecorded)",
     R"(securityStatusChanged lineURI: security, unknown, recorded: call CallIDsRecorded, line CallLineURIsRecorded)"},
    {"callRecordingStatusEvent",
     R"(callRecordingStatusEvent LineID call 1: recording, callRecorded?)",
     R"(callRecordingStatusEvent LineID call 2: recording, callRecorded?)",
     R"(callRecordingStatusEvent LineID: recording, callRecorded?)"},
    {"preemptionStatusChanged",
     R"(preemptionStatusChanged lineURI call 1: preemption, routine, cause user agent, "reason")",
     R"(preemptionStatusChanged lineURI call 2: preemption, priority, cause reserved resources, "reason")",
     R"(preemptionStatusChanged lineURI: preemption, "reason")"},
    {"impactLevelChanged",
     R"(impactLevelChanged lineURI call 1: impact level, call 1, local 1)",
     R"(impactLevelChanged lineURI call 2: impact level, call 2, local 2)",
     R"(impactLevelChanged lineURI: impact level)"},
    {"systemStatusEvent",
     R"(systemStatusEvent: system status, status?, "statusInfo")",
     R"(systemStatusEvent: system status, status?, "statusInfo")",
     R"(systemStatusEvent: system status, status?, "statusInfo")"},
    {"serverFeatureStatusEvent",
     R"(serverFeatureStatusEvent lineURI: server features, status?)",
     R"(serverFeatureStatusEvent lineURI: server features, status?)",
     R"(serverFeatureStatusEvent lineURI: server features, status?)"},
    {"b2buaCSTAResponse",
     R"(b2buaCSTAResponse lineURI: server answered, success, 4 bytes)",
     R"(b2buaCSTAResponse lineURI: server answered, failure, 4 bytes)",
     R"(b2buaCSTAResponse lineURI: server answered, failure, 4 bytes)"},
    {"b2buaCSTAEventOrRequest",
     R"(b2buaCSTAEventOrRequest lineURI: server says, 4 bytes)",
     R"(b2buaCSTAEventOrRequest lineURI: server says, 4 bytes)",
     R"(b2buaCSTAEventOrRequest lineURI: server says, 4 bytes)"},
    {"conferenceStatusEvent",
     R"(conferenceStatusEvent LineID call 1: conference, document names nobody, 10 bytes)",
     R"(conferenceStatusEvent LineID call 2: conference, document names nobody, 10 bytes)",
     R"(conferenceStatusEvent LineID: conference, document names nobody, 10 bytes)"},
    {"callCompletionEvent",
     R"(callCompletionEvent LineID: call-back, URI, busy, ready, outcome shown)",
     R"(callCompletionEvent LineID: call-back, URI, type 2?, cancelled)",
     R"(callCompletionEvent LineID: call-back, URI, no reply, activated)"},
    {"callCompletionFailedEvent",
     R"(callCompletionFailedEvent LineID: call-back failed, URI, timeout)",
     R"(callCompletionFailedEvent LineID: call-back failed, URI, ended)",
     R"(callCompletionFailedEvent LineID: call-back failed, URI, refused)"},
    {"bluetoothAudioStatusChanged",
     R"(bluetoothAudioStatusChanged LineID call 1: bluetooth, audio on, as gateway, in-band ringing)",
     R"(bluetoothAudioStatusChanged LineID call 2: bluetooth, audio off)",
     R"(bluetoothAudioStatusChanged LineID: bluetooth, audio off)"},
};
// clang-format on

TEST(EventWords, EveryEvent_SaysWhatItsElementsMean)
{
    for (auto const& [method, ones, twos, zeros] : kRows) {
        EXPECT_EQ(eventInWords(eventWith(method, "1"), test::options()), ones);
        EXPECT_EQ(eventInWords(eventWith(method, "2"), test::options()), twos);
        EXPECT_EQ(eventInWords(eventWith(method, "0"), test::options()), zeros);
    }
}

TEST(EventWords, CommaBehindABackslash_BelongsToItsItem)
{
    auto const lines = [](std::string_view list) {
        std::string const text = eventInWords(
            test::eventText("securityStatusChanged", {{"lineURI", "4711"}, {"CallLineURIsRecorded", list}}),
            test::options());
        return text.substr(text.rfind(": security, unknown") + 19);
    };
    EXPECT_EQ(lines("a,b"), ", lines a and b");
    EXPECT_EQ(lines(R"(a\,b,c)"), ", lines a,b and c");
    EXPECT_EQ(lines(R"(a,b\,)"), ", lines a and b,");
    EXPECT_EQ(lines(R"(a,b\)"), R"(, lines a and b\)");
    EXPECT_EQ(lines(""), "");
}

TEST(EventWords, EveryEvent_HasARowHere)
{
    auto const events = std::count_if(std::begin(kEventDescriptions), std::end(kEventDescriptions),
                                      [](auto const& each) { return !each.method.empty(); });
    EXPECT_EQ(static_cast<std::ptrdiff_t>(std::size(kRows)), events);
}

}  // namespace
}  // namespace telephone
