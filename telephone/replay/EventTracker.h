// Compares the events that come during a replay with the recorded ones. While they come, it learns which recorded call
// is which present one, and knows what is still to come; at the end it compares them call by call. Events of different
// calls may come in any order. One thread.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "telephone/display/DisplayOptions.h"
#include "telephone/replay/IdMap.h"
#include "telephone/replay/Recording.h"
#include "telephone/replay/ReplayReport.h"

namespace telephone {

class EventTracker
{
public:
    // Both outlive the tracker.
    EventTracker(Recording const& recording, IdMap& ids);

    void came(std::string const& text);

    // Whether every event that the recording has before an entry has come, or is no longer waited for.
    [[nodiscard]] bool haveComeBefore(std::size_t entry) const;
    // From now on, no event before the entry is waited for.
    void giveUpBefore(std::size_t entry);

    void compare(ReplayReport& report, DisplayOptions const& options) const;

private:
    struct Expected
    {
        std::size_t entry;
        int line;
        std::string text;
        MessageParts parts;
        bool isDone = false;  // it has come, or is no longer waited for
    };
    struct Came
    {
        std::string text;
        MessageParts parts;
    };
    // The events of one call or line, in their order.
    struct Group
    {
        std::vector<Expected const*> expected;
        std::vector<Came const*> came;
    };

    // The events of a group that are not pairs.
    struct Unpaired
    {
        std::vector<Expected const*> missing;
        std::vector<std::pair<Came const*, int>> extra;  // with the line of the recording before it
    };

    // The recorded event that this one is, or the one whose call begins with it; null: none.
    Expected* find(MessageParts const& present);
    void skipDone();
    [[nodiscard]] std::map<std::string, Group> groups() const;
    void compare(Group const& group, ReplayReport& report, DisplayOptions const& options) const;
    void addPair(Expected const& was, Came const& is, ReplayReport& report, DisplayOptions const& options) const;
    // An event that is missing at one place and extra at another has changed its place.
    void addUnpaired(Unpaired unpaired, ReplayReport& report, DisplayOptions const& options) const;

    IdMap& ids_;
    std::vector<Expected> expected_;
    std::size_t firstOpen_ = 0;  // those before it are done
    std::vector<Came> came_;
};

}  // namespace telephone
