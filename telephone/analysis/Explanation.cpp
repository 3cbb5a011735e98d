#include "telephone/analysis/Explanation.h"

#include <algorithm>
#include <chrono>
#include <iterator>

#include <spdlog/fmt/fmt.h>

#include "CommunicationsServiceEnumerations.h"
#include "telephone/analysis/StepSentences.h"
#include "telephone/analysis/TracedCalls.h"
#include "telephone/display/ReadableLines.h"
#include "telephone/display/SafeText.h"
#include "telephone/protocol/MessageText.h"
#include "telephone/protocol/Vocabulary.h"

namespace telephone {

namespace {

// A longer chain is told without its middle.
constexpr std::size_t kLongestChain = 24;
constexpr std::size_t kToldBegin = 16;
constexpr std::size_t kToldEnd = 6;

enum class LinkForm
{
    kRecalled,  // "The telephone had sent this INVITE", and a cause can follow
    kPurpose,   // "It did so for the request ..."
    kAsked,     // ", as console asked with the command ..."
    kFollowed,  // "It followed a REFER that the telephone had sent"
};

struct LinkRow
{
    StepRole effect;
    StepRole cause;
    LinkForm form;
};

using R = StepRole;

// How the cause of a step is told where "because" does not say it best.
constexpr LinkRow kLinks[] = {
    {R::kEvent, R::kEngine, LinkForm::kRecalled},
    {R::kLamp, R::kEngine, LinkForm::kRecalled},
    {R::kAnswerReceived, R::kRequestSent, LinkForm::kRecalled},
    {R::kAnswerSent, R::kRequestReceived, LinkForm::kRecalled},
    {R::kPlatform, R::kRequest, LinkForm::kPurpose},
    {R::kPlatform, R::kCommand, LinkForm::kPurpose},
    {R::kKey, R::kCommand, LinkForm::kAsked},
    {R::kHook, R::kCommand, LinkForm::kAsked},
    {R::kPlug, R::kCommand, LinkForm::kAsked},
    {R::kFault, R::kCommand, LinkForm::kAsked},
    {R::kRequestReceived, R::kCommand, LinkForm::kAsked},
    {R::kRequestReceived, R::kAnswerSent, LinkForm::kRecalled},
    {R::kRequestReceived, R::kRequestSent, LinkForm::kFollowed},
};

// Steps that need no cause.
constexpr R kBeginnings[] = {R::kRequest, R::kCommand, R::kKey, R::kHook, R::kPlug, R::kFault, R::kRequestReceived};

// Tells a chain of causes, step by step back.
class Narrator
{
public:
    explicit Narrator(StepSentences const& words)
        : words_(words)
    {}

    void begin(std::string text) { sentences_.push_back(std::move(text)); }

    void link(TracedStep const& effect, TracedStep const& cause)
    {
        if (roleOf(effect) == StepRole::kTimer) {
            return start(effect, cause);
        }
        auto const* const found = std::find_if(std::begin(kLinks), std::end(kLinks), [&](LinkRow const& each) {
            return each.effect == roleOf(effect) && each.cause == roleOf(cause);
        });
        if (found == std::end(kLinks)) {
            return because(cause);
        }
        tell(found->form, cause);
    }

    void skip(std::size_t count, TracedStep const& step)
    {
        begin(fmt::format("{} steps before, {}", count, words_.told(step)));
        isOpen_ = false;
    }

    Sentences finish()
    {
        for (std::string& each : sentences_) {
            each += ".";
        }
        return std::move(sentences_);
    }

private:
    void tell(LinkForm form, TracedStep const& cause)
    {
        switch (form) {
        case LinkForm::kRecalled:
            begin(words_.recalled(cause));
            break;
        case LinkForm::kPurpose:
            begin("It did so for " + words_.purpose(cause));
            break;
        case LinkForm::kAsked:
            sentences_.back() += ", as " + words_.asked(cause);
            break;
        case LinkForm::kFollowed:
            begin("It followed " + words_.followed(cause));
            break;
        }
        isOpen_ = form == LinkForm::kRecalled || form == LinkForm::kFollowed;
    }

    void because(TracedStep const& cause)
    {
        if (isOpen_) {
            sentences_.back() += ", because " + words_.told(cause);
        } else {
            begin("This happened because " + words_.told(cause));
        }
        isOpen_ = false;
    }

    void start(TracedStep const& timer, TracedStep const& cause)
    {
        begin(fmt::format("It had been started {} earlier, when {}", durationText(timer.time - cause.time),
                          words_.told(cause)));
        isOpen_ = false;
    }

