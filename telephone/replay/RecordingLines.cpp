#include "telephone/replay/RecordingLines.h"

#include <utility>

#include "telephone/base/Version.h"
#include "telephone/protocol/JsonText.h"
#include "telephone/replay/Recording.h"
#include "telephone/time/TimeText.h"

namespace telephone {

namespace {

Json lineWith(std::string_view member, Json value, RecordingTime time)
{
    return {{std::string(member), std::move(value)}, {"time", timeText(time)}};
}

}  // namespace

std::string recordingHeader(TelephoneState const& state)
{
    Json line = lineWith(kRecordingMember, kRecordingVersion, state.time);
    line["telephone"] = kTelephoneVersion;
    line["state"] = Json::parse(stateJson(state));
    return lineOf(line);
}

std::string recordingLine(RecordingTime time, SessionInput const& input)
{
    Json line = lineWith(input.kind == InputKind::kRequest ? kRequestMember : kCommandMember, input.text, time);
    line["session"] = input.session;
    for (auto const& [name, isOn] : {std::pair{"strict", input.strict}, {"reasons", input.reasons}}) {
        if (isOn) {
            line[name] = true;
        }
    }
    return lineOf(line);
}

std::string recordingLine(RecordingTime time, std::string_view session, Message const& reply)
{
    std::string_view const kind = kMessageKindNames.at(static_cast<std::size_t>(reply.kind));
    Json line = lineWith(kind, reply.kind == MessageKind::kFinished ? Json() : Json(reply.text), time);
    line["session"] = session;
    return lineOf(line);
}

std::string recordingEnd(RecordingTime time)
{
    return lineOf(lineWith(kEndMember, Json(), time));
}

}  // namespace telephone
