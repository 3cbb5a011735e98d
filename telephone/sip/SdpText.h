// A received session description (RFC 8866) in the form that the stack's reader needs. Used by SdpNegotiation.
#pragma once

#include <string>
#include <string_view>

namespace telephone::sip {

// Names the static payload types of G.711 where the description leaves that out, as it may (RFC 3264 section 5.1,
// RFC 3551 section 6), and leaves out each "rtpmap" and "fmtp" that is malformed: the stack would refuse the whole
// description for one of them, although it only concerns one format.
std::string completedDescription(std::string_view description);

// The description with this profile ("RTP/SAVP") for its first audio.
std::string withProfile(std::string description, std::string_view profile);

}  // namespace telephone::sip
