// What the far ends of the calls do, as far as the events of the telephone tell: 100 is ringing, answers, hangs up. One
// thread.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "telephone/display/ElementWords.h"
#include "telephone/display/RequestWords.h"

namespace telephone {

class FarEnds
{
public:
    // Something that one end of a call has told the other.
    struct Act
    {
        bool isOurs;       // false: the far end's
        std::string text;  // "call to 100", "100 is ringing"
    };

    // What two ends are doing until something happens.
    struct GoingOn
    {
        bool isOnHold;
        std::string text;  // "talk with 100"
    };

    // A request that ends a call decides who has hung up when the call ends.
    void noteRequest(RequestWords const& request);
    void noteRefusal(RequestWords const& request);

    // Follows the call of an event; nothing if the event says nothing about its far end.
    std::optional<Act> follow(std::string_view method, EventWords const& words);
    // In the order of the calls' ids.
    [[nodiscard]] std::vector<GoingOn> goingOn() const;

private:
    enum class Phase
    {
        kBegun,
        kTalk,
        kHeldHere,
        kHeldThere,
        kConference,
        kOver,
    };

    struct FollowedCall
    {
        std::string party = "the far end";
        Phase phase = Phase::kBegun;
        bool isIncoming = false;
        bool isAnswered = false;
        bool isEndedHere = false;
    };

    struct ActRow;
    static ActRow const* findRow(std::string_view method, std::string_view what);
    static std::optional<Act> end(FollowedCall const& call, MessageWords const& words);

    std::map<std::string, FollowedCall> calls_;  // by id
};

}  // namespace telephone
