// docs/exchange.md matches the tables of the exchange.
#include "telephone/exchange/ExchangePage.h"

#include <gtest/gtest.h>

#include "tests/doubles/GeneratedPage.h"

namespace telephone::exchange {

TEST(ExchangePage, MatchesTheTables)
{
    expectPage("exchange.md", exchangePage());
}

TEST(ExchangePage, HoldsWholeRows)
{
    EXPECT_NE(
        exchangePage().find("| `say FILE` | plays a WAV file once, instead of the echo; tone: a second of a tone | "
                            "after early-media, in an answered call |\n"),
        std::string::npos);
    EXPECT_NE(exchangePage().find("| 105 | answers and hangs up after two seconds | `ring, answer 2s, hang-up` |\n"),
              std::string::npos);
}

}  // namespace telephone::exchange
