// Queries about the service, the telephone and its lines, and operations that are only passed on.
#include <array>

#include "Step.h"

using effect_text::of;

namespace {
std::string text(int number)
{
    return std::to_string(number);
}

std::string truth(int result, bool value)
{
    return resultWord(result) + (value ? ",true" : ",false");
}

// A line with its data, or null.
FakeLine* configured(World& world, std::string const& uri)
{
    FakeLine* const line = world.line(uri);
    return line != nullptr && line->hasData ? line : nullptr;
}

void linePresentation(Step& step)
{
    auto const uri = step.line();
    FakeLine* const line = configured(step.world, uri);
    auto& service = step.service();
    std::string expected = line == nullptr ? "0 0 1 0 -1" : "";
    if (line != nullptr) {
        int const n = line->number;
        expected =
            text(n + 1) + " " + text(n + 2) + " " + text(n + 3) + " " + text(line->primary != 0) + " " + text(n + 4);
    }
    step.compare(expected, [&] {
        return text(service.getLineRing(uri)) + " " + text(service.getLineRingDelay(uri)) + " " +
               text(service.getOverviewPosition(uri)) + " " + text(service.getVisibleOnOverview(uri)) + " " +
               text(service.getLineAudibleAlert(uri));
    });
}

void lineTexts(Step& step)
{
    auto const uri = step.line();
    FakeLine* const line = step.world.line(uri);
    FakeLine* const data = configured(step.world, uri);
    auto& service = step.service();
    auto const remote = line == nullptr ? "" : "remote of " + uri;
    auto const description = data == nullptr ? "" : "description of " + uri;
    auto const digits = data != nullptr && data->hotWarmType != 0 ? data->hotWarmDigits : "";
    auto const state = line == nullptr ? 0 : static_cast<int>(line->state);
    step.compare(remote + "|" + description + "|" + digits + "|" + text(state), [&] {
        return service.getRemoteURI(uri) + "|" + service.getShortDescription(uri) + "|" +
               service.getHotWarmLineDialInfo(uri) + "|" + text(service.getState(uri));
    });
}

void primary(Step& step)
{
    auto const uri = step.line();
    FakeLine* const line = configured(step.world, uri);
    int expected = !uri.empty() && uri == step.world.phoneNumber;
    if (step.rules.isKeyset()) {
        expected = line == nullptr ? 0 : line->primary;
    }
    step.compare(expected, [&] { return step.service().getPrimary(uri); });
}

void lineOfKey(Step& step)
{
    int const key = step.key();
    auto const found = step.world.keyLines.find(key);
    FakeLine* const line = found == step.world.keyLines.end() ? nullptr : configured(step.world, found->second);
    step.compare(line == nullptr ? "" : line->uri, [&] { return step.service().getURIforFPK(key); });
}

void hotWarmStatus(Step& step)
{
    auto const uri = step.line();
    FakeLine* const line = step.world.line(uri);
    int expected = 5;
    if (line == nullptr) {
        expected = !step.world.keysetActive && step.world.number > 0 ? 5 : 0;
    } else if (line->state == eLineStateSelected) {
        expected = line->hasData ? line->hotWarmType : 0;
    }
    step.compare(expected, [&] { return step.service().getHotWarmLineStatus(uri); });
}

void retrieveRemotelyHeld(Step& step)
{
    auto const uri = step.line();
    FakeLine* const line = step.world.line(uri);
    int expected = 0;
    if (line != nullptr && (line->state == 10 || line->state == 12)) {
        step.expect(of("line.retrieve", uri));
        expected = step.world.answer;
    }
    step.compare(expected, [&] { return step.service().retrieveRemotelyHeldCall(uri); });
}

void systemStatus(Step& step)
{
    static std::array<std::string, 6> const kStatuses = {"CallView-Normal",    "MessagesPhonelet-Normal",
                                                         "CallViewMWI-Normal", "CallViewMWI-Normal-NoMessagesPhonelet",
                                                         "callview-normal",    ""};
    auto const place = step.random.below(6);
    auto const& status = kStatuses[static_cast<std::size_t>(place)];
    auto const info = step.word();
    if (place == 0) {
        step.expect(of("NotifyViewState", 6));
    } else if (place < 4) {
        step.expect(of("SystemStatus", status, info, 0));
    }
    step.operation("SystemStatus", {{"SystemStatus", status}, {"SystemStatusInfo", info}}, place < 4 ? 5 : 0,
                   [&] { return step.service().systemStatus(status.c_str(), info.c_str()); });
}

void serviceState(Step& step)
{
    static std::array<std::string, 3> const kStates = {"sfiServiceInService", "sfiServiceOutOfService",
                                                       "sfiServiceDoNotDisturb"};
    if (step.flag()) {
        int const state = step.world.number;
        auto const word = state < 0 || state > 2 ? "" : "," + kStates[static_cast<std::size_t>(state)];
        step.request("GetServiceState", {}, resultWord(step.world.answer) + word);
        return;
    }
    int const place = step.random.below(3);
    step.expect(of("SetServiceState", place));
    step.operation("SetServiceState", {{"state", kStates[static_cast<std::size_t>(place)]}}, step.world.answer,
                   [&] { return step.service().setServiceState(static_cast<sfiServiceState>(place)); });
}

void mute(Step& step)
{
    if (step.flag()) {
        step.request("GetMicrophoneMute", {}, truth(step.world.answer, step.world.yes));
        return;
    }
    bool const on = step.flag();
    step.expect(of("SetMute", on));
    step.operation("SetMicrophoneMute", {{"Status", text(on)}}, step.world.answer,
                   [&] { return step.service().setMicrophoneMute(on); });
}

void doNotDisturb(Step& step)
{
    step.request("GetDoNotDisturb", {{"deviceID", step.line()}}, truth(step.world.answer, step.world.dndActive));
}

void devices(Step& step)
{
    std::string expected;
    bool some = true;
    if (step.rules.isKeyset()) {
        for (auto const& device : step.world.deviceList) {
            expected += device;
        }
        some = !expected.empty();
    } else {
        some = !step.world.registrationId.empty();
        expected = "<prime:" + step.world.registrationId + ">";
    }
    if (!step.world.cpuAddress.empty()) {
        expected += "<groupPickup:" + step.world.cpuAddress + ">";
    }
    step.request("GetDevices", {}, some ? expected : "sfiFailure");
}

void messageWaiting(Step& step)
{
    step.expect(of("GetMessageWaiting", step.world.phoneNumber, 0, 0, 0));
    step.request("GetMessageWaitingIndicator", {},
                 "<Type>1</Type><newMsgs>2</newMsgs><oldMsgs>3</oldMsgs><newUrgMsgs>4</newUrgMsgs>"
                 "<oldUrgMsgs>5</oldUrgMsgs><return_type>6</return_type><available_info>7</available_info>"
                 "<messages_waiting>8</messages_waiting><voiceMailNumber>" +
                     step.world.voiceMailURI + "</voiceMailNumber><func_return_val>sfiSuccess</func_return_val>");
}

void csta(Step& step)
{
    auto const line = step.line();
    auto const body = step.word();
    int const which = step.random.below(3);
    if (which == 0) {
        bool const on = step.flag();
        step.expect(of("ServerFeatures", line, on));
        step.request("InitializeOrFinalizeServerFeatures", {{"Line", line}, {"initialize", text(on)}}, std::nullopt);
    } else if (which == 1) {
        step.expect(of("SendCSTARequest", line, body));
        step.compare(step.world.answer, [&] { return step.service().SendCSTARequest(line, body); });
    } else {
        step.expect(of("UACSTAMessage", "<Body>" + body + "</Body>"));
        step.request("SendUACSTAServerMessage", {{"Line", line}, {"Body", body}}, "UACSTA message is sent.");
    }
}

void passedOn(Step& step)
{
    auto const line = step.line();
    bool const flag = step.flag();
    int const number = step.callID();
    auto word = step.word();
    auto& service = step.service();
    switch (step.random.below(10)) {
    case 0:
        step.expect(of("keyset.callIgnored", line));
        step.expect(of("keyset.callIsolation", line, flag));
        step.act([&] {
            service.callIgnored(line);
            service.callIsolation(line, flag);
        });
        break;
    case 1:
        step.expect(of("keyset.setIsInServiceInitiatedState", line, flag));
        step.request("setIsInServiceInitiatedState",
                     {{"Line", line}, {"IsInServiceInitiatedState", flag ? "TRUE" : "true"}}, std::nullopt);
        break;
    case 2:
        step.expect(of("features.callbackDOFeatureCallID", word, number));
        step.request("callbackDOFeatureCallID", {{"CallID", word}, {"instanceId", text(number)}}, std::nullopt);
        break;
    case 3:
        step.expect(of("features.push", word, line));
        step.act([&] {
            auto data = line;
            service.pushRequest(word, data);
        });
        break;
    case 4:
        step.expect(of("toggle.keyPressed", number));
        step.expect(of("keyset.initiateBCA", line, word));
        step.act([&] {
            service.ftToggleKeyPressed(number);
            service.initiateBCAOutgoingCall(line, word);
        });
        break;
    case 5:
        step.expect(of("SetAssociatedCalls", flag));
        step.operation("setAssociatedCalls", {{"associated", text(flag)}}, 5,
                       [&] { return service.setAssociatedCalls(flag); });
        break;
    case 6:
        step.expect(of(flag ? "recording.activate" : "recording.deactivate", line));
        step.compare(step.world.yes,
                     [&] { return flag ? service.activateRecording(line) : service.deactivateRecording(line); });
        break;
    case 7: {
        FakeLine* const found = step.world.line(line);
        step.expect(of("bridgeCall", found == nullptr ? "none" : found->hasData ? "line" : "bare"));
        step.compare(step.world.yes, [&] { return service.bridgeCall(line); });
        break;
    }
    case 8:
        step.expect(of("keyset.unreserveLine", line));
        step.expect(of("keyset.reserveNextSCA", line));
        step.compare(1 + 2 * step.world.yes,
                     [&] { return service.unreserveLine(line) + 2 * service.reserveNextSCA(line); });
        break;
    default:
        step.expect(of("keyset.setImmediateRing", flag));
        step.expect("keyset.terminatePreview()");
        step.compare(step.world.number, [&] {
            service.setImmediateRing(flag);
            service.terminatePreview();
            return service.getIncomingCallPriority(line);
        });
    }
}
}  // namespace

std::vector<Operation> const& queryOperations()
{
    static std::vector<Operation> const kOperations = {
        {"line presentation", 2, linePresentation},
        {"line texts", 2, lineTexts},
        {"getPrimary", 2, primary},
        {"getURIforFPK", 1, lineOfKey},
        {"getHotWarmLineStatus", 2, hotWarmStatus},
        {"retrieveRemotelyHeldCall", 2, retrieveRemotelyHeld},
        {"systemStatus", 2, systemStatus},
        {"service state", 2, serviceState},
        {"microphone mute", 1, mute},
        {"getDoNotDisturb", 1, doNotDisturb},
        {"getDevices", 1, devices},
        {"getMessageWaitingIndicator", 1, messageWaiting},
        {"CSTA", 2, csta},
        {"passed on", 4, passedOn},
    };
    return kOperations;
}
