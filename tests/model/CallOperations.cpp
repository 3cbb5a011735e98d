// The call operations. Each builds the record, takes the call control's lock in most cases, and returns its result.
#include <functional>

#include "Step.h"

using effect_text::of;

namespace {
std::string text(int number)
{
    return std::to_string(number);
}

// The effects of a locked operation: the record first, then the lock around the call.
std::string bracket(Step& step, std::string const& lineURI, int callID, bool assign,
                    std::function<void(sfiCallInfo const&)> const& inside)
{
    auto const info = step.rules.record(lineURI, callID, assign);
    step.expect("Lock()");
    inside(info);
    step.expect("Unlock()");
    return lineURI;
}

using DirectCall = sfiResult (CommunicationsService::*)(std::string const&, int);

// Operations whose only argument is the call.
void plain(Step& step, char const* method, char const* platformCall, DirectCall direct)
{
    auto const line = step.line();
    int const call = step.callID();
    bracket(step, line, call, true, [&](sfiCallInfo const& info) { step.expect(of(platformCall, info)); });
    step.operation(method, {{"Line", line}, {"CallID", text(call)}}, step.world.answer,
                   [&] { return (step.service().*direct)(line, call); });
}

void acceptCall(Step& step)
{
    auto const line = step.line();
    int const call = step.callID();
    bool const keysetOnly = step.flag();
    int expected = 5;
    if (!keysetOnly) {
        bracket(step, line, call, true, [&](sfiCallInfo const& info) { step.expect(of("CallAccept", info)); });
        expected = step.world.answer;
    } else if (step.world.keysetActive) {
        step.expect(of("keyset.callStateChanged", line, 17, call, 0));
    }
    step.operation("AcceptCall", {{"Line", line}, {"CallID", text(call)}, {"AutoAnswer", text(keysetOnly)}}, expected,
                   [&] { return step.service().acceptCall(line, call, keysetOnly); });
}

void answerCall(Step& step)
{
    auto const line = step.line();
    int const call = step.callID();
    bracket(step, line, call, true, [&](sfiCallInfo const& info) {
        bool const keyset = step.world.keysetActive;
        step.expect(keyset ? of("keyset.answerCall", line) : of("CallAnswer", info));
        if (step.world.answer != sfiSuccess) {
            step.expect(
                "failure: " + (keyset ? "TeamServiceKeyset.answerCall(" + line : "Sfi->CallAnswer() for line " + line) +
                (keyset ? ")" : "") + " failed with code " + text(step.world.answer));
        }
    });
    step.operation("AnswerCall", {{"Line", line}, {"CallID", text(call)}}, step.world.answer,
                   [&] { return step.service().answerCall(line, call); });
}

void sendOn(Step& step, char const* method, int feature,
            sfiResult (CommunicationsService::*direct)(std::string const&, int, char const*))
{
    auto const line = step.line();
    int const call = step.callID();
    auto const target = step.destination();
    if (step.random.oneIn(20)) {
        step.compare("logic error", [&] { return text((step.service().*direct)(line, call, nullptr)); });
        return;
    }
    step.rules.numberFlag(target);
    bracket(step, line, call, true,
            [&](sfiCallInfo const& info) { step.expect(of("CallFeature", info, feature, target, 1)); });
    step.operation(method, {{"Line", line}, {"CallID", text(call)}, {"Destination", target}}, step.world.answer,
                   [&] { return (step.service().*direct)(line, call, target.c_str()); });
}

void holdCall(Step& step)
{
    auto const line = step.line();
    int const call = step.callID();
    int const feature = step.random.between(-1, 6);
    bool const manual = step.flag();
    bracket(step, line, call, true, [&](sfiCallInfo const& info) {
        step.expect(of("SetManualHold", info, manual));
        step.expect(of("CallFeature", info, feature, "", 1));
    });
    step.operation(
        "HoldCall",
        {{"Line", line}, {"CallID", text(call)}, {"HoldCallReason", text(feature)}, {"Manual", text(manual)}},
        step.world.answer,
        [&] { return step.service().holdCall(line, call, static_cast<sfiFeature>(feature), manual); });
}

void retrieveCall(Step& step)
{
    auto const line = step.line();
    int const call = step.callID();
    bool const keyset = step.world.keysetActive;
    bracket(step, line, call, true, [&](sfiCallInfo const& info) {
        step.expect(keyset ? of("keyset.retrieveCall", line, call) : of("CallRetrieve", info));
    });
    step.operation("RetrieveCall", {{"Line", line}, {"CallID", text(call)}}, keyset ? 5 : step.world.answer,
                   [&] { return step.service().retrieveCall(line, call); });
}

void attendedTransfer(Step& step)
{
    auto const line = step.line();
    int const first = step.callID();
    int const second = step.callID();
    bracket(step, line, second, true,
            [&](sfiCallInfo const& info) { step.expect(of("CallFeature", info, 4, "(null)", 1)); });
    step.operation("AttendedTransfer", {{"Line", line}, {"activeCall", text(first)}, {"heldCall", text(second)}},
                   step.world.answer, [&] { return step.service().attendedTransferCall(line, first, second); });
}

void conferenceCall(Step& step)
{
    auto const line = step.line();
    int const first = step.callID();
    int const second = step.callID();
    int const feature = step.random.between(-1, 6);
    bracket(step, line, second, true,
            [&](sfiCallInfo const& info) { step.expect(of("CallFeature", info, feature, "(null)", 1)); });
    step.operation(
        "ConferenceCall",
        {{"Line", line}, {"activeCall", text(first)}, {"heldCall", text(second)}, {"feature", text(feature)}},
        step.world.answer,
        [&] { return step.service().conferenceCall(line, first, second, static_cast<sfiFeature>(feature)); });
}

void refuseCall(Step& step)
{
    auto const line = step.line();
    int const call = step.callID();
    int const reason = step.random.between(-1, 5);
    bracket(step, line, call, true, [&](sfiCallInfo const& info) { step.expect(of("CallRefuse", info, reason)); });
    step.operation("RefuseCall", {{"Line", line}, {"CallID", text(call)}, {"RefuseCallReason", text(reason)}},
                   step.world.answer,
                   [&] { return step.service().refuseCall(line, call, static_cast<sfiRefuseCall>(reason)); });
}

// Clearing never assigns an appearance.
void callClear(Step& step)
{
    auto const line = step.line();
    int const call = step.callID();
    int const cause = step.random.between(-1, 5);
    bracket(step, line, call, false, [&](sfiCallInfo const& info) { step.expect(of("CallClear", info, cause)); });
    step.operation("CallClearRequest", {{"Line", line}, {"CallID", text(call)}, {"Cause", text(cause)}},
                   step.world.answer,
                   [&] { return step.service().callClear(line, call, static_cast<CSTAEventCause>(cause)); });
}

void consultationCall(Step& step)
{
    auto const line = step.line();
    int const call = step.callID();
    auto const target = step.destination();
    if (step.random.oneIn(20)) {
        step.compare("logic error", [&] { return text(step.service().consultationCall(line, call, nullptr)); });
        return;
    }
    bool const flag = step.rules.numberFlag(target);
    auto const info = step.rules.record(line, call, true);
    step.expect(of("CallMake", info, target, 1, 0, false, false, false, flag));
    step.operation("Consult", {{"Line", line}, {"CallID", text(call)}, {"Destination", target}}, step.world.answer,
                   [&] { return step.service().consultationCall(line, call, target.c_str()); });
}

int expectOutgoingCall(Step& step, std::string const& line, int call, std::string const& target, bool dssDirectCall,
                       bool bridgeCall, bool callCompletionCall)
{
    if (!step.rules.mayDial(target.c_str())) {
        return 0;
    }
    bool const flag = step.rules.numberFlag(target);
    if (!step.rules.mayTakeAppearance(line)) {
        step.expect("failure: outgoingCallMake - cannot reserve next appearance for line(" + line + ")");
        return 0;
    }
    auto const info = step.rules.record(line, call, true);
    step.expect(of("CallMake", info, target, 1, 0, dssDirectCall, bridgeCall, callCompletionCall, flag));
    return step.world.answer;
}

void outgoingCallMake(Step& step)
{
    auto const line = step.line();
    int const call = step.callID();
    auto const target = step.destination();
    bool const direct = step.flag();
    bool const bridge = step.flag();
    bool const completion = step.flag();
    if (step.random.oneIn(20)) {
        step.compare(0,
                     [&] { return step.service().outgoingCallMake(line, call, nullptr, direct, bridge, completion); });
        return;
    }
    int const expected = expectOutgoingCall(step, line, call, target, direct, bridge, completion);
    step.operation("OutgoingCallMakeRequest",
                   {{"Line", line},
                    {"CallID", text(call)},
                    {"Destination", target},
                    {"DSSDirectCall", text(direct)},
                    {"BridgeCall", text(bridge)},
                    {"CallCompletionCall", text(completion)}},
                   expected, [&] {
                       return step.service().outgoingCallMake(line, call, target.c_str(), direct, bridge, completion);
                   });
}

int expectPickup(Step& step, std::string const& line, int call, std::string const& target, bool lampField)
{
    if (lampField && !step.rules.mayTakeAppearance(line)) {
        step.expect("failure: directedPickupCall - BLF pickup - cannot reserve next appearance for line(" + line + ")");
        return 0;
    }
    auto const info = step.rules.record(line, call, true);
    if (!lampField && step.world.serverType != 1) {
        if (target.empty() || step.world.pickupURI.empty()) {
            return 0;
        }
        step.expect(of("CallMake", info, step.world.pickupURI + target, 1, 0, false, false, false, false));
        return step.world.answer;
    }
    step.rules.numberFlag(target);
    step.expect("Lock()");
    step.expect(of(lampField ? "features.BLFPickup" : "pickup.request", info, target));
    step.expect("Unlock()");
    return step.world.answer;
}

void directedPickup(Step& step)
{
    auto const line = step.line();
    int const call = step.callID();
    auto const target = step.destination();
    bool const lampField = step.flag();
    int const expected = expectPickup(step, line, call, target, lampField);
    step.operation(
        "DirectedPickupCall",
        {{"Line", line}, {"CallID", text(call)}, {"CallToBePickedUp", target}, {"BLFPickup", text(lampField)}},
        expected, [&] { return step.service().directedPickupCall(line, call, target, lampField); });
}

void generateDigits(Step& step)
{
    auto const line = step.line();
    int const call = step.callID();
    auto const digits = step.destination();
    bracket(step, line, call, true, [&](sfiCallInfo const& info) { step.expect(of("GenerateDigits", info, digits)); });
    step.operation("GenerateDigits", {{"Line", line}, {"activeCall", text(call)}, {"digits", digits}},
                   step.world.answer, [&] { return step.service().generateDigits(line, call, digits.c_str()); });
}

void alternateCalls(Step& step)
{
    auto const line = step.line();
    bracket(step, line, 0, true,
            [&](sfiCallInfo const& info) { step.expect(of("CallFeature", info, 0, "(null)", 1)); });
    step.operation("AlternateCalls", {{"Line", line}}, step.world.answer,
                   [&] { return step.service().alternateCalls(line); });
}

// The one operation that takes the lock before it builds the record.
void securityChange(Step& step)
{
    auto const line = step.line();
    int const call = step.callID();
    bool const secure = step.flag();
    step.expect("Lock()");
    auto const info = step.rules.record(line, call, true);
    step.expect(of("SecurityChange", info, secure));
    step.expect("Unlock()");
    step.operation("makeSecurityChangeReinvite", {{"Line", line}, {"CallID", text(call)}, {"forceFlag", text(secure)}},
                   step.world.answer, [&] { return step.service().makeSecurityChangeReinvite(line, call, secure); });
}

void cancelCallbacks(Step& step)
{
    auto const line = step.line();
    int const call = step.callID();
    auto const target = step.destination();
    int const type = step.random.between(-1, 3);
    bool const shown = step.flag();
    bracket(step, line, call, true,
            [&](sfiCallInfo const& info) { step.expect(of("CancelCallbacks", info, target, type, shown)); });
    step.operation("CancelCallbacks",
                   {{"Line", line},
                    {"CallID", text(call)},
                    {"URI", target},
                    {"CancelCallBackType", text(type)},
                    {"DisplayOutcomeCallUI", text(shown)}},
                   step.world.answer, [&] {
                       return step.service().cancelCallbacks(line, call, target,
                                                             static_cast<sfiCancelCallBackType>(type), shown);
                   });
}

void manualHoldIndication(Step& step)
{
    auto const line = step.line();
    int const call = step.callID();
    bracket(step, line, call, true, [&](sfiCallInfo const& info) { step.expect(of("GetManualHold", info)); });
    bool const held = step.world.answer != sfiFailure;
    if (step.flag()) {
        step.request("getManualHoldIndication", {{"Line", line}, {"CallID", text(call)}}, held ? "true" : "false");
    } else {
        step.compare(held, [&] { return step.service().getManualHoldIndication(line, call); });
    }
}
}  // namespace

