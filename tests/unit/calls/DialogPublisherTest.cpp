#include "telephone/calls/DialogPublisher.h"

#include <mutex>

#include "telephone/sip/DialogSubscription.h"
#include "telephone/time/Gate.h"
#include "tests/helpers/EnginePhone.h"

namespace telephone::test {

TEST(DialogPublisherTest, RefreshedSubscription_ReceivesANewDocument)
{
    EnginePhone watched(EnginePhone::optionsOf("4722"));
    EnginePhone watcher(EnginePhone::optionsOf("4711"));
    sip::Account account;
    account.user = "4711";
    account.password = "secret";
    account.domain = watcher.engine().userAgent().hostPort();
    Gate second("the second document");
    int documents = 0;
    auto const changed = [&](std::vector<sip::DialogEntry> const&) {
        if (++documents == 2) {
            second.open();
        }
    };

    // Refreshed after 2.7 seconds.
    auto subscription = sip::DialogSubscription::start(
        watcher.engine().userAgent(), account, watched.uri(), changed, [](int, std::string const&) {}, 3);

    ASSERT_TRUE(subscription) << subscription.error().reason;
    EXPECT_TRUE(second.waitFor(std::chrono::seconds(10)));
    std::lock_guard const guard(eventLoop());
    subscription->reset();
}

}  // namespace telephone::test
