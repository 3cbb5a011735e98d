// Writes the steps of a trace as a tree: each request, key or message of a far end with everything it caused.
//
//     12:00:01.200         →  HoldCall  4711 call 3, console
//     12:00:01.200  platform    CSfi::CallFeature  call=3  feature=hold  success
//     12:00:01.200       sip      INVITE sendonly  to 100
//
// A filter leaves steps out; the ancestors of a step that is shown stay, dimmed. A step whose ancestors are further up
// in the output, because several stories happen at once, is written below them again, dimmed. One thread.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "telephone/analysis/StepLines.h"
#include "telephone/analysis/StepSubjects.h"
#include "telephone/analysis/TracedStep.h"
#include "telephone/base/Refusal.h"

namespace telephone {

class TraceTree
{
public:
    using Writer = std::function<void(std::string const& line)>;

    enum class Form
    {
        kWords,
        kTexts,  // requests, events and SIP messages as they stand
        kJson,   // the lines of the file; ancestors are left out
    };

    // What is shown; empty: everything.
    struct Filter
    {
        std::set<StepKind> kinds;
        std::string line;  // 4711 includes 4711#2
        std::string call;
    };

    // "request,event": refused for a name that is not one of a kind.
    [[nodiscard]] static Outcome<std::set<StepKind>> readKinds(std::string_view names);

    // Both must live as long. The calls are all of the trace, or those that have been written so far.
    TraceTree(TraceContents const& contents, TracedCalls const& calls, Filter filter, Form form, DisplayOptions options,
              Writer write);

    // All steps, each story in one piece.
    void writeAll();
    // One more, as it happens. A cause must have been written before its effects.
    void write(TracedStep const& step);

private:
    [[nodiscard]] bool isShown(TracedStep const& step);
    // Until the cause of the step is the last one of the path; writes what is missing.
    void openPathTo(TracedStep const& step);
    void writeStep(TracedStep const& step, bool isAncestor);

    TraceContents const& contents_;
    Filter const filter_;
    Form const form_;
    DisplayOptions const options_;
    Writer const write_;
    StepLines const lines_;
    StepSubjects subjects_;
    std::vector<TracedStep const*> path_;  // steps that are open: the next line can stand below each of them
    std::unordered_map<std::uint64_t, std::size_t> places_;  // in the path, by number
    std::string timeAbove_;
};

}  // namespace telephone
