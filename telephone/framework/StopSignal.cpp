#include "telephone/framework/StopSignal.h"

#include <cerrno>
#include <csignal>
#include <system_error>

#include <poll.h>
#include <pthread.h>
#include <sys/signalfd.h>
#include <unistd.h>

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
    constexpr int kForever = -1;
    pollfd waited{signals_.get(), POLLIN, 0};
    while (poll(&waited, 1, kForever) < 0) {
    }
}

void StopSignal::raise() const
{
    kill(getpid(), SIGTERM);
}

bool StopSignal::isRaised() const
{
    // The signal is not consumed: all callers see it.
    pollfd query{signals_.get(), POLLIN, 0};
    return poll(&query, 1, 0) > 0;
}

}  // namespace telephone
