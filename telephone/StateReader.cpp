#include "telephone/StateReader.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "platform/sfi/CSfi.h"
#include "telephone/calls/CallEngine.h"
#include "telephone/lines/Accounts.h"
#include "telephone/lines/LineStates.h"
#include "telephone/lines/Lines.h"
#include "telephone/management/Settings.h"
#include "telephone/physical/PhysicalInterface.h"
#include "telephone/protocol/Vocabulary.h"
#include "telephone/recording/CallRecorder.h"
#include "telephone/sfi/SettingsCallPolicy.h"
#include "telephone/time/SteadyClock.h"

namespace telephone {

namespace {

std::optional<double> milliseconds(std::optional<std::chrono::microseconds> const& duration)
{
    return duration ? std::optional(static_cast<double>(duration->count()) / 1000) : std::nullopt;
}

AudioState stateOf(sip::AudioStatistics const& audio)
{
    AudioState state;
    state.sent = audio.sent;
    state.received = audio.received;
    state.lost = audio.lost;
    state.foreign = audio.foreign;
    state.forged = audio.forged;
    state.replayed = audio.replayed;
    state.jitter = *milliseconds(audio.jitter);
    state.farLost = audio.farLost;
    state.farJitter = milliseconds(audio.farJitter);
    state.roundTrip = milliseconds(audio.roundTrip);
    return state;
}

}  // namespace

StateReader::StateReader(Parts const& parts, Whole whole)
    : parts_(parts)
    , whole_(std::move(whole))
{}

TelephoneState StateReader::read() const
{
    TelephoneState state;
    std::lock_guard const lock(parts_.engine);
    // First, so that everything that the events up to it report is in what is read afterwards.
    state.event = whole_.latestEvent();
    state.start = whole_.start;
    state.time = wallTime();
    state.domain = whole_.domain;
    state.ready = whole_.isReady();
    state.keyset = parts_.lines.isKeyset();
    state.service = nameOfValue(enumerations::kServiceState, parts_.engine.serviceState());
    state.lines = lines();
    state.calls = calls();
    state.keys = keys();
    state.hookUp = parts_.physical.isHookUp();
    state.plugged = parts_.physical.plugged();
    state.muted = parts_.engine.list().microphoneMute();
    state.locked = parts_.settings.flag(SettingNames::kPhoneLocked);
    state.barred = parts_.settings.number(SettingNames::kDialRestriction) == CSfi::kDialBarred;
    state.store = whole_.store;
    state.storeWritable = parts_.settings.isWritable();
    return state;
}

// --- lines

std::vector<LineStatus> StateReader::lines() const
{
    std::string const agent = nameOfValue(enumerations::kAgentState, parts_.settings.text(SettingNames::kAgentState));
    std::vector<LineStatus> lines;
    for (TelephoneLine* const line : parts_.lines.lines()) {
        LineStatus& status = lines.emplace_back(statusOf(*line));
        int const number = line->place().lineNumber;
        status.user = userOfLine(line->configuration());
        status.registration = registrationOf(*line);
        status.primary = line->configuration().primary;
        status.doNotDisturb = parts_.policy.doNotDisturb(number);
        status.forwarding = forwardingOf(number);
        status.agent = agent;
        status.rings = line->configuration().ring != 0;
        status.ringDelay = line->configuration().ringDelay;
        status.messages = messagesOf(*line);
        for (TelephoneLine* const appearance : line->appearances()) {
            status.appearances.push_back(statusOf(*appearance));
        }
    }
    return lines;
}

LineStatus StateReader::statusOf(TelephoneLine& line) const
{
    TelephoneLine* const selected = parts_.lines.selected();
    LineStatus status;
    status.id = line.id();
    status.number = line.place().recordLine;
    status.state = lineStateName(line.state());
    status.selected = selected == &line || (selected != nullptr && &selected->base() == &line);
    return status;
}

std::string StateReader::registrationOf(TelephoneLine const& line) const
{
    if (!line.configuration().registers) {
        return "peer to peer";
    }
    bool const registered = parts_.engine.registrations().isRegistered(line.place().lineNumber);
    return registered ? "registered" : "not registered";
}

std::vector<ForwardingState> StateReader::forwardingOf(int lineNumber) const
{
    std::vector<ForwardingState> rules;
    for (EnumerationValue const& type : enumerations::kForwardingType) {
        auto rule = parts_.policy.forwarding(lineNumber, static_cast<sfiForwardingType>(type.number));
        if (rule.on || !rule.destination.empty()) {
            rules.push_back({type.number, std::string(type.name), rule.on, std::move(rule.destination)});
        }
    }
    return rules;
}

std::optional<MessageCountState> StateReader::messagesOf(TelephoneLine const& line) const
{
    auto const record = parts_.engine.messages().of(line.id());
    if (!record) {
        return std::nullopt;
    }
    return MessageCountState{record->messagesWaiting == sfiMessagesWaitingYes,
                             record->availableInfo == sfiMWIAvailableCounts, static_cast<int>(record->newMessages),
                             static_cast<int>(record->oldMessages)};
}

// --- calls

std::vector<CallStatus> StateReader::calls() const
{
    CallBacks const& callBacks = parts_.engine.callBacks();
    std::vector<int> const recorded = parts_.recorder.recordedCalls();
    std::vector<CallStatus> calls;
    for (CallSnapshot const& ended : callBacks.endedAndPossible()) {
        CallStatus& status = calls.emplace_back(statusOf(ended));
        status.over = true;
        status.callBackPossible = true;
    }
    for (auto const& call : parts_.engine.list().all()) {
        CallStatus& status = calls.emplace_back(statusOf(call->snapshot()));
        status.conference = conferenceOf(call->snapshot());
        if (sip::Session const* const session = call->session()) {
            status.audio = stateOf(session->audio().statistics());
        }
        status.recording = std::ranges::find(recorded, call->id()) != recorded.end();
        status.callBackPossible = callBacks.isPossible(*call);
    }
    return calls;
}

CallStatus StateReader::statusOf(CallSnapshot const& call) const
{
    TelephoneLine const* const line = parts_.lines.byNumber(call.line.lineNumber);
    CallStatus status;
    status.id = call.callID;
    status.line = line != nullptr ? line->id() : call.line.lineURI;
    status.place = call.line.lineURI;
    status.appearance = call.line.appearance;
    status.state = nameOfValue(enumerations::kCallState, call.state);
    status.stateNumber = call.state;
    status.reason = nameOfValue(enumerations::kReason, call.reason);
    status.incoming = call.incoming;
    status.party = {call.remoteURI, call.remoteName};
    status.since = call.since;
    status.began = call.began;
    status.heldHere = call.held;
    status.heldByFarEnd = call.heldByRemote;
    status.heldForConsultation = call.heldForConsultation;
    status.inConference = call.inConference;
    status.secure = call.secure;
    return status;
}

std::vector<PartyState> StateReader::conferenceOf(CallSnapshot const& call) const
{
    std::vector<PartyState> others;
    if (!call.inConference) {
        return others;
    }
    for (CallSnapshot const& each : parts_.engine.calls()) {
        if (each.inConference && each.callID != call.callID) {
            others.push_back({each.remoteURI, each.remoteName});
        }
    }
    return others;
}

// --- keys

std::vector<KeyState> StateReader::keys() const
{
    std::vector<KeyState> keys;
    KeyLayout const& layout = parts_.physical.layout();
    for (LampRow const& row : parts_.physical.lampBoard().lamps()) {
        KeyState& key = keys.emplace_back();
        key.number = row.key;
        key.function = row.name;
        key.lamp = {nameOfValue(enumerations::kLampMode, row.lamp.mode), std::string(lampColourName(row.lamp.colour))};
        if (PhoneKey const* const found = layout.find(row.key)) {
            key.function = found->row->name;
            key.target = found->configuration.target;
            key.label = found->configuration.label;
            key.showsOnly = found->configuration.monitorOnly;
        }
    }
    return keys;
}

}  // namespace telephone
