#include "telephone/framework/TelephoneProcess.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <utility>

#include <fcntl.h>
#include <spawn.h>
#include <spdlog/fmt/fmt.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>

namespace telephone {

namespace {

// Of the environment: the process that has started this one, and that it must not outlive.
constexpr char const* kStarter = "TELEPHONE_STARTER";

// What differs in the new process.
class Setting
{
public:
    Setting(std::string const& folder, int output)
    {
        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_addchdir_np(&actions_, folder.c_str());
        posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        if (output < 0) {
            open(STDOUT_FILENO, TelephoneProcess::kTranscript);
        } else {
            posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
        }
        open(STDERR_FILENO, TelephoneProcess::kErrors);
        // The signals that the starter blocks end the telephone. Those of the terminal's keys reach the starter alone,
        // which ends its telephones in order.
        sigset_t none;
        sigemptyset(&none);
        posix_spawnattr_init(&attributes_);
        posix_spawnattr_setsigmask(&attributes_, &none);
        posix_spawnattr_setpgroup(&attributes_, 0);
        posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETPGROUP);
        setEnvironment();
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
        std::vector<char*> variables;
        std::ranges::transform(environment_, std::back_inserter(variables),
                               [](std::string const& each) { return const_cast<char*>(each.c_str()); });
        variables.push_back(nullptr);
        return posix_spawn(&id, words.front(), &actions_, &attributes_, words.data(), variables.data());
    }

private:
    void setEnvironment()
    {
        std::string const own = std::string(kStarter) + "=";
        for (char** each = environ; *each != nullptr; ++each) {
            if (!std::string_view(*each).starts_with(own)) {
                environment_.emplace_back(*each);
            }
        }
        environment_.push_back(own + std::to_string(getpid()));
    }

    void open(int descriptor, char const* file)
    {
        constexpr mode_t kOwnerWrites = 0644;
        posix_spawn_file_actions_addopen(&actions_, descriptor, file, O_WRONLY | O_CREAT | O_APPEND, kOwnerWrites);
    }

    posix_spawn_file_actions_t actions_;
    posix_spawnattr_t attributes_;
    std::vector<std::string> environment_;
};

}  // namespace

Outcome<TelephoneProcess> TelephoneProcess::start(std::vector<std::string> words, std::string const& folder, int output)
{
    std::vector<char*> pointers;
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    pid_t id = 0;
    if (int const error = Setting(folder, output).spawn(id, pointers); error != 0) {
        return refuse(RefusalKind::kUnavailable, fmt::format("{}: {}", words.front(), std::strerror(error)));
    }
    // The C library's declaration of pidfd_open is not for C++.
    TelephoneProcess process(id, FileDescriptor(static_cast<int>(syscall(SYS_pidfd_open, id, 0))));
    if (!process.ended_) {
        return refuse(RefusalKind::kUnavailable, fmt::format("process {}: {}", id, std::strerror(errno)));
    }
    return process;
}

void TelephoneProcess::endWithStarter()
{
    char const* const starter = std::getenv(kStarter);
    pid_t const id = starter == nullptr ? 0 : std::atoi(starter);
    if (id == getppid()) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
    }
    // It may have ended before.
    if (id > 0 && ::kill(id, 0) != 0 && errno == ESRCH) {
        raise(SIGKILL);
    }
}

TelephoneProcess::TelephoneProcess(pid_t id, FileDescriptor ended)
    : id_(id)
    , ended_(std::move(ended))
{}

TelephoneProcess::~TelephoneProcess()
{
    kill();
    wait();
}

TelephoneProcess::TelephoneProcess(TelephoneProcess&& other) noexcept
    : id_(std::exchange(other.id_, 0))
    , ended_(std::move(other.ended_))
{}

TelephoneProcess& TelephoneProcess::operator=(TelephoneProcess&& other) noexcept
{
    std::swap(id_, other.id_);
    std::swap(ended_, other.ended_);
    return *this;
}

void TelephoneProcess::terminate() const
{
    send(SIGTERM);
}

void TelephoneProcess::kill() const
{
    send(SIGKILL);
}

// Until it is waited for, no other process has its id.
void TelephoneProcess::send(int signal) const
{
    if (id_ != 0) {
        ::kill(id_, signal);
    }
}

int TelephoneProcess::wait()
{
    int status = 0;
    pid_t const id = std::exchange(id_, 0);
    while (id != 0 && waitpid(id, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

std::string TelephoneProcess::endWords(int status)
{
    return WIFSIGNALED(status) ? fmt::format("ended by signal {} ({})", WTERMSIG(status), strsignal(WTERMSIG(status)))
                               : fmt::format("ended with status {}", WEXITSTATUS(status));
}

std::vector<std::string> TelephoneProcess::lastErrors(std::string const& folder, std::size_t most)
{
    std::ifstream stream(folder + "/" + kErrors);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(std::min(lines.size(), most)));
    return lines;
}

std::string TelephoneProcess::ownProgram()
{
    return std::filesystem::read_symlink("/proc/self/exe").string();
}

}  // namespace telephone
