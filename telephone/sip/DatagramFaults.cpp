#include "telephone/sip/DatagramFaults.h"

#include <algorithm>
#include <utility>

#include "telephone/sip/MediaClock.h"
#include "telephone/sip/Stack.h"
#include "telephone/time/VirtualTime.h"

namespace telephone::sip {

namespace {

constexpr unsigned kAlways = 100;
constexpr unsigned kFirstReport = 192;  // of the packet types of RTCP (RFC 5761 section 4)
constexpr unsigned kLastReport = 223;
constexpr std::string_view kRtp("\x80\0", 2);  // the beginning of a packet

bool befalls(DatagramFault const& fault, Datagram const& datagram)
{
    return fault.concerns(datagram) && (fault.percent >= kAlways || randomNumber() % kAlways < fault.percent);
}

}  // namespace

bool Datagram::isMedia() const
{
    return !bytes.empty() && (static_cast<unsigned char>(bytes.front()) & 0xc0U) == 0x80U;
}

bool Datagram::isRtp() const
{
    auto const type = bytes.size() > 1 ? static_cast<unsigned char>(bytes[1]) : 0U;
    return isMedia() && (type < kFirstReport || type > kLastReport);
}

std::string Datagram::describe() const
{
    auto const what = isRtp()     ? std::string_view("RTP")
                      : isMedia() ? std::string_view("RTCP")
                                  : bytes.substr(0, std::min(bytes.find('\r'), bytes.size()));
    return "from " + from + " to " + to + " (" + std::string(what) + ")";
}

DatagramFaults::Id DatagramFaults::begin(DatagramFault fault)
{
    MediaClock::catchUp();
    faults_.push_back({++lastId_, std::move(fault)});
    return lastId_;
}

void DatagramFaults::end(Id id)
{
    faults_.remove_if([id](Entry const& each) { return each.id == id; });
}

bool DatagramFaults::mayBefallRtp(sa const& from, sa const& to) const
{
    if (faults_.empty()) {
        return false;
    }
    Datagram const packet{addressText(from), addressText(to), kRtp};
    return std::ranges::any_of(faults_, [&packet](Entry const& each) { return each.fault.concerns(packet); });
}

DatagramFaults::Verdict DatagramFaults::judge(Datagram const& datagram)
{
    auto const found = std::ranges::find_if(faults_, [&](Entry const& each) { return befalls(each.fault, datagram); });
    if (found == faults_.end()) {
        return {};
    }
    DatagramFault& fault = found->fault;
    Verdict const verdict{fault.fate, fault.delay};
    if (fault.befell) {
        fault.befell(datagram);
    }
    if (fault.count > 0 && --fault.count == 0) {
        // Removed first: whoever is told may begin another.
        DatagramFault const last = std::move(fault);
        faults_.erase(found);
        if (last.ended) {
            last.ended();
        }
    }
    return verdict;
}

DatagramFaults& datagramFaults()
{
    static auto& faults = *new DatagramFaults;  // never destroyed, as the network
    return faults;
}

}  // namespace telephone::sip
