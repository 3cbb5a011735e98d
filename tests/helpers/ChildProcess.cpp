#include "ChildProcess.h"

#include <stdexcept>
#include <thread>

#include <arpa/inet.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace telephone::test {

ChildProcess::ChildProcess(std::string const& program, std::vector<std::string> const& arguments,
                           std::string const& folder)
{
    std::vector<std::string> words{program};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    process_ = ::fork();
    if (process_ < 0) {
        throw std::runtime_error("cannot start " + program);
    }
    if (process_ > 0) {
        return;
    }
    int const nowhere = ::open("/dev/null", O_RDWR);
    ::dup2(nowhere, STDIN_FILENO);
    ::dup2(nowhere, STDOUT_FILENO);
    ::dup2(nowhere, STDERR_FILENO);
    if (::chdir(folder.c_str()) == 0) {
        ::execvp(pointers.front(), pointers.data());
    }
    ::_exit(127);
}

ChildProcess::~ChildProcess()
{
    // A request first, so that it can end its own children.
    if (isRunning()) {
        ::kill(process_, SIGTERM);
        wait(std::chrono::seconds(5));
    }
    kill();
}

bool ChildProcess::isRunning()
{
    if (status_) {
        return false;
    }
    int status = 0;
    if (::waitpid(process_, &status, WNOHANG) != process_) {
        return true;
    }
    status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return false;
}

std::optional<int> ChildProcess::wait(std::chrono::seconds deadline)
{
    auto const end = std::chrono::steady_clock::now() + deadline;
    while (isRunning() && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return status_;
}

void ChildProcess::kill()
{
    if (!isRunning()) {
        return;
    }
    ::kill(process_, SIGKILL);
    wait(std::chrono::seconds(5));
}

int freeUdpPort()
{
    constexpr int kFirst = 10000;
    constexpr int kCount = 20000;
    static int const offset = static_cast<int>(::getpid()) * 64;
    static int tried = 0;
    while (tried < kCount) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        int const port = kFirst + (offset + tried++) % kCount;
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        int const probe = ::socket(AF_INET, SOCK_DGRAM, 0);
        bool const bound = ::bind(probe, reinterpret_cast<sockaddr const*>(&address), sizeof address) == 0;
        ::close(probe);
        if (bound) {
            return port;
        }
    }
    throw std::runtime_error("no free port");
}

}  // namespace telephone::test
