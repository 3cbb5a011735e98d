// Which values of a recording correspond to which present ones: the ids of calls, and the domain of the telephone's own
// numbers. A recorded id always corresponds to the same present one, and no two to the same. All other values must be
// equal; times do not stand in messages. One thread.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "telephone/replay/MessageParts.h"

namespace telephone {

// An element whose values are not the same.
struct PartDifference
{
    std::string tag;
    std::string recorded;  // as it would have to be now; empty also for a missing element
    std::string present;
    Enumeration const* values = nullptr;
};

class IdMap
{
public:
    // The domains may be empty: not known.
    IdMap(std::string recordedDomain, std::string presentDomain)
        : recordedDomain_(std::move(recordedDomain))
        , presentDomain_(std::move(presentDomain))
    {}

    // The present id of a recorded call, if it is known.
    [[nodiscard]] std::optional<std::string> presentCall(std::string const& recorded) const;
    // Whether a present id has a recorded one.
    [[nodiscard]] bool isKnown(std::string const& present) const { return recorded_.count(present) > 0; }

    // The recorded message as it would be now. Ids without a present one stay as they are.
    [[nodiscard]] MessageParts presented(MessageParts recorded) const;
    // The text with the present domain in place of the recorded one.
    [[nodiscard]] std::string presented(std::string text) const;

    // How the messages differ, if unknown ids may correspond to each other. A part of one that the other lacks is a
    // difference; the order of the parts is none.
    [[nodiscard]] std::vector<PartDifference> differences(MessageParts const& recorded,
                                                          MessageParts const& present) const;
    // From now on the ids at the same places correspond to each other, where both are unknown.
    void bind(MessageParts const& recorded, MessageParts const& present);

private:
    [[nodiscard]] bool correspond(std::string const& recorded, std::string const& present) const;

    std::string const recordedDomain_;
    std::string const presentDomain_;
    std::map<std::string, std::string> present_;   // by recorded id
    std::map<std::string, std::string> recorded_;  // by present id
};

}  // namespace telephone
