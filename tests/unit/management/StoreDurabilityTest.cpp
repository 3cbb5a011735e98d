// An answered write survives the end of the process right after the answer.
#include <array>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include "StoreFixture.h"

namespace telephone {
namespace {

class StoreDurability : public StoreFixture
{
protected:
    // A telephone that sets one value after the other, and says each accepted one on the pipe.
    [[noreturn]] void setForEver(int pipe, int round) const
    {
        auto const settings = open();
        for (int i = 0;; ++i) {
            auto const value = std::to_string(round * 1000 + i);
            if (!settings->setAll({{"cfu-address", value}, {"cfb-address", value}})) {
                ::_exit(1);
            }
            std::string const line = value + "\n";
            if (::write(pipe, line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
                ::_exit(2);
            }
        }
    }
    static std::string readAll(int pipe)
    {
        std::string text;
        std::array<char, 4096> bytes{};
        for (auto count = ::read(pipe, bytes.data(), bytes.size()); count > 0;
             count = ::read(pipe, bytes.data(), bytes.size())) {
            text.append(bytes.data(), static_cast<std::size_t>(count));
        }
        return text;
    }
};

TEST_F(StoreDurability, AcceptedValue_SurvivesAKillRightAfterTheAnswer_AHundredTimes)
{
    open();
    for (int round = 0; round < 100; ++round) {
        std::array<int, 2> ends{};
        ASSERT_EQ(::pipe(ends.data()), 0);
        auto const child = ::fork();
        if (child == 0) {
            ::close(ends[0]);
            setForEver(ends[1], round);
        }
        ::close(ends[1]);
        std::string answered(1, '\0');
        for (int i = 0; i <= round % 5;) {
            ASSERT_EQ(::read(ends[0], answered.data(), 1), 1) << "the telephone refused a value";
            i += answered[0] == '\n' ? 1 : 0;
        }

        ASSERT_EQ(::kill(child, SIGKILL), 0);
        ASSERT_EQ(::waitpid(child, nullptr, 0), child);

        auto const rest = readAll(ends[0]);
        ::close(ends[0]);
        auto const complete = rest.rfind('\n') == std::string::npos ? std::string() : rest.substr(0, rest.rfind('\n'));
        auto const last =
            complete.empty() ? round * 1000 + round % 5 : std::stoi(complete.substr(complete.rfind('\n') + 1));
        auto const settings = open();
        auto const kept = settings->number("cfu-address");
        // The last one that was answered, or the one after it whose answer the end cut off.
        EXPECT_TRUE(kept == last || kept == last + 1) << "round " << round << ": " << kept << ", not " << last;
        EXPECT_EQ(settings->text("cfb-address"), settings->text("cfu-address")) << "half a write";
    }
}

}  // namespace
}  // namespace telephone
