#include "telephone/testing/ScriptProcess.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <utility>

#include <fcntl.h>
#include <spawn.h>
#include <spdlog/fmt/fmt.h>
#include <sys/syscall.h>
#include <sys/wait.h>

namespace telephone {

namespace {

// What differs in the new process.
class Setting
{
public:
    explicit Setting(std::string const& folder)
    {
        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_addchdir_np(&actions_, folder.c_str());
        posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        open(STDOUT_FILENO, ScriptProcess::kTranscript);
        open(STDERR_FILENO, ScriptProcess::kErrors);
        // The signals that the test runner blocks end the telephone.
        sigset_t none;
        sigemptyset(&none);
        posix_spawnattr_init(&attributes_);
        posix_spawnattr_setsigmask(&attributes_, &none);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK);
    }
    ~Setting()
    {
        posix_spawnattr_destroy(&attributes_);
        posix_spawn_file_actions_destroy(&actions_);
    }
    Setting(Setting const&) = delete;
    Setting& operator=(Setting const&) = delete;

    // 0, or the number of the error.
    int spawn(pid_t& id, std::vector<char*> const& words) const
    {
        return posix_spawn(&id, words.front(), &actions_, &attributes_, words.data(), environ);
    }

private:
    void open(int descriptor, char const* file)
    {
        constexpr mode_t kOwnerWrites = 0644;
        posix_spawn_file_actions_addopen(&actions_, descriptor, file, O_WRONLY | O_CREAT | O_APPEND, kOwnerWrites);
    }

    posix_spawn_file_actions_t actions_;
    posix_spawnattr_t attributes_;
};

}  // namespace

Outcome<ScriptProcess> ScriptProcess::start(std::vector<std::string> words, std::string const& folder)
{
    std::vector<char*> pointers;
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    pid_t id = 0;
    if (int const error = Setting(folder).spawn(id, pointers); error != 0) {
        return refuse(RefusalKind::kUnavailable, fmt::format("{}: {}", words.front(), std::strerror(error)));
    }
    // The C library's declaration of pidfd_open is not for C++.
    ScriptProcess process(id, FileDescriptor(static_cast<int>(syscall(SYS_pidfd_open, id, 0))));
    if (!process.ended_) {
        return refuse(RefusalKind::kUnavailable, fmt::format("process {}: {}", id, std::strerror(errno)));
    }
    return process;
}

ScriptProcess::ScriptProcess(pid_t id, FileDescriptor ended)
    : id_(id)
    , ended_(std::move(ended))
{}

ScriptProcess::~ScriptProcess()
{
    kill();
    wait();
}

ScriptProcess::ScriptProcess(ScriptProcess&& other) noexcept
    : id_(std::exchange(other.id_, 0))
    , ended_(std::move(other.ended_))
{}

ScriptProcess& ScriptProcess::operator=(ScriptProcess&& other) noexcept
{
    std::swap(id_, other.id_);
    std::swap(ended_, other.ended_);
    return *this;
}

void ScriptProcess::terminate() const
{
    send(SIGTERM);
}

void ScriptProcess::kill() const
{
    send(SIGKILL);
}

// Until it is waited for, no other process has its id.
void ScriptProcess::send(int signal) const
{
    if (id_ != 0) {
        ::kill(id_, signal);
    }
}

int ScriptProcess::wait()
{
    int status = 0;
    pid_t const id = std::exchange(id_, 0);
    while (id != 0 && waitpid(id, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

}  // namespace telephone
