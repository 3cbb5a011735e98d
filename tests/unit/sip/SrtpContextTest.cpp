#include "telephone/sip/SrtpContext.h"

#include <gtest/gtest.h>

namespace telephone::sip {
namespace {

std::string bytes(std::string_view hex)
{
    std::string made;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
        made += static_cast<char>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16));
    }
    return made;
}

// A packet of 16 bytes of G.711 with this sequence number.
std::string packet(std::uint16_t sequence)
{
    std::string made = bytes("80080000decafbadcafebabeabababababababababababababababab");
    made[2] = static_cast<char>(sequence >> 8);
    made[3] = static_cast<char>(sequence & 0xff);
    return made;
}

std::string protect(SrtpContext& context, std::string const& plain, PacketKind kind = PacketKind::kAudio)
{
    Ref<mbuf> buffer;
    EXPECT_TRUE(fill(buffer, plain));
    EXPECT_TRUE(context.protect(*buffer.get(), kind));
    return remainingText(buffer.get());
}

// The result, and the packet.
std::pair<SrtpResult, std::string> unprotect(SrtpContext& context, std::string const& encrypted,
                                             PacketKind kind = PacketKind::kAudio)
{
    Ref<mbuf> buffer;
    EXPECT_TRUE(fill(buffer, encrypted));
    auto const result = context.unprotect(*buffer.get(), kind);
    return {result, remainingText(buffer.get())};
}

CryptoKey keyOfSuite(CryptoSuite suite)
{
    constexpr std::size_t kSizes[] = {44, 28, 30, 30};
    return {suite, std::string(kSizes[static_cast<std::size_t>(suite)], 'k')};
}

TEST(SrtpContextTest, KnownPacket_IsEncryptedAsElsewhere)
{
    CryptoKey const key{CryptoSuite::kAesCm128HmacSha1_80,
                        bytes("e1f97a0d3e018be0d64fa32c06de41390ec675ad498afeebb6960b3aabe6")};
    SrtpContext sender(key, true);

    EXPECT_EQ(protect(sender, bytes("800f1234decafbadcafebabeabababababababababababababababab")),
              bytes("800f1234decafbadcafebabe4e55dc4ce79978d88ca4d215949d2402b78d6acc99ea179b8dbb"));
}

TEST(SrtpContextTest, EachSuite_DecryptsWhatItHasEncrypted)
{
    for (std::size_t i = 0; i < kCryptoSuites; ++i) {
        auto const key = keyOfSuite(static_cast<CryptoSuite>(i));
        SrtpContext sender(key, true);
        SrtpContext receiver(key, false);
        std::string const report = bytes("80c90001decafbad");

        EXPECT_EQ(unprotect(receiver, protect(sender, packet(1))), std::pair(SrtpResult::kDone, packet(1))) << i;
        EXPECT_EQ(unprotect(receiver, protect(sender, report, PacketKind::kReport), PacketKind::kReport),
                  std::pair(SrtpResult::kDone, report))
            << i;
    }
}

TEST(SrtpContextTest, ReportsOfTheSuiteWithShortTags_HaveLongOnes)
{
    SrtpContext sender(keyOfSuite(CryptoSuite::kAesCm128HmacSha1_32), true);
    std::string const report = bytes("80c90001decafbad");

    EXPECT_EQ(protect(sender, packet(1)).size(), packet(1).size() + 4);
    EXPECT_EQ(protect(sender, report, PacketKind::kReport).size(), report.size() + 4 + 10);
}

TEST(SrtpContextTest, ForgedPackets_ChangeNothing)
{
    auto const key = keyOfSuite(CryptoSuite::kAeadAes128Gcm);
    SrtpContext sender(key, true);
    SrtpContext receiver(key, false);
    SrtpContext stranger({CryptoSuite::kAeadAes128Gcm, std::string(28, 'x')}, true);
    ASSERT_EQ(unprotect(receiver, protect(sender, packet(1))).first, SrtpResult::kDone);

    for (unsigned i = 0; i < 200; ++i) {
        auto const sequence = static_cast<std::uint16_t>(40'000 + i);
        EXPECT_EQ(unprotect(receiver, protect(stranger, packet(sequence))).first, SrtpResult::kForged);
    }
    EXPECT_EQ(unprotect(receiver, packet(2)).first, SrtpResult::kForged) << "not encrypted";
    EXPECT_EQ(unprotect(receiver, "").first, SrtpResult::kForged);

    for (std::uint16_t sequence = 2; sequence < 200; ++sequence) {
        EXPECT_EQ(unprotect(receiver, protect(sender, packet(sequence))).first, SrtpResult::kDone);
    }
}

TEST(SrtpContextTest, ReplayedPackets_AreRecognisedAlsoWhenTheyAreOld)
{
    auto const key = keyOfSuite(CryptoSuite::kAesCm128HmacSha1_80);
    SrtpContext sender(key, true);
    SrtpContext receiver(key, false);
    std::string const first = protect(sender, packet(1));
    ASSERT_EQ(unprotect(receiver, first).first, SrtpResult::kDone);

    EXPECT_EQ(unprotect(receiver, first).first, SrtpResult::kReplayed);
    for (std::uint16_t sequence = 2; sequence < 300; ++sequence) {
        ASSERT_EQ(unprotect(receiver, protect(sender, packet(sequence))).first, SrtpResult::kDone);
    }
    EXPECT_EQ(unprotect(receiver, first).first, SrtpResult::kReplayed);
}

TEST(SrtpContextTest, PacketsThatOvertakeEachOther_AreAccepted)
{
    auto const key = keyOfSuite(CryptoSuite::kAeadAes256Gcm);
    SrtpContext sender(key, true);
    SrtpContext receiver(key, false);
    std::string const first = protect(sender, packet(1));
    std::string const second = protect(sender, packet(2));

    EXPECT_EQ(unprotect(receiver, second).first, SrtpResult::kDone);
    EXPECT_EQ(unprotect(receiver, first).first, SrtpResult::kDone);
}

}  // namespace
}  // namespace telephone::sip
