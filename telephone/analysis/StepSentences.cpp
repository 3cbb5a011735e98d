#include "telephone/analysis/StepSentences.h"

#include <algorithm>
#include <cctype>
#include <iterator>

#include <spdlog/fmt/fmt.h>
#include <spdlog/fmt/ranges.h>

#include "telephone/analysis/StepWords.h"
#include "telephone/display/ElementWords.h"
#include "telephone/display/Parties.h"
#include "telephone/display/ReadableLines.h"
#include "telephone/display/RequestWords.h"
#include "telephone/display/SafeText.h"
#include "telephone/protocol/MessageText.h"

namespace telephone {

namespace {

struct RoleRow
{
    StepRole role;
    std::string_view told;
    std::string_view recalled;
};

using R = StepRole;

// Indexed by the role. A word in braces is replaced by what StepSentences::value says. Changes of calls are told by
// their state, below. Only what another step is an answer to, or followed, is ever recalled.
// clang-format off
constexpr RoleRow kRoles[] = {
    {R::kRequest,         "{application} sent the request {request}{at time}",           ""},
    {R::kCommand,         "{application} gave the command \"{text}\"{at time}",          ""},
    {R::kAnswer,          "the request was answered with {text}",                        ""},
    {R::kReason,          "the request was refused: {text}",                             ""},
    {R::kEvent,           "event {number} was sent",                                     ""},
    {R::kPlatform,        "the service called {name}{with arguments}",                   ""},
    {R::kEngine,          "",                                                            ""},
    {R::kKey,             "{key} was {action}{at time}",                                 ""},
    {R::kHook,            "the handset was {lifted}{at time}",                           ""},
    {R::kPlug,            "the {plug} was {plugged}{at time}",                           ""},
    {R::kLamp,            "lamp {lamp} became {light}",                                  ""},
    {R::kTimer,           "the timer \"{name}\" ran out",                                ""},
    {R::kStored,          "the settings {settings} were stored",                         ""},
    {R::kNotStored,       "the settings {settings} could not be stored ({reason})",      ""},
    {R::kFault,           "the fault {fault} {fault state}{at time}",                    ""},
    {R::kRequestSent,     "the telephone sent {a method} to {far end}",                  "The telephone had sent this {method} to {far end}"},
    {R::kRequestReceived, "{far end} sent {a method}{at time}",                          "{far end} had sent this {method}"},
    {R::kAnswerSent,      "the telephone answered the {method} of {far end} with {sip}", "The telephone had answered the {method} of {far end} with {sip}"},
    {R::kAnswerReceived,  "{far end} answered the {method} with {sip}",                  ""},
};

struct StateRow
{
    std::string_view state;
    std::string_view before;  // empty: any
    std::string_view told;
    std::string_view recalled;
};

constexpr StateRow kStates[] = {
    {"dialling",       "",              "{call} began",                               "{Call} had begun"},
    {"proceeding",     "",              "{call} made progress",                       "{Call} had made progress"},
    {"remote ringing", "",              "{call} began to ring at the far end",        "{Call} had begun to ring at the far end"},
    {"incoming",       "",              "{call} arrived",                             "{Call} had arrived"},
    {"ringing",        "",              "{call} began to ring",                       "{Call} had begun to ring"},
    {"connected",      "held",          "the call engine took {call} back from hold", "The call engine had taken {call} back from hold"},
    {"connected",      "remotely held", "the far end took {call} back from hold",     "The far end had taken {call} back from hold"},
    {"connected",      "",              "{call} was connected",                       "{Call} had been connected"},
    {"held",           "",              "the call engine put {call} on hold",         "The call engine had put {call} on hold"},
    {"remotely held",  "",              "the far end put {call} on hold",             "The far end had put {call} on hold"},
    {"held by both",   "",              "{call} was put on hold at both ends",        "{Call} had been put on hold at both ends"},
    {"conference",     "",              "{call} joined a conference",                 "{Call} had joined a conference"},
    {"transferring",   "",              "the transfer of {call} began",               "The transfer of {call} had begun"},
    {"busy",           "",              "{call} found the far end busy",              "{Call} had found the far end busy"},
    {"failed",         "",              "{call} failed",                              "{Call} had failed"},
    {"idle",           "",              "{call} ended",                               "{Call} had ended"},
    {"",               "",              "{call} became {state}",                      "{Call} had become {state}"},
};

struct StatementRow
{
    std::string_view what;  // as an event says it; empty: any other
    std::string_view predicate;
};

// What an event says of a call.
constexpr StatementRow kStatements[] = {
    {"dialling",       "is being dialled"},
    {"proceeding",     "is on its way"},
    {"remote ringing", "is ringing at the far end"},
    {"incoming call",  "has arrived"},
    {"incoming",       "has arrived"},
    {"ringing",        "is ringing"},
    {"connected",      "is connected"},
    {"held",           "is held"},
    {"retrieved",      "is retrieved"},
    {"remotely held",  "is held by the far end"},
    {"held by both",   "is held by both ends"},
    {"conference",     "is in a conference"},
    {"transferring",   "is being transferred"},
    {"busy",           "has found the far end busy"},
    {"failed",         "has failed"},
    {"missed",         "was missed"},
    {"idle",           "is over"},
};

struct ActionRow
{
    std::string_view action;  // as the trace has it
    std::string_view words;
};

constexpr ActionRow kActions[] = {
    {"up",     "lifted"},
    {"down",   "replaced"},
    {"in",     "plugged in"},
    {"out",    "unplugged"},
    {"begins", "began"},
    {"ends",   "ended"},
};
// clang-format on

std::string actionWords(std::string_view action)
{
    auto const* const found = std::find_if(std::begin(kActions), std::end(kActions),
                                           [action](ActionRow const& each) { return each.action == action; });
    return found != std::end(kActions) ? std::string(found->words) : safeText(action);
}

StateRow const& stateRowOf(TracedStep const& step)
{
    std::string const state = safeText(step.text("state"));
    std::string const before = safeText(step.text("before"));
    return *std::find_if(std::begin(kStates), std::end(kStates) - 1, [&](StateRow const& each) {
        return each.state == state && (each.before.empty() || each.before == before);
    });
}

std::string withArticle(std::string_view method)
{
    bool const beginsWithVowel = !method.empty() && std::string_view("AEIOU").find(method.front()) != std::string::npos;
    return (beginsWithVowel ? "an " : "a ") + safeWord(method);
}

std::string capitalised(std::string text)
{
    if (!text.empty()) {
        text.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(text.front())));
    }
    return text;
}

