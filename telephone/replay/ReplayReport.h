// What a replay found: which messages were as recorded, and what differed. Written for people, as a table and as JSON.
// One thread.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "telephone/display/StateTables.h"
#include "telephone/replay/IdMap.h"

namespace telephone {

enum class DifferenceKind
{
    kDifferent,   // it came with other values
    kMissing,     // it did not come
    kExtra,       // the recording does not have it
    kOutOfOrder,  // it came, but not at its place among the messages of its call
};

struct ReplayDifference
{
    DifferenceKind kind;
    int line = 0;         // of the recording; of an extra message that of the one before it, 0 before the first
    std::string message;  // its name: "HoldCall", "CallHeldEvent", "press"
    std::string text;     // the whole message in words
    std::vector<PartDifference> parts = {};
};

class ReplayReport
{
public:
    // The file of the recording.
    explicit ReplayReport(std::string recording)
        : recording_(std::move(recording))
    {}

    void addEqual(std::string const& message);
    void add(ReplayDifference difference);

    [[nodiscard]] bool isEqual() const { return differences_.empty(); }
    [[nodiscard]] std::vector<ReplayDifference> const& differences() const { return differences_; }

    // "tour.recording:17: missing: CallHeldEvent 4711 call 1: held", in the order of the recording; then the sum.
    [[nodiscard]] TableRows rows() const;
    // A row for each message: how often it was recorded and came as recorded, differed, and in which elements.
    [[nodiscard]] TableRows table() const;
    // All of it, as one object on one line.
    [[nodiscard]] std::string json() const;

private:
    // Of the messages of one name.
    struct Count
    {
        int recorded = 0;
        int equal = 0;
        std::map<DifferenceKind, int> different;
        std::set<std::string> elements;
    };

    std::string const recording_;
    std::vector<ReplayDifference> differences_;  // by rising line
    std::map<std::string, Count> counts_;
};

}  // namespace telephone
