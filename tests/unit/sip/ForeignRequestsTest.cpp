#include "telephone/sip/ForeignRequests.h"

#include <gtest/gtest.h>

namespace telephone::sip {
namespace {

// What a packet with this first line becomes, and why.
std::string readable(std::string const& line)
{
    std::string const rest = "\r\nVia: x";
    Ref<mbuf> packet;
    EXPECT_TRUE(fill(packet, line + rest));
    auto const strangeness = makeReadable(*packet.get());
    std::string const made = remainingText(packet.get());
    EXPECT_TRUE(made.ends_with(rest)) << made;
    std::string const why = !strangeness ? "" : *strangeness == Strangeness::kVersion ? " (version)" : " (scheme)";
    return made.substr(0, made.find('\r')) + why;
}

TEST(ForeignRequests, OfAnotherVersionOrScheme_AreMadeReadable)
{
    EXPECT_EQ(readable("OPTIONS sip:a@host SIP/7.0"), "OPTIONS sip:xxxxxx SIP/2.0 (version)");
    EXPECT_EQ(readable("OPTIONS sip:a@host SIP/10.25"), "OPTIONS sip:xxxxxxxx SIP/2.0 (version)");
    EXPECT_EQ(readable("INVITE http://host/a SIP/2.0"), "INVITE sip:xxxxxxxxx SIP/2.0 (scheme)");
    EXPECT_EQ(readable("INVITE http://host/a SIP/3.0"), "INVITE sip:xxxxxxxxx SIP/2.0 (version)");
    EXPECT_EQ(readable("INVITE nowhere at all SIP/2.0"), "INVITE sip:xxxxxxxxxx SIP/2.0 (scheme)");
    EXPECT_EQ(readable("X abcde SIP/3.0"), "X sip:x SIP/2.0 (version)");
}

TEST(ForeignRequests, WithoutRoomForAReadableLine_StayAsTheyAre)
{
    EXPECT_EQ(readable("X abcd SIP/3.0"), "X abcd SIP/3.0");
    EXPECT_EQ(readable("OPTIONS x SIP/3"), "OPTIONS x SIP/3");
}

TEST(ForeignRequests, OtherPackets_StayAsTheyAre)
{
    for (char const* line :
         {"OPTIONS sip:a@host SIP/2.0", "OPTIONS SIPS:a@host SIP/2.0", "OPTIONS Tel:12345 SIP/2.0",
          "SIP/7.0 200 OK SIP/7.0", "OPTIONS sip:a@host HTTP/1.1", "OPTIONS SIP/10.2222", "OPTIONS", ""}) {
        EXPECT_EQ(readable(line), line);
    }
}

}  // namespace
}  // namespace telephone::sip
