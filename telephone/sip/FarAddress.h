// Where the far end's packets come from, and where ours go: symmetric RTP (RFC 4961). Owned by its stream.
//
//   - The address in the far end's description is always heard, and settles the question when it sends.
//   - Until then another address is taken for the far end's once it has sent kProof packets in a row. Such a far end is
//     behind a NAT, whose address it does not know. It stays the far end until the address of the description sends or
//     a new description has another address.
//   - Nobody else is heard.
//   - Ours go to where the far end's come from. If that is only another port of the host in the description, they go to
//     the description's: a far end may send from one port and receive at another.
#pragma once

#include <cstdint>
#include <optional>

#include "telephone/sip/Stack.h"

namespace telephone::sip {

class FarAddress
{
public:
    static constexpr unsigned kProof = 5;

    // The address in a description. The same one as before changes nothing.
    void describe(sa const& address);
    // Whether a packet with this sequence number is the far end's.
    bool accept(sa const& from, std::uint16_t sequence);
    // Where our packets go; not set before a description.
    sa const& destination() const;

private:
    void prove(sa const& from, std::uint16_t sequence);

    sa described_{};
    bool settled_ = false;  // the address of the description has sent
    std::optional<sa> learned_;

    // An address that has sent a few packets.
    sa candidate_{};
    std::uint16_t candidateNext_ = 0;
    unsigned candidateCount_ = 0;
};

}  // namespace telephone::sip
