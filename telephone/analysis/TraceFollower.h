// Shows a trace while it is written. Steps are shown in the order in which they began: one that is written late,
// because it takes time, is waited for, but no longer than one look. One thread.
#pragma once

#include <cstdint>
#include <functional>
#include <istream>
#include <optional>
#include <set>
#include <string>

#include "telephone/analysis/TraceReader.h"
#include "telephone/analysis/TraceTree.h"
#include "telephone/analysis/TracedCalls.h"

namespace telephone {

class TraceFollower
{
public:
    // options: how words are written, given the domain of the telephone's own numbers.
    TraceFollower(std::string name, TraceTree::Filter filter, TraceTree::Form form,
                  std::function<DisplayOptions(std::string const& domain)> options, TraceTree::Writer write);

    // Shows what the file has gained since the last look. Refused if it is not a trace, or no longer the same one.
    [[nodiscard]] Outcome<> look(std::istream& file);

private:
    void show(std::set<std::uint64_t> const& numbers);

    TraceReader reader_;
    TraceTree::Filter const filter_;
    TraceTree::Form const form_;
    std::function<DisplayOptions(std::string const& domain)> const options_;
    TraceTree::Writer const write_;
    TracedCalls calls_;
    std::optional<TraceTree> tree_;    // from the header on
    std::set<std::uint64_t> waiting_;  // steps before which one is missing
    std::uint64_t next_ = 1;           // the first that has not been shown
    std::streamoff end_ = 0;           // of what has been read
};

}  // namespace telephone
