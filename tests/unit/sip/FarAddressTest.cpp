#include "telephone/sip/FarAddress.h"

#include <gtest/gtest.h>

namespace telephone::sip {
namespace {

sa address(char const* host, std::uint16_t port)
{
    sa made{};
    sa_set_str(&made, host, port);
    return made;
}

std::string destinationOf(FarAddress const& far)
{
    return addressText(far.destination());
}

class FarAddressTest : public testing::Test
{
protected:
    FarAddressTest() { far_.describe(described_); }

    // How many of these packets are heard.
    int heard(sa const& from, std::uint16_t first, int count)
    {
        int heard = 0;
        for (int i = 0; i < count; ++i) {
            heard += far_.accept(from, static_cast<std::uint16_t>(first + i)) ? 1 : 0;
        }
        return heard;
    }

    sa const described_ = address("192.0.2.1", 4000);
    sa const nat_ = address("198.51.100.7", 61000);
    sa const stranger_ = address("203.0.113.9", 5004);
    FarAddress far_;
};

TEST_F(FarAddressTest, AddressOfTheDescription_IsHeardAtOnceAndNobodyElseThen)
{
    EXPECT_EQ(heard(described_, 100, 1), 1);

    EXPECT_EQ(heard(stranger_, 7, 50), 0);
    EXPECT_EQ(heard(described_, 101, 3), 3);
    EXPECT_EQ(destinationOf(far_), "192.0.2.1:4000");
}

TEST_F(FarAddressTest, AddressBehindANat_IsHeardFromTheFifthPacketInARowAndSentTo)
{
    EXPECT_EQ(heard(nat_, 65533, 10), 6);

    EXPECT_EQ(destinationOf(far_), "198.51.100.7:61000");
}

TEST_F(FarAddressTest, LearnedAddress_StaysTheOnlyOne)
{
    heard(nat_, 10, 5);

    EXPECT_EQ(heard(stranger_, 20, 50), 0);
    EXPECT_EQ(heard(nat_, 15, 5), 5);
    EXPECT_EQ(destinationOf(far_), "198.51.100.7:61000");
}

TEST_F(FarAddressTest, AddressOfTheDescription_EndsALearnedOneForGood)
{
    heard(stranger_, 10, 5);

    EXPECT_EQ(heard(described_, 1, 1), 1);

    EXPECT_EQ(heard(stranger_, 15, 50), 0);
    EXPECT_EQ(destinationOf(far_), "192.0.2.1:4000");
}

TEST_F(FarAddressTest, PacketsOutOfARow_ProveNothing)
{
    for (std::uint16_t sequence = 0; sequence < 40; sequence = static_cast<std::uint16_t>(sequence + 2)) {
        EXPECT_FALSE(far_.accept(stranger_, sequence));
    }
    EXPECT_EQ(heard(stranger_, 100, 4) + heard(nat_, 104, 4), 0);
}

TEST_F(FarAddressTest, OtherPortOfTheSameHost_IsHeardButNotSentTo)
{
    EXPECT_EQ(heard(address("192.0.2.1", 4100), 1, 10), 6);

    EXPECT_EQ(destinationOf(far_), "192.0.2.1:4000");
}

TEST_F(FarAddressTest, DescriptionWithTheSameAddress_KeepsALearnedOne)
{
    heard(nat_, 1, 5);

    far_.describe(address("192.0.2.1", 4000));

    EXPECT_EQ(heard(nat_, 6, 3), 3);
}

TEST_F(FarAddressTest, DescriptionWithANewAddress_LearnsAnew)
{
    heard(nat_, 1, 5);

    far_.describe(address("192.0.2.1", 4002));

    EXPECT_EQ(heard(nat_, 6, 4), 0);
    EXPECT_EQ(heard(address("192.0.2.1", 4002), 1, 1), 1);
    EXPECT_EQ(destinationOf(far_), "192.0.2.1:4002");
}

}  // namespace
}  // namespace telephone::sip
