#include "telephone/framework/TelephoneProcess.h"

#include <csignal>
#include <cstdlib>
#include <fstream>

#include <fcntl.h>
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

TEST(TelephoneProcess, OutputIntoADescriptor_IsNotInAFile)
{
    TemporaryFolder const folder;
    FileDescriptor const output(open(folder.file("elsewhere").c_str(), O_WRONLY | O_CREAT, 0600));
    auto process = TelephoneProcess::start({"/bin/sh", "-c", "echo said"}, folder.path(), output.get());
    ASSERT_TRUE(process) << process.error().reason;

    EXPECT_EQ(process->wait(), 0);

    EXPECT_EQ(contentOf(folder.file("elsewhere")), "said\n");
    EXPECT_EQ(contentOf(folder.file("transcript")), "");
}

TEST(TelephoneProcess, Process_KnowsItsStarterAndIsInAGroupOfItsOwn)
{
    TemporaryFolder const folder;
    setenv("TELEPHONE_STARTER", "1", 1);
    setenv("OF_THE_STARTER", "kept", 1);
    auto process = shell("env | grep -c ^TELEPHONE_STARTER=; echo $TELEPHONE_STARTER $OF_THE_STARTER;"
                         "cut -d' ' -f5 /proc/$$/stat; echo $$",
                         folder);
    ASSERT_TRUE(process) << process.error().reason;
    std::string const id = std::to_string(process->id());

    process->wait();

    EXPECT_EQ(contentOf(folder.file("transcript")),
              "1\n" + std::to_string(getpid()) + " kept\n" + id + "\n" + id + "\n");
    unsetenv("TELEPHONE_STARTER");
    unsetenv("OF_THE_STARTER");
}

TEST(TelephoneProcess, MovedProcess_EndsWithItsNewOwner)
{
    TemporaryFolder const folder;
    auto first = shell("exec sleep 600", folder);
    auto second = shell("exec sleep 600", folder);
    ASSERT_TRUE(first && second);
    pid_t const id = second->id();
    {
        TelephoneProcess moved = std::move(*first);
        moved = std::move(*second);
        EXPECT_EQ(moved.id(), id);
        EXPECT_EQ(kill(id, 0), 0);
    }

    EXPECT_EQ(kill(id, 0), -1);
}

TEST(TelephoneProcess, EndOfAProcess_IsToldInWords)
{
    TemporaryFolder const folder;
    auto failing = shell("exit 3", folder);
    auto killed = shell("exec sleep 600", folder);
    ASSERT_TRUE(failing && killed);
    killed->kill();

    EXPECT_EQ(TelephoneProcess::endWords(failing->wait()), "ended with status 3");
    EXPECT_EQ(TelephoneProcess::endWords(killed->wait()), "ended by signal 9 (Killed)");
    EXPECT_EQ(killed->wait(), 0) << "it has been waited for";
}

TEST(TelephoneProcess, LastErrors_AreTheLastLines)
{
    TemporaryFolder const folder;
    EXPECT_EQ(TelephoneProcess::lastErrors(folder.path(), 2), std::vector<std::string>());

    std::ofstream(folder.file("errors")) << "one\ntwo\nthree\n";

    EXPECT_EQ(TelephoneProcess::lastErrors(folder.path(), 2), (std::vector<std::string>{"two", "three"}));
    EXPECT_EQ(TelephoneProcess::lastErrors(folder.path(), 3), (std::vector<std::string>{"one", "two", "three"}));
    EXPECT_EQ(TelephoneProcess::lastErrors(folder.path(), 9), (std::vector<std::string>{"one", "two", "three"}));
}
