#include "telephone/framework/StopSignal.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>

#include <pthread.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include "telephone/time/Waiting.h"

namespace telephone {

StopSignal::StopSignal()
{
    // A write to a closed connection shall fail instead of ending the program.
    std::signal(SIGPIPE, SIG_IGN);
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    sigaddset(&set, SIGHUP);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    signals_ = FileDescriptor(signalfd(-1, &set, SFD_NONBLOCK | SFD_CLOEXEC));
    if (!signals_) {
        throw std::system_error(errno, std::generic_category(), "signalfd");
    }
}

void StopSignal::wait() const
{
    std::array<pollfd, 1> waited{{{signals_.get(), POLLIN, 0}}};
    while (pollUntil(waited, kNoDeadline, "a signal") <= 0) {
    }
}

void StopSignal::raise() const
{
    kill(getpid(), SIGTERM);
}

bool StopSignal::isRaised() const
{
    // The signal is not consumed: all callers see it.
    return isReadable(signals_.get());
}

}  // namespace telephone
