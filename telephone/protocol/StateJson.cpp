// The state as JSON.
#include "telephone/protocol/JsonText.h"
#include "telephone/protocol/TelephoneState.h"
#include "telephone/time/TimeText.h"

namespace telephone {

namespace {

template <typename Value>
Json listOf(std::vector<Value> const& values, Json (*jsonOfOne)(Value const&))
{
    Json list = Json::array();
    for (Value const& each : values) {
        list.push_back(jsonOfOne(each));
    }
    return list;
}

Json jsonOf(PartyState const& party)
{
    return {{"address", textOrNull(party.address)}, {"name", textOrNull(party.name)}};
}

Json jsonOf(ForwardingState const& rule)
{
    return {{"type", rule.type},
            {"name", rule.name},
            {"active", rule.active},
            {"destination", textOrNull(rule.destination)}};
}

template <typename Value>
Json valueOrNull(std::optional<Value> const& value)
{
    return value ? Json(*value) : Json();
}

Json jsonOf(std::optional<AudioState> const& audio)
{
    if (!audio) {
        return {};
    }
    return {{"sent", audio->sent},
            {"received", audio->received},
            {"lost", audio->lost},
            {"jitter", audio->jitter},
            {"far_lost", valueOrNull(audio->farLost)},
            {"far_jitter", valueOrNull(audio->farJitter)},
            {"round_trip", valueOrNull(audio->roundTrip)},
            {"foreign", audio->foreign},
            {"forged", audio->forged},
            {"replayed", audio->replayed}};
}

Json jsonOf(CallStatus const& call)
{
    return {{"id", call.id},
            {"line", call.line},
            {"place", call.place},
            {"appearance", call.appearance == 0 ? Json() : Json(call.appearance)},
            {"state", call.state},
            {"state_number", call.stateNumber},
            {"over", call.over},
            {"reason", call.reason},
            {"incoming", call.incoming},
            {"party", jsonOf(call.party)},
            {"since", timeText(call.since)},
            {"began", timeText(call.began)},
            {"held_here", call.heldHere},
            {"held_by_far_end", call.heldByFarEnd},
            {"held_for_consultation", call.heldForConsultation},
            {"in_conference", call.inConference},
            {"conference", listOf(call.conference, jsonOf)},
            {"secure", call.secure},
            {"audio", jsonOf(call.audio)},
            {"recording", call.recording},
            {"call_back_possible", call.callBackPossible}};
}

Json jsonOf(std::optional<MessageCountState> const& messages)
{
    if (!messages) {
        return {};
    }
    return {{"waiting", messages->waiting},
            {"new", messages->counted ? Json(messages->unread) : Json()},
            {"old", messages->counted ? Json(messages->read) : Json()}};
}

Json appearanceJson(LineStatus const& appearance)
{
    return {{"id", appearance.id},
            {"number", appearance.number},
            {"state", appearance.state},
            {"selected", appearance.selected}};
}

Json jsonOf(LineStatus const& line)
{
    return {{"id", line.id},
            {"number", line.number},
            {"registration", line.registration},
            {"state", line.state},
            {"primary", line.primary},
            {"selected", line.selected},
            {"do_not_disturb", line.doNotDisturb},
            {"forwarding", listOf(line.forwarding, jsonOf)},
            {"agent", line.agent},
            {"rings", line.rings},
            {"ring_delay", line.ringDelay},
            {"messages", jsonOf(line.messages)},
            {"appearances", listOf(line.appearances, appearanceJson)}};
}

Json jsonOf(KeyState const& key)
{
    return {{"number", key.number == 0 ? Json() : Json(key.number)},
            {"function", key.function},
            {"target", textOrNull(key.target)},
            {"label", textOrNull(key.label)},
            {"shows_only", key.showsOnly},
            {"lamp", {{"mode", key.lamp.mode}, {"colour", key.lamp.colour}}}};
}

}  // namespace

std::string stateJson(TelephoneState const& state)
{
    return lineOf({{"start", state.start},
                   {"event", state.event},
                   {"time", timeText(state.time)},
                   {"domain", textOrNull(state.domain)},
                   {"ready", state.ready},
                   {"service", state.service},
                   {"lines", listOf(state.lines, jsonOf)},
                   {"calls", listOf(state.calls, jsonOf)},
                   {"keys", listOf(state.keys, jsonOf)},
                   {"hook_up", state.hookUp},
                   {"plugged", state.plugged},
                   {"muted", state.muted},
                   {"locked", state.locked},
                   {"store", {{"path", textOrNull(state.store)}, {"writable", state.storeWritable}}}});
}

}  // namespace telephone