    StepSentences const& words_;
    Sentences sentences_;
    bool isOpen_ = false;  // the last sentence can take a "because"
};

// Events that tell of a change of their call.
constexpr std::string_view kOfChanges[] = {"CallStateChangeEvent", "CallHeldEvent",           "CallRetrievedEvent",
                                           "IncomingCallEvent",    "IncomingCallMissedEvent", "CallForwardedEvent"};

bool tellsOfChange(EventText const& event)
{
    return std::find(std::begin(kOfChanges), std::end(kOfChanges), event.description->method) != std::end(kOfChanges);
}

// Whether an event tells of this change and no other.
bool isItsState(EventText const& event, TracedStep const& change)
{
    return nameOfValue(enumerations::kCallState, event.value("CallState")) == change.text("state");
}

// The change of a call that an event or a lamp tells of: it has the same cause and came before. Null: none.
TracedStep const* changeBefore(TraceContents const& contents, TracedStep const& step)
{
    auto const event = readEvent(step.text("text"));
    if (event && !tellsOfChange(*event)) {
        return nullptr;
    }
    TracedStep const* nearest = nullptr;
    for (auto each = contents.steps.lower_bound(step.number); each != contents.steps.begin();) {
        TracedStep const& other = (--each)->second;
        if (other.number <= step.because) {
            break;
        }
        bool const isChange = other.kind == StepKind::kEngine && other.text("before") != other.text("state");
        if (!isChange || other.because != step.because || (event && other.text("call") != event->call())) {
            continue;
        }
        if (event && isItsState(*event, other)) {
            return &other;
        }
        nearest = nearest != nullptr ? nearest : &other;
    }
    return nearest;
}

// The step and its causes, with the change of a call between them.
std::vector<TracedStep const*> chainOf(TraceContents const& contents, TracedStep const& step)
{
    std::vector<TracedStep const*> chain{&step};
    TracedStep const* const change = changeBefore(contents, step);
    TracedStep const* next = change != nullptr ? change : contents.causeOf(step);
    while (next != nullptr) {
        chain.push_back(next);
        next = contents.causeOf(*next);
    }
    return chain;
}

std::string_view endingFor(TracedStep const& first)
{
    if (first.because != 0) {
        return "What led to this happened before the trace began";
    }
    bool const isBeginning =
        std::find(std::begin(kBeginnings), std::end(kBeginnings), roleOf(first)) != std::end(kBeginnings);
    return isBeginning ? "" : "The trace does not say what led to this";
}

Sentences explain(TraceContents const& contents, TracedStep const& step, DisplayOptions const& options)
{
    TracedCalls const calls(contents);
    StepSentences const words(contents, calls, options);
    Narrator narrator(words);
    narrator.begin(words.statement(step));
    auto const chain = chainOf(contents, step);
    for (std::size_t index = 1; index < chain.size(); ++index) {
        if (chain.size() > kLongestChain && index == kToldBegin) {
            index = chain.size() - kToldEnd;
            narrator.skip(index - kToldBegin, *chain[index]);
        } else {
            narrator.link(*chain[index - 1], *chain[index]);
        }
    }
    if (std::string_view const ending = endingFor(*chain.back()); !ending.empty()) {
        narrator.begin(std::string(ending));
    }
    return narrator.finish();
}

// The last of the steps that the predicate takes. Null: none.
template <typename Predicate>
TracedStep const* lastStep(TraceContents const& contents, Predicate isWanted)
{
    auto const found = std::find_if(contents.steps.rbegin(), contents.steps.rend(),
                                    [&](auto const& each) { return isWanted(each.second); });
    return found != contents.steps.rend() ? &found->second : nullptr;
}

// "hold.trace has no event 99; it has the events 1 to 12".
std::string eventsThatAre(TraceContents const& contents)
{
    long long first = 0;
    long long last = 0;
    for (auto const& [number, step] : contents.steps) {
        if (step.kind == StepKind::kEvent) {
            long long const event = step.wholeNumber("number").value_or(0);
            first = first == 0 ? event : std::min(first, event);
            last = std::max(last, event);
        }
    }
    return last == 0 ? "it has no events" : fmt::format("it has the events {} to {}", first, last);
}

}  // namespace

Outcome<Sentences> explainEvent(TraceContents const& contents, std::uint64_t number, DisplayOptions const& options)
{
    TracedStep const* const event = lastStep(contents, [number](TracedStep const& step) {
        return step.kind == StepKind::kEvent && step.text("number") == std::to_string(number);
    });
    return event != nullptr ? Outcome<Sentences>(explain(contents, *event, options))
                            : refuse(RefusalKind::kNotFound, fmt::format("{} has no event {}; {}", contents.name,
                                                                         number, eventsThatAre(contents)));
}

Outcome<Sentences> explainLamp(TraceContents const& contents, std::string_view lamp, DisplayOptions const& options)
{
    TracedStep const* const change = lastStep(contents, [lamp](TracedStep const& step) {
        return step.kind == StepKind::kLamp && (step.text("lamp") == lamp || step.text("label") == lamp);
    });
    return change != nullptr ? Outcome<Sentences>(explain(contents, *change, options))
                             : refuse(RefusalKind::kNotFound,
                                      fmt::format("{} has no change of a lamp {}", contents.name, safeText(lamp)));
}

}  // namespace telephone
