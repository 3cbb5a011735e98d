#include "telephone/sip/EventLoop.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <deque>
#include <mutex>
#include <stdexcept>
#include <thread>

#include <pthread.h>

#include "telephone/sip/MemoryNetwork.h"
#include "telephone/sip/Stack.h"
#include "telephone/sip/StackFunctions.h"
#include "telephone/sip/StackTimers.h"
#include "telephone/time/Thread.h"
#include "telephone/time/Waiting.h"
#include "telephone/trace/Trace.h"

extern "C" {
#define DEBUG_MODULE "telephone"
#define DEBUG_LEVEL 0
#include <re_dbg.h>
}

namespace telephone::sip {

namespace {

// Open files of the process while the loop polls. The stack's own default is too low for a hundred calls.
constexpr int kMostFiles = 8192;

constexpr int kWake = 0;
constexpr int kQuit = 1;

std::atomic<bool> loopExists{false};

SteadyClock::time_point timeOfExpiry(std::uint64_t milliseconds)
{
    return milliseconds == kNoTimer ? kNoDeadline : SteadyClock::time_point(std::chrono::milliseconds(milliseconds));
}

// How often this thread holds the lock. There is only one loop.
thread_local int lockDepth = 0;

// Not a member: remains of a closed user agent live for half a minute, possibly longer than the loop they were made
// with, and then lock the loop that runs at that time.
std::atomic<std::thread::id> loopThread{};

// The first expiry at the outermost lock by a thread other than the loop's. Guarded by the lock.
std::uint64_t expiryAtLock = kNoTimer;

}  // namespace

struct EventLoop::Impl
{
    Impl();
    ~Impl();
    void run();
    void runInMemory();
    void wake();
    void runWork();

    pthread_mutex_t mutex{};
    mqueue* queue = nullptr;
    Thread thread;
    std::atomic<bool> wakePending{false};
    bool ends = false;  // in virtual time
    std::mutex workMutex;
    std::deque<Caused<std::function<void()>>> work;
};

EventLoop::Impl::Impl()
{
    checkStackFunctions();
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(&mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);

    auto const received = [](int id, void*, void* object) {
        auto* self = static_cast<Impl*>(object);
        self->wakePending = false;
        if (id == kQuit) {
            re_cancel();
        } else {
            self->runWork();
        }
    };
    if (libre_init() != 0) {
        throw std::runtime_error("the SIP stack does not start");
    }
    dbg_init(DBG_EMERG, DBG_NONE);  // what it writes to standard error is in our log, with its reason
    re_set_mutex(&mutex);
    (void)fd_setsize(kMostFiles);
    if (int const error = mqueue_alloc(&queue, received, this)) {
        throw std::runtime_error("the event loop has no queue: " + errorText(error));
    }
}

EventLoop::Impl::~Impl()
{
    mem_deref(queue);
    re_set_mutex(nullptr);
    fd_setsize(0);
    libre_close();
    pthread_mutex_destroy(&mutex);
}

void EventLoop::Impl::run()
{
    loopThread = std::this_thread::get_id();
    if (isVirtual()) {
        runInMemory();
    } else {
        (void)re_main(nullptr);
    }
    loopThread = std::thread::id();
}

// In virtual time the stack has no descriptors: datagrams come from the network in memory.
void EventLoop::Impl::runInMemory()
{
    MemoryNetwork& network = memoryNetwork();
    re_thread_enter();
    while (!ends) {
        auto const next = std::min(timeOfExpiry(firstExpiry()), network.nextArrival());
        re_thread_leave();
        awaitVirtually(next, "SIP", [&] { return ends || wakePending || network.nextArrival() < next; });
        re_thread_enter();
        wakePending = false;
        network.deliver();
        runWork();
        expireTimers();
    }
    re_thread_leave();
}

void EventLoop::Impl::wake()
{
    if (!wakePending.exchange(true) && !isVirtual()) {
        (void)mqueue_push(queue, kWake, nullptr);
    }
}

void EventLoop::Impl::runWork()
{
    std::deque<Caused<std::function<void()>>> ready;
    {
        std::lock_guard guard(workMutex);
        ready.swap(work);
    }
    for (auto& function : ready) {
        function();
    }
}

EventLoop::EventLoop()
{
    if (loopExists.exchange(true)) {
        throw std::runtime_error("there is an event loop in this process already");
    }
    try {
        impl_ = std::make_unique<Impl>();
    } catch (...) {
        loopExists = false;
        throw;
    }
}

EventLoop::~EventLoop()
{
    stop();
    impl_.reset();
    loopExists = false;
}

void EventLoop::start()
{
    if (impl_->thread.joinable()) {
        return;
    }
    impl_->thread = Thread("SIP", [this] { impl_->run(); });
}

void EventLoop::stop()
{
    if (!impl_->thread.joinable()) {
        return;
    }
    impl_->ends = true;
    while (!isVirtual() && mqueue_push(impl_->queue, kQuit, nullptr) != 0) {
        std::this_thread::yield();
    }
    impl_->thread.join();
}

void EventLoop::lock()
{
    re_thread_enter();
    noteLocked();
}

bool EventLoop::try_lock()
{
    if (pthread_mutex_trylock(&impl_->mutex) != 0) {
        return false;
    }
    noteLocked();
    return true;
}

void EventLoop::noteLocked() const
{
    ++lockDepth;
    if (lockDepth == 1 && !isLoopThread()) {
        expiryAtLock = firstExpiry();
    }
}

void EventLoop::unlock()
{
    --lockDepth;
    bool const outermost = lockDepth == 0 && !isLoopThread();
    // The poll waits for the timer that was the first at its start and would only miss an earlier one. Waking it each
    // time would cost more than most work done under the lock.
    bool const sooner = outermost && firstExpiry() < expiryAtLock;
    re_thread_leave();
    if (sooner) {
        impl_->wake();
    }
}

void EventLoop::post(std::function<void()> work)
{
    {
        std::lock_guard guard(impl_->workMutex);
        impl_->work.emplace_back(std::move(work));
    }
    impl_->wake();
}

bool EventLoop::isLoopThread() const
{
    return loopThread.load() == std::this_thread::get_id();
}

bool EventLoop::isLockedByCaller() const
{
    return lockDepth > 0 || isLoopThread();
}

}  // namespace telephone::sip
