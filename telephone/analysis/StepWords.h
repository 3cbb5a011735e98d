// What a step of a trace says, in words: the pieces that the tree, the sentences and the ladder share. Pure functions.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "telephone/analysis/TracedCalls.h"
#include "telephone/analysis/TracedStep.h"
#include "telephone/display/DisplayOptions.h"

namespace telephone {

struct ArgumentWords
{
    std::string name;
    std::string value;  // "100", "hold"
    bool isTelling;     // false: a flag or a mode, which says little
};
// The arguments of a platform call without its call, its line and what has no value.
std::vector<ArgumentWords> argumentWords(TracedStep const& step, DisplayOptions const& options);

// The id of the call and the line that a platform call is about. Empty: none.
std::string callOfPlatform(TracedStep const& step);
std::string lineOfPlatform(TracedStep const& step);

// "remote ringing" for sfiCallStateRemoteRinging, "success" for sfiSuccess; any other text made safe.
std::string enumeratorInWords(std::string_view enumerator);

// "INVITE", "200 OK", "INVITE sendonly": audio that goes both ways is not mentioned.
std::string sipLabel(TracedStep const& step);
bool isSipAnswer(TracedStep const& step);
bool isSent(TracedStep const& step);

// The far end of a SIP message: the party of its call, or else its address.
std::string farEndOf(TracedStep const& step, TracedCalls const& calls, DisplayOptions const& options);

// "key 3 \"Hold\"".
std::string keyNameOf(TracedStep const& step);
// "key 3 \"Hold\" pressed", "handset lifted", "headset plugged in".
std::string keyInWords(TracedStep const& step);
// "3 \"Hold\""; the name of a lamp that belongs to no key.
std::string lampNameOf(TracedStep const& step);
// "flashing green".
std::string lampModeOf(TracedStep const& step);

}  // namespace telephone
