#include "Process.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <stdexcept>
#include <thread>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

void runInChild(std::vector<std::string> const& command, std::vector<std::string> const& environment, int input,
                int output)
{
    dup2(input, STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
    setenv("TELEPHONE_CHECK", "all", 0);
    setenv("TELEPHONE_TIME", "virtual", 0);
    for (std::string const& each : environment) {
        putenv(const_cast<char*>(each.c_str()));
    }
    std::vector<char*> arguments;
    for (std::string const& each : command) {
        arguments.push_back(const_cast<char*>(each.c_str()));
    }
    arguments.push_back(nullptr);
    execvp(arguments[0], arguments.data());
    _exit(127);
}

}  // namespace

Process::Process(std::vector<std::string> const& command, std::vector<std::string> const& environment)
{
    std::signal(SIGPIPE, SIG_IGN);
    std::array<int, 2> in{};
    std::array<int, 2> out{};
    if (pipe2(in.data(), O_CLOEXEC) != 0 || pipe2(out.data(), O_CLOEXEC) != 0) {
        throw std::runtime_error("no pipe");
    }
    id_ = fork();
    if (id_ < 0) {
        throw std::runtime_error("no process");
    }
    if (id_ == 0) {
        runInChild(command, environment, in[0], out[1]);
    }
    close(in[0]);
    close(out[1]);
    input_ = in[1];
    outputEnd_ = out[0];
}

Process::~Process()
{
    endInput();
    if (!ended_) {
        kill(id_, SIGKILL);
        waitpid(id_, &status_, 0);
        status_ = WIFEXITED(status_) ? WEXITSTATUS(status_) : 0;
    }
    if (status_ == kContradiction && !isExpected_) {
        ADD_FAILURE() << "a message contradicts the description of the protocol:\n" << readAll();
    }
    close(outputEnd_);
}

void Process::write(std::string const& text)
{
    std::size_t written = 0;
    while (written < text.size()) {
        ssize_t const count = ::write(input_, text.data() + written, text.size() - written);
        if (count < 0 && errno != EINTR) {
            return;
        }
        written += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
}

void Process::endInput()
{
    if (input_ >= 0) {
        close(input_);
    }
    input_ = -1;
}

bool Process::read(std::chrono::steady_clock::time_point deadline)
{
    auto const left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    pollfd waited{outputEnd_, POLLIN, 0};
    if (left.count() <= 0 || poll(&waited, 1, static_cast<int>(left.count())) <= 0) {
        return false;
    }
    std::array<char, 65536> buffer;
    ssize_t const count = ::read(outputEnd_, buffer.data(), buffer.size());
    if (count <= 0) {
        return false;
    }
    output_.append(buffer.data(), static_cast<std::size_t>(count));
    return true;
}

std::string Process::readUntil(std::string const& text)
{
    auto const deadline = std::chrono::steady_clock::now() + kDeadline;
    std::size_t at = 0;
    while ((at = output_.find(text, found_)) == std::string::npos) {
        if (!read(deadline)) {
            ADD_FAILURE() << "\"" << text << "\" did not come; instead:\n" << output_.substr(found_);
            return {};
        }
    }
    found_ = at + text.size();
    return output_;
}

std::string Process::readAll()
{
    auto const deadline = std::chrono::steady_clock::now() + kDeadline;
    while (read(deadline)) {
    }
    return output_;
}

void Process::signal(int number)
{
    kill(id_, number);
}

int Process::wait()
{
    isExpected_ = true;
    using namespace std::chrono_literals;
    auto const deadline = std::chrono::steady_clock::now() + kDeadline;
    while (!ended_ && std::chrono::steady_clock::now() < deadline) {
        // Unread output would keep the program from ending.
        if (!read(std::chrono::steady_clock::now() + 20ms)) {
            std::this_thread::yield();
        }
        int status = 0;
        if (waitpid(id_, &status, WNOHANG) != id_) {
            continue;
        }
        ended_ = true;
        status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        // Read its last output; its own children may keep the pipe open.
        while (read(std::chrono::steady_clock::now() + 100ms)) {
        }
    }
    return status_;
}

Ended run(std::vector<std::string> const& command, std::string const& input)
{
    Process process(command);
    process.write(input);
    process.endInput();
    int const status = process.wait();
    return {status, process.readAll()};
}

std::string lastLine(std::string const& output)
{
    auto const end = output.find_last_not_of('\n');
    return output.substr(output.rfind('\n', end) + 1, end - output.rfind('\n', end));
}