std::vector<Operation> const& callOperations()
{
    using Comms = CommunicationsService;
    static std::vector<Operation> const kOperations = {
        {"acceptCall", 3, acceptCall},
        {"answerCall", 3, answerCall},
        {"deflectCall", 2, [](Step& step) { sendOn(step, "DeflectCall", 1, &Comms::deflectCall); }},
        {"holdCall", 3, holdCall},
        {"retrieveCall", 3, retrieveCall},
        {"attendedTransferCall", 2, attendedTransfer},
        {"blindTransferCall", 2, [](Step& step) { sendOn(step, "BlindTransfer", 2, &Comms::blindTransferCall); }},
        {"refuseCall", 2, refuseCall},
        {"callClear", 4, callClear},
        {"consultationCall", 3, consultationCall},
        {"generateDigits", 2, generateDigits},
        {"groupPickupCall", 2,
         [](Step& step) { plain(step, "GroupPickupCall", "GroupPickup", &Comms::groupPickupCall); }},
        {"activateCallbackRinging", 1,
         [](Step& step) {
             plain(step, "ActivateCallbackRinging", "CallbackRinging", &Comms::activateCallbackRinging);
         }},
        {"activateCallbackBusy", 1,
         [](Step& step) { plain(step, "ActivateCallbackBusy", "CallbackBusy", &Comms::activateCallbackBusy); }},
        {"getManualHoldIndication", 2, manualHoldIndication},
        {"conferenceCall", 2, conferenceCall},
        {"alternateCalls", 2, alternateCalls},
        {"makeSecurityChangeReinvite", 2, securityChange},
        {"cancelCallbacks", 2, cancelCallbacks},
        {"outgoingCallMake", 6, outgoingCallMake},
        {"directedPickupCall", 4, directedPickup},
    };
    return kOperations;
}
