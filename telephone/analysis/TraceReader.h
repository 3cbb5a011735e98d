// Reads the file of a trace, also one that is still growing. A line that is cut off at the end of the file, because
// the telephone has crashed or is writing it at the moment, waits for its rest. One thread.
//
//     TraceReader reader("hold.trace");
//     if (auto const read = reader.read(file); !read) { ... }
//     auto contents = reader.finish();
#pragma once

#include <cstdint>
#include <istream>
#include <string>
#include <vector>

#include "telephone/analysis/TracedStep.h"
#include "telephone/base/Refusal.h"

namespace telephone {

// Of the form of the file.
constexpr int kTraceVersion = 1;

class TraceReader
{
public:
    enum class Keep
    {
        kSteps,
        kTexts,  // also each step's line and the texts of SIP messages, which are most of a trace
    };

    // The name of the file is for refusals: "hold.trace:3: ...".
    explicit TraceReader(std::string name, Keep keep = Keep::kSteps);

    // Takes the whole lines from where the stream stands to its end, and returns the numbers of their steps. Refused
    // for the first line that is not one of a trace.
    [[nodiscard]] Outcome<std::vector<std::uint64_t>> read(std::istream& file);

    // All steps so far.
    [[nodiscard]] TraceContents const& contents() const { return contents_; }

    // At the end of the file: all steps. Refused for an empty file. A last line without an end counts if it is whole.
    [[nodiscard]] Outcome<TraceContents> finish();

private:
    // Returns the number of the step; 0 for a line that is not a step.
    [[nodiscard]] Outcome<std::uint64_t> take(std::string const& text);
    [[nodiscard]] Outcome<> takeHeader(std::string const& text);

    TraceContents contents_;
    Keep const keep_;
    std::string rest_;  // of a line whose end is missing
    std::uint64_t line_ = 0;
    bool hasBegun_ = false;
};

}  // namespace telephone