// " with destination 100", " with feature deflect, destination 103".
std::string argumentText(TracedStep const& step, DisplayOptions const& options)
{
    std::string text;
    for (ArgumentWords const& each : argumentWords(step, options)) {
        if (each.isTelling) {
            text += (text.empty() ? " with " : ", ") + each.name + " " + each.value;
        }
    }
    return text;
}

StepRole sipRoleOf(TracedStep const& step)
{
    if (isSipAnswer(step)) {
        return isSent(step) ? StepRole::kAnswerSent : StepRole::kAnswerReceived;
    }
    return isSent(step) ? StepRole::kRequestSent : StepRole::kRequestReceived;
}

}  // namespace

StepRole roleOf(TracedStep const& step)
{
    switch (step.kind) {
    case StepKind::kRequest:
        return StepRole::kRequest;
    case StepKind::kCommand:
        return StepRole::kCommand;
    case StepKind::kAnswer:
        return StepRole::kAnswer;
    case StepKind::kReason:
        return StepRole::kReason;
    case StepKind::kEvent:
        return StepRole::kEvent;
    case StepKind::kPlatform:
        return StepRole::kPlatform;
    case StepKind::kEngine:
        return StepRole::kEngine;
    case StepKind::kKey:
        return step.has("hook") ? StepRole::kHook : step.has("plug") ? StepRole::kPlug : StepRole::kKey;
    case StepKind::kLamp:
        return StepRole::kLamp;
    case StepKind::kTimer:
        return StepRole::kTimer;
    case StepKind::kStore:
        return step.has("reason") ? StepRole::kNotStored : StepRole::kStored;
    case StepKind::kFault:
        return StepRole::kFault;
    case StepKind::kSip:
        return sipRoleOf(step);
    }
    return StepRole::kRequest;
}

std::string StepSentences::told(TracedStep const& step) const
{
    auto const& row = kRoles[static_cast<std::size_t>(roleOf(step))];
    return filled(row.told.empty() ? stateRowOf(step).told : row.told, step);
}

std::string StepSentences::recalled(TracedStep const& step) const
{
    auto const& row = kRoles[static_cast<std::size_t>(roleOf(step))];
    return capitalised(filled(row.recalled.empty() ? stateRowOf(step).recalled : row.recalled, step));
}

std::string StepSentences::purpose(TracedStep const& step) const
{
    return filled(step.kind == StepKind::kRequest ? "the request {request} of {application} at {time}"
                                                  : "the command \"{text}\" of {application} at {time}",
                  step);
}

std::string StepSentences::asked(TracedStep const& step) const
{
    return filled("{application} asked with the command \"{text}\" at {time}", step);
}

std::string StepSentences::followed(TracedStep const& step) const
{
    return filled("{a method} that the telephone had sent to {far end}", step);
}

