#include "telephone/framework/TelephoneProcess.h"

#include <csignal>

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>

#include "tests/doubles/TemporaryFolder.h"

using namespace telephone;

namespace {

constexpr int kForever = -1;

Outcome<TelephoneProcess> shell(std::string const& command, TemporaryFolder const& folder)
{
    return TelephoneProcess::start({"/bin/sh", "-c", command}, folder.path());
}

}  // namespace

TEST(TelephoneProcess, Output_IsInTheFilesOfItsWorkingFolder)
{
    TemporaryFolder const folder;
    auto process = shell("pwd; echo wrong >&2; cat; exit 3", folder);
    ASSERT_TRUE(process) << process.error().reason;

    int const status = process->wait();

    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 3);
    EXPECT_EQ(contentOf(folder.file("transcript")), folder.path() + "\n");
    EXPECT_EQ(contentOf(folder.file("errors")), "wrong\n");
}

TEST(TelephoneProcess, Descriptor_BecomesReadableAtTheEnd)
{
    TemporaryFolder const folder;
    auto process = shell("exec sleep 600", folder);
    ASSERT_TRUE(process) << process.error().reason;
    pollfd query{process->descriptor(), POLLIN, 0};
    EXPECT_EQ(poll(&query, 1, 0), 0);

    process->kill();

    EXPECT_EQ(poll(&query, 1, kForever), 1);
    int const status = process->wait();
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGKILL);
}

TEST(TelephoneProcess, Terminate_LetsTheProcessFinishThoughTheCallerBlocksTheSignal)
{
    sigset_t set;
    sigset_t before;
    sigemptyset(&set);
    sigaddset(&set, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &set, &before);
    TemporaryFolder const folder;
    auto process = shell("trap 'exit 5' TERM; echo ready >ready; while :; do sleep 0.01; done", folder);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    ASSERT_TRUE(process) << process.error().reason;
    while (contentOf(folder.file("ready")).empty()) {
        sched_yield();
    }

    process->terminate();

    int const status = process->wait();
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 5);
}

TEST(TelephoneProcess, Destructor_EndsTheProcess)
{
    TemporaryFolder const folder;
    pid_t id = 0;
    {
        auto process = shell("echo $$ >id; exec sleep 600", folder);
        ASSERT_TRUE(process) << process.error().reason;
        while (contentOf(folder.file("id")).empty()) {
            sched_yield();
        }
        id = std::stoi(contentOf(folder.file("id")));
        ASSERT_EQ(kill(id, 0), 0);
    }

    EXPECT_EQ(kill(id, 0), -1);
}

TEST(TelephoneProcess, ProgramThatDoesNotExist_IsRefused)
{
    TemporaryFolder const folder;

    auto const process = TelephoneProcess::start({"/no/such/program"}, folder.path());

    ASSERT_FALSE(process);
    EXPECT_EQ(process.error().reason, "/no/such/program: No such file or directory");
}
