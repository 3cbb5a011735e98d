#include "telephone/framework/WakeUp.h"

#include <cerrno>
#include <system_error>

#include <sys/eventfd.h>

#include "telephone/time/Waiting.h"

namespace telephone {

WakeUp::WakeUp()
    : event_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC))
{
    if (!event_) {
        throw std::system_error(errno, std::generic_category(), "eventfd");
    }
}

void WakeUp::signal()
{
    // Fails only if the counter is full; the thread wakes up anyway.
    [[maybe_unused]] int const result = eventfd_write(event_.get(), 1);
    noteReadyFile();
}

void WakeUp::clear()
{
    eventfd_t ignored = 0;
    [[maybe_unused]] int const result = eventfd_read(event_.get(), &ignored);
}

}  // namespace telephone
