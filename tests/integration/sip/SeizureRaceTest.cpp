// Two users of one line want its only appearance in the same instant, under each of 600 seeds: exactly one gets it, and
// the other is refused. Each seed has a virtual time of its own.
#include <iostream>

#include <gtest/gtest.h>

#include "SipPeer.h"
#include "telephone/exchange/Exchange.h"
#include "telephone/time/VirtualTime.h"

namespace telephone::test {

namespace {

constexpr std::uint64_t kSeeds = 600;

struct Wins
{
    int first = 0;
    int second = 0;
};

class SharedDesk
{
public:
    explicit SharedDesk(std::uint64_t seed)
        : time_({.seed = seed})
    {
        loop_.start();
        exchange_.define({.number = "4711", .appearances = 1});
    }

    // Two telephones call at once. Each message of theirs takes up to 30 ms.
    void raceTwoTelephones(Wins& wins)
    {
        SipPeer first(loop_);
        SipPeer second(loop_);
        {
            std::lock_guard const lock(loop_);
            first.call(target());
            second.call(target());
        }
        bool const isFirst = winsCall(first);
        bool const isSecond = winsCall(second);
        EXPECT_NE(isFirst, isSecond) << "both or neither";
        wins.first += isFirst ? 1 : 0;
        wins.second += isSecond ? 1 : 0;
    }

    // The telephone calls, and the colleague whom the exchange plays seizes the line. He sits at the exchange: what he
    // does takes no time, so that he begins when half of the telephone's messages have arrived.
    void raceColleague(Wins& wins)
    {
        SipPeer telephone(loop_);
        telephone.call(target());
        EXPECT_TRUE(exchange_.play("4711", "wait 15ms, seize"));
        bool const isTelephone = winsCall(telephone);
        bool const isColleague = exchange_.play("4711", "release").has_value();
        EXPECT_NE(isTelephone, isColleague) << "both or neither";
        wins.first += isTelephone ? 1 : 0;
        wins.second += isColleague ? 1 : 0;
    }

private:
    [[nodiscard]] std::string target() const { return "sip:100@" + exchange_.hostPort(); }

    // Whether its call is answered; otherwise it must have been refused because the line is taken.
    static bool winsCall(SipPeer& telephone)
    {
        EXPECT_TRUE(telephone.waitUntil([&] {
            auto const state = telephone.session().state();
            return state == sip::SessionState::kEstablished || state == sip::SessionState::kClosed;
        }));
        bool const isEstablished = telephone.session().state() == sip::SessionState::kEstablished;
        EXPECT_TRUE(isEstablished || telephone.lastClosing.status == 403) << telephone.events();
        return isEstablished;
    }

    VirtualTime const time_;
    sip::EventLoop loop_;
    exchange::Exchange exchange_{loop_, {}};
};

Wins winsOf(void (SharedDesk::*race)(Wins&), char const* first, char const* second)
{
    Wins wins;
    for (std::uint64_t seed = 1; seed <= kSeeds; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        SharedDesk desk(seed);
        (desk.*race)(wins);
    }
    std::cout << kSeeds << " runs: " << first << " " << wins.first << ", " << second << " " << wins.second << "\n";
    return wins;
}

// Which seed lets whom win is chance; that neither side is favoured is not.
void expectOneWinnerEach(Wins const& wins)
{
    EXPECT_EQ(wins.first + wins.second, 600);
    EXPECT_GT(wins.first, 200);
    EXPECT_GT(wins.second, 200);
}

TEST(SeizureRace, TwoTelephones_HaveOneWinnerUnderEverySeed)
{
    Wins const wins = winsOf(&SharedDesk::raceTwoTelephones, "first telephone", "second telephone");

    expectOneWinnerEach(wins);
}

TEST(SeizureRace, TelephoneAndColleague_HaveOneWinnerUnderEverySeed)
{
    Wins const wins = winsOf(&SharedDesk::raceColleague, "telephone", "colleague");

    expectOneWinnerEach(wins);
}

}  // namespace

}  // namespace telephone::test