std::string StepSentences::statement(TracedStep const& step) const
{
    return step.kind == StepKind::kEvent ? eventStatement(step)
                                         : filled("Lamp {lamp} has been {light} since {time}", step);
}

std::string StepSentences::eventStatement(TracedStep const& step) const
{
    auto const event = readEvent(step.text("text"));
    if (!event) {
        return filled("Event {number} says \"{text}\"", step);
    }
    EventWords const words = eventWords(*event, options_);
    std::string const number = value("number", step);
    auto const* const found = std::find_if(std::begin(kStatements), std::end(kStatements),
                                           [&](StatementRow const& each) { return each.what == words.words.what; });
    if (!words.call.empty() && found != std::end(kStatements)) {
        return fmt::format("Event {} says that {} {}", number, callText(words.call, step), found->predicate);
    }
    // The party is said with the call.
    std::string const details =
        words.call.empty() ? words.words.detailText() : fmt::format("{}", fmt::join(words.words.details, ", "));
    std::string const about = !words.call.empty()  ? callText(words.call, step)
                              : words.line.empty() ? ""
                                                   : "line " + words.line;
    return fmt::format("Event {} says{}: {}{}", number, about.empty() ? "" : " about " + about, words.words.what,
                       details.empty() ? "" : ", " + details);
}

std::string StepSentences::filled(std::string_view form, TracedStep const& step) const
{
    std::string text;
    while (!form.empty()) {
        auto const begin = std::min(form.find('{'), form.size());
        text += form.substr(0, begin);
        form.remove_prefix(begin);
        if (auto const end = form.find('}'); end != std::string_view::npos) {
            text += value(form.substr(1, end - 1), step);
            form.remove_prefix(end + 1);
        }
    }
    return text;
}

std::string StepSentences::value(std::string_view name, TracedStep const& step) const
{
    using Reader = std::string (*)(StepSentences const&, TracedStep const&);
    struct ValueRow
    {
        std::string_view name;
        Reader read;
    };
    // clang-format off
    static constexpr ValueRow kValues[] = {
        {"request",        [](StepSentences const&, TracedStep const& each) { return requestInWords(each.text("text")); }},
        {"time",           [](StepSentences const& self, TracedStep const& each) { return clockText(each.time, self.options_); }},
        {"at time",        [](StepSentences const& self, TracedStep const& each) { return self.contents_.causeOf(each) != nullptr ? std::string() : " at " + self.value("time", each); }},
        {"with arguments", [](StepSentences const& self, TracedStep const& each) { return argumentText(each, self.options_); }},
        {"call",           [](StepSentences const& self, TracedStep const& each) { return self.callText(each.text("call"), each); }},
        {"Call",           [](StepSentences const& self, TracedStep const& each) { return capitalised(self.callText(each.text("call"), each)); }},
        {"state",          [](StepSentences const&, TracedStep const& each) { return safeText(each.text("state")); }},
        {"key",            [](StepSentences const&, TracedStep const& each) { return keyNameOf(each); }},
        {"Key",            [](StepSentences const&, TracedStep const& each) { return capitalised(keyNameOf(each)); }},
        {"lifted",         [](StepSentences const&, TracedStep const& each) { return actionWords(each.text("hook")); }},
        {"plugged",        [](StepSentences const&, TracedStep const& each) { return actionWords(each.text("action")); }},
        {"fault state",    [](StepSentences const&, TracedStep const& each) { return actionWords(each.text("state")); }},
        {"lamp",           [](StepSentences const&, TracedStep const& each) { return lampNameOf(each); }},
        {"light",          [](StepSentences const&, TracedStep const& each) { return lampModeOf(each); }},
        {"a method",       [](StepSentences const&, TracedStep const& each) { return withArticle(each.text("method")); }},
        {"far end",        [](StepSentences const& self, TracedStep const& each) { return farEndOf(each, self.calls_, self.options_); }},
        {"sip",            [](StepSentences const&, TracedStep const& each) { return sipLabel(each); }},
    };
    // clang-format on
    auto const* const found = std::find_if(std::begin(kValues), std::end(kValues),
                                           [name](ValueRow const& each) { return each.name == name; });
    return found != std::end(kValues) ? found->read(*this, step) : safeText(step.text(name));
}

std::string StepSentences::callText(std::string_view id, TracedStep const& step) const
{
    std::string const text = "call " + safeWord(id);
    TracedCall const* const call = calls_.withId(id, step.number);
    if (call == nullptr || call->party.empty()) {
        return text;
    }
    char const* const preposition = call->isIncoming ? "from" : call->isOutgoing ? "to" : "with";
    return fmt::format("{} {} {}", text, preposition, addressText(call->party, options_));
}

}  // namespace telephone
