#include "telephone/sip/LocalAddresses.h"

#include <gtest/gtest.h>

#include "telephone/time/VirtualTime.h"

namespace telephone::sip {
namespace {

using Texts = std::vector<std::string>;

// The addresses, or the reason of the refusal.
Texts addressesOf(std::string const& address)
{
    auto const found = localAddresses(address);
    if (!found) {
        return {found.error().reason};
    }
    Texts texts;
    for (auto const& each : *found) {
        texts.push_back(hostText(each));
    }
    return texts;
}

TEST(LocalAddresses, OfAnAddress_AreItself)
{
    EXPECT_EQ(addressesOf("192.0.2.1"), Texts{"192.0.2.1"});
    EXPECT_EQ(addressesOf("2001:db8:0::1"), Texts{"2001:db8::1"});
}

TEST(LocalAddresses, OfAnInterface_AreOneOfEachFamily)
{
    EXPECT_EQ(addressesOf("lo"), (Texts{"127.0.0.1", "::1"}));
}

TEST(LocalAddresses, OfWhatIsNeither_AreRefused)
{
    EXPECT_EQ(addressesOf("telephone0"),
              Texts{"\"telephone0\" is neither an IP address nor a network interface of this machine"});
}

TEST(LocalAddresses, OfAnInterfaceInVirtualTime_AreRefused)
{
    VirtualTime const time({});

    EXPECT_EQ(addressesOf("lo"),
              Texts{"in virtual time the SIP address must be an IP address, not the interface \"lo\""});
    EXPECT_EQ(addressesOf("192.0.2.1"), Texts{"192.0.2.1"});
}

TEST(LocalAddresses, OfAllAddresses_AreRefused)
{
    EXPECT_EQ(addressesOf("0.0.0.0"), Texts{"the SIP address must be one of this machine's, not 0.0.0.0"});
    EXPECT_EQ(addressesOf("::"), Texts{"the SIP address must be one of this machine's, not ::"});
}

}  // namespace
}  // namespace telephone::sip
