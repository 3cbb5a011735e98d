#include "telephone/analysis/TraceReader.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include <spdlog/fmt/fmt.h>

#include "telephone/protocol/JsonText.h"
#include "telephone/time/TimeText.h"

namespace telephone {

namespace {

enum class MemberForm
{
    kText,
    kNumber,
    kTexts,      // a list; kept as one text
    kArguments,  // an object
    kValue,      // anything
};

struct MemberRow
{
    StepKind kind;
    std::string_view name;
    MemberForm form;
    bool isRequired;
};

using K = StepKind;
using M = MemberForm;

// clang-format off
constexpr MemberRow kMembers[] = {
    {K::kRequest,  "application",  M::kText,      true},
    {K::kRequest,  "text",         M::kText,      true},
    {K::kCommand,  "application",  M::kText,      true},
    {K::kCommand,  "text",         M::kText,      true},
    {K::kAnswer,   "text",         M::kText,      false},
    {K::kAnswer,   "microseconds", M::kNumber,    false},
    {K::kReason,   "text",         M::kText,      true},
    {K::kEvent,    "number",       M::kNumber,    true},
    {K::kEvent,    "text",         M::kText,      true},
    {K::kPlatform, "name",         M::kText,      true},
    {K::kPlatform, "arguments",    M::kArguments, false},
    {K::kPlatform, "result",       M::kValue,     false},
    {K::kPlatform, "microseconds", M::kNumber,    false},
    {K::kEngine,   "call",         M::kNumber,    true},
    {K::kEngine,   "line",         M::kText,      true},
    {K::kEngine,   "state",        M::kText,      true},
    {K::kEngine,   "before",       M::kText,      false},
    {K::kEngine,   "party",        M::kText,      false},
    {K::kEngine,   "dialog",       M::kText,      false},
    {K::kKey,      "key",          M::kNumber,    false},
    {K::kKey,      "label",        M::kText,      false},
    {K::kKey,      "function",     M::kText,      false},
    {K::kKey,      "action",       M::kText,      false},
    {K::kKey,      "hook",         M::kText,      false},
    {K::kKey,      "plug",         M::kText,      false},
    {K::kLamp,     "lamp",         M::kNumber,    true},
    {K::kLamp,     "label",        M::kText,      false},
    {K::kLamp,     "mode",         M::kText,      true},
    {K::kLamp,     "colour",       M::kText,      true},
    {K::kTimer,    "name",         M::kText,      true},
    {K::kStore,    "settings",     M::kTexts,     true},
    {K::kStore,    "reason",       M::kText,      false},
    {K::kFault,    "fault",        M::kText,      true},
    {K::kFault,    "state",        M::kText,      true},
    {K::kSip,      "direction",    M::kText,      true},
    {K::kSip,      "peer",         M::kText,      false},
    {K::kSip,      "transport",    M::kText,      false},
    {K::kSip,      "method",       M::kText,      true},
    {K::kSip,      "status",       M::kNumber,    false},
    {K::kSip,      "phrase",       M::kText,      false},
    {K::kSip,      "dialog",       M::kText,      false},
    {K::kSip,      "transaction",  M::kText,      false},
    {K::kSip,      "audio",        M::kText,      false},
    {K::kSip,      "text",         M::kText,      false},
};
// clang-format on

tl::unexpected<Refusal> notOfTrace(std::string reason)
{
    return refuse(RefusalKind::kBadInput, std::move(reason));
}

// Null: the line has no such member.
Json const* memberOf(Json const& line, std::string_view name)
{
    auto const found = line.find(name);
    return found != line.end() ? &*found : nullptr;
}

std::string textMember(Json const& line, std::string_view name)
{
    Json const* const member = memberOf(line, name);
    return member != nullptr && member->is_string() ? member->get<std::string>() : std::string();
}

// 0 for anything but a positive number.
std::uint64_t numberMember(Json const& line, std::string_view name)
{
    Json const* const member = memberOf(line, name);
    return member != nullptr && member->is_number_unsigned() ? member->get<std::uint64_t>() : 0;
}

// A text as it stands; the id of a call; anything else as JSON.
std::string valueText(Json const& value)
{
    if (Json const* const call = value.is_object() ? memberOf(value, "call") : nullptr) {
        return valueText(*call);
    }
    return value.is_string() ? value.get<std::string>() : lineOf(value);
}

std::optional<StepKind> kindNamed(std::string_view name)
{
    auto const* const found = std::find(kStepKindNames.begin(), kStepKindNames.end(), name);
    return found != kStepKindNames.end() ? std::optional(static_cast<StepKind>(found - kStepKindNames.begin()))
                                         : std::nullopt;
}

struct FormRow
{
    std::string_view name;
    bool (*isRight)(Json const& value);
};

// Indexed by the form.
constexpr FormRow kForms[] = {
    {"a text", [](Json const& value) { return value.is_string(); }},
    {"a whole number", [](Json const& value) { return value.is_number_integer(); }},
    {"a text or a list of texts",
     [](Json const& value) {
         return value.is_string() || (value.is_array() && std::all_of(value.begin(), value.end(), [](Json const& each) {
                                          return each.is_string();
                                      }));
     }},
    {"an object", [](Json const& value) { return value.is_object(); }},
    {"a value", [](Json const&) { return true; }},
};

std::string joinedTexts(Json const& texts)
{
    std::string joined;
    for (Json const& each : texts) {
        joined += (joined.empty() ? "" : ", ") + each.get<std::string>();
    }
    return joined;
}

void keepMember(TracedStep& step, MemberRow const& row, Json const& value)
{
    if (row.form == MemberForm::kArguments) {
        for (auto const& [name, argument] : value.items()) {
            step.arguments.emplace_back(name, valueText(argument));
        }
        return;
    }
    step.members.emplace_back(row.name, value.is_array() ? joinedTexts(value) : valueText(value));
}

Outcome<> readMembers(TracedStep& step, Json const& line)
{
    for (MemberRow const& row : kMembers) {
        if (row.kind != step.kind) {
            continue;
        }
        Json const* const member = memberOf(line, row.name);
        auto const kind = kStepKindNames.at(static_cast<std::size_t>(step.kind));
        if (member == nullptr && row.isRequired) {
            return notOfTrace(fmt::format("\"{}\" of the step \"{}\" is missing", row.name, kind));
        }
        if (member == nullptr) {
            continue;
        }
        auto const& [form, isRight] = kForms[static_cast<std::size_t>(row.form)];
        if (!isRight(*member)) {
            return notOfTrace(fmt::format("\"{}\" of the step \"{}\" must be {}", row.name, kind, form));
        }
        keepMember(step, row, *member);
    }
    return {};
}

Outcome<TracedStep> readStep(Json const& line)
{
    auto const time = readTime(textMember(line, "time"));
    auto const kind = kindNamed(textMember(line, "step"));
    TracedStep step;
    step.number = numberMember(line, "seq");
    if (step.number == 0) {
        return notOfTrace("\"seq\" is missing, or is not a number from 1");
    }
    if (!time) {
        return notOfTrace("\"time\" is missing, or is not in the form 2026-03-01T12:00:00.000Z");
    }
    if (!kind) {
        return notOfTrace("\"step\" is missing, or is not a kind of step that this telephone knows");
    }
    step.time = *time;
    step.kind = *kind;
    step.because = numberMember(line, "because");
    step.id = numberMember(line, "id");
    step.thread = textMember(line, "thread");
    return readMembers(step, line).map([&step] { return std::move(step); });
}

bool isBlank(std::string const& text)
{
    return text.find_first_not_of(" \t\r") == std::string::npos;
}

constexpr bool kThrows = false;

}  // namespace

TraceReader::TraceReader(std::string name, Keep keep)
    : keep_(keep)
{
    contents_.name = std::move(name);
}

Outcome<std::vector<std::uint64_t>> TraceReader::read(std::istream& file)
{
    std::vector<std::uint64_t> taken;
    for (std::string text; std::getline(file, text);) {
        text.insert(0, std::exchange(rest_, {}));
        if (file.eof()) {
            rest_ = std::move(text);
            break;
        }
        ++line_;
        auto const number = take(text);
        if (!number) {
            return refuse(number.error().kind, fmt::format("{}:{}: {}", contents_.name, line_, number.error().reason));
        }
        if (*number != 0) {
            taken.push_back(*number);
        }
    }
    return taken;
}

Outcome<TraceContents> TraceReader::finish()
{
    // What does not parse is cut off.
    if (std::string const last = std::exchange(rest_, {}); !hasBegun_ || Json::accept(last)) {
        ++line_;
        if (auto const taken = take(last); !taken) {
            return refuse(taken.error().kind, fmt::format("{}:{}: {}", contents_.name, line_, taken.error().reason));
        }
    }
    return hasBegun_ ? Outcome<TraceContents>(std::move(contents_))
                     : notOfTrace(contents_.name + ": empty; a trace begins with a line that has \"trace\"");
}

Outcome<std::uint64_t> TraceReader::take(std::string const& text)
{
    if (isBlank(text)) {
        return 0U;
    }
    if (!hasBegun_) {
        return takeHeader(text).map([] { return std::uint64_t{0}; });
    }
    Json const line = Json::parse(text, nullptr, kThrows);
    if (!line.is_object()) {
        return notOfTrace("not a JSON object");
    }
    return readStep(line).and_then([&](TracedStep step) -> Outcome<std::uint64_t> {
        if (keep_ == Keep::kTexts) {
            step.line = text;
        } else if (step.kind == StepKind::kSip) {
            std::erase_if(step.members, [](auto const& member) { return member.first == "text"; });
        }
        std::uint64_t const number = step.number;
        bool const isNew = contents_.steps.emplace(number, std::move(step)).second;
        return isNew ? Outcome<std::uint64_t>(number) : notOfTrace(fmt::format("there are two steps {}", number));
    });
}

Outcome<> TraceReader::takeHeader(std::string const& text)
{
    Json const line = Json::parse(text, nullptr, kThrows);
    Json const* const version = line.is_object() ? memberOf(line, "trace") : nullptr;
    if (version == nullptr) {
        return notOfTrace("not a trace: the first line must have \"trace\"");
    }
    if (*version != kTraceVersion) {
        return notOfTrace(
            fmt::format("a trace of version {}: this telephone reads version {}", lineOf(*version), kTraceVersion));
    }
    hasBegun_ = true;
    contents_.domain = textMember(line, "domain");
    return {};
}

}  // namespace telephone
