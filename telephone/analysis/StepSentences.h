// The clauses in which a step of a trace is told: one table by kind of step. One thread.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "telephone/analysis/TracedCalls.h"
#include "telephone/analysis/TracedStep.h"
#include "telephone/display/DisplayOptions.h"

namespace telephone {

// What a step is in a story.
enum class StepRole
{
    kRequest,
    kCommand,
    kAnswer,
    kReason,
    kEvent,
    kPlatform,
    kEngine,
    kKey,
    kHook,
    kPlug,
    kLamp,
    kTimer,
    kStored,
    kNotStored,
    kFault,
    kRequestSent,      // SIP
    kRequestReceived,  // SIP
    kAnswerSent,       // SIP
    kAnswerReceived,   // SIP
};

StepRole roleOf(TracedStep const& step);

class StepSentences
{
public:
    // Both must live as long.
    StepSentences(TraceContents const& contents, TracedCalls const& calls, DisplayOptions options)
        : contents_(contents)
        , calls_(calls)
        , options_(std::move(options))
    {}

    // What happened, to stand behind "because": "100 answered the INVITE with 200 OK".
    [[nodiscard]] std::string told(TracedStep const& step) const;
    // The beginning of a sentence that goes back to a change of a call or a SIP message: "The telephone had sent this
    // INVITE".
    [[nodiscard]] std::string recalled(TracedStep const& step) const;
    // The request or command as the purpose of something: "the request HoldCall 4711 call 3 of console at ...".
    [[nodiscard]] std::string purpose(TracedStep const& step) const;
    // A command whose effect is known: "console asked with the command "press 1" at ...".
    [[nodiscard]] std::string asked(TracedStep const& step) const;
    // A SIP request as what came before another: "a REFER that the telephone had sent to 100".
    [[nodiscard]] std::string followed(TracedStep const& step) const;
    // What an event or a lamp says, as a whole sentence.
    [[nodiscard]] std::string statement(TracedStep const& step) const;

private:
    [[nodiscard]] std::string filled(std::string_view form, TracedStep const& step) const;
    [[nodiscard]] std::string value(std::string_view name, TracedStep const& step) const;
    [[nodiscard]] std::string eventStatement(TracedStep const& step) const;
    // "call 3 to 100".
    [[nodiscard]] std::string callText(std::string_view id, TracedStep const& step) const;

    TraceContents const& contents_;
    TracedCalls const& calls_;
    DisplayOptions const options_;
};

}  // namespace telephone
