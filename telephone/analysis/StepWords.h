// What a step of a trace says, in words: the pieces that the tree, the sentences and the ladder share. Pure functions.
#pragma once

#include <string>
#include <string_view>

#include "telephone/analysis/TracedCalls.h"
#include "telephone/analysis/TracedStep.h"
#include "telephone/display/DisplayOptions.h"

namespace telephone {

// The argument of a platform call, as it stands. Empty: it has none of that name.
std::string argumentOf(TracedStep const& step, std::string_view name);

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
