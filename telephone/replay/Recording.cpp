#include "telephone/replay/Recording.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <utility>

#include <spdlog/fmt/fmt.h>

#include "telephone/protocol/JsonText.h"
#include "telephone/replay/RecordingLines.h"
#include "telephone/time/TimeText.h"

namespace telephone {

namespace {

constexpr std::array kReplyKinds{MessageKind::kAnswer, MessageKind::kReason, MessageKind::kFinished,
                                 MessageKind::kResult, MessageKind::kError};

std::string textMember(Json const& line, char const* name)
{
    auto const found = line.find(name);
    return found != line.end() && found->is_string() ? found->get<std::string>() : std::string();
}

bool flagMember(Json const& line, char const* name, bool otherwise)
{
    auto const found = line.find(name);
    return found != line.end() && found->is_boolean() ? found->get<bool>() : otherwise;
}

tl::unexpected<Refusal> wrong(std::string reason)
{
    return refuse(RefusalKind::kBadInput, std::move(reason));
}

// Takes a recording line by line.
class RecordingReader
{
public:
    explicit RecordingReader(std::string const& name) { recording_.name = name; }

    Outcome<> take(std::string const& text)
    {
        ++number_;
        if (text.find_first_not_of(" \t\r") == std::string::npos) {
            return {};
        }
        constexpr bool kThrows = false;
        Json const line = Json::parse(text, nullptr, kThrows);
        return (line.is_object() ? takeObject(line) : wrong("not a JSON object")).map_error([this](Refusal const& why) {
            return Refusal{why.kind, fmt::format("{}:{}: {}", recording_.name, number_, why.reason)};
        });
    }

    Outcome<Recording> finish()
    {
        return begun_ ? Outcome<Recording>(std::move(recording_))
                      : wrong(recording_.name + ": empty; a recording begins with a line that has \"recording\"");
    }

private:
    Outcome<> takeObject(Json const& line)
    {
        auto const time = readTime(textMember(line, "time"));
        if (!begun_ && !line.contains(kRecordingMember)) {
            return wrong("not a recording: the first line must have \"recording\"");
        }
        if (!time) {
            return wrong("\"time\" is missing, or is not in the form 2026-03-01T12:00:00.000Z");
        }
        recording_.end = std::max(recording_.end, *time);
        return begun_ ? takeEntry(line, *time) : takeHeader(line, *time);
    }

    Outcome<> takeHeader(Json const& line, RecordingTime time)
    {
        if (line[kRecordingMember] != kRecordingVersion) {
            return wrong(fmt::format("a recording of version {}: this telephone reads version {}",
                                     line[kRecordingMember].dump(), kRecordingVersion));
        }
        auto const state = line.find("state");
        if (state == line.end() || !state->is_object() || !state->contains("lines") || !(*state)["lines"].is_array()) {
            return wrong("\"state\" with \"lines\" is missing");
        }
        begun_ = true;
        recording_.begin = time;
        recording_.state = lineOf(*state);
        recording_.start = state->contains("start") ? textMember(*state, "start") : "recorded";
        recording_.domain = textMember(*state, "domain");
        recording_.ready = flagMember(*state, "ready", true);
        return {};
    }

    Outcome<> takeEntry(Json const& line, RecordingTime time)
    {
        if (line.contains(kEndMember)) {
            return {};
        }
        if (line.contains("event")) {
            return takeEvent(line, time);
        }
        if (line.contains(kRequestMember) || line.contains(kCommandMember)) {
            return takeInput(line, time);
        }
        for (MessageKind const kind : kReplyKinds) {
            if (line.contains(kMessageKindNames.at(static_cast<std::size_t>(kind)))) {
                return takeReply(line, kind);
            }
        }
        return wrong("the line has none of request, command, answer, reason, finished, result, error, event and end");
    }

    Outcome<> takeEvent(Json const& line, RecordingTime time)
    {
        bool const isWhole = line["event"].is_number_unsigned() && !textMember(line, "raw").empty();
        if (!isWhole) {
            return wrong("an event needs its number in \"event\" and its text in \"raw\"");
        }
        recording_.entries.push_back(
            {number_, time, RecordedEvent{line["event"].get<std::uint64_t>(), textMember(line, "raw")}});
        return {};
    }

    Outcome<> takeInput(Json const& line, RecordingTime time)
    {
        bool const isRequest = line.contains(kRequestMember);
        char const* const member = isRequest ? kRequestMember : kCommandMember;
        RecordedInput input{textMember(line, "session"),        isRequest ? InputKind::kRequest : InputKind::kCommand,
                            textMember(line, member),           flagMember(line, "strict", false),
                            flagMember(line, "reasons", false), {}};
        if (input.session.empty() || !line[member].is_string()) {
            return wrong(fmt::format("a {} needs its text in \"{}\" and its session in \"session\"", member, member));
        }
        latest_[input.session] = recording_.entries.size();
        recording_.entries.push_back({number_, time, std::move(input)});
        return {};
    }

    Outcome<> takeReply(Json const& line, MessageKind kind)
    {
        std::string const session = textMember(line, "session");
        std::string const name(kMessageKindNames.at(static_cast<std::size_t>(kind)));
        auto const found = latest_.find(session);
        if (found == latest_.end()) {
            return wrong(fmt::format("\"{}\" of a session that has sent nothing: \"{}\"", name, session));
        }
        if (kind != MessageKind::kFinished && !line[name].is_string()) {
            return wrong(fmt::format("\"{}\" must be a text", name));
        }
        auto& input = std::get<RecordedInput>(recording_.entries[found->second].what);
        input.replies.push_back({kind, textMember(line, name.c_str())});
        return {};
    }

    Recording recording_;
    int number_ = 0;
    bool begun_ = false;
    std::map<std::string, std::size_t> latest_;  // entry of the latest input of each session
};

}  // namespace

Outcome<Recording> readRecording(std::istream& file, std::string const& name)
{
    RecordingReader reader(name);
    std::string line;
    while (std::getline(file, line)) {
        if (auto const taken = reader.take(line); !taken) {
            return tl::unexpected(taken.error());
        }
    }
    return reader.finish();
}

}  // namespace telephone
