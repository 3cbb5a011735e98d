// Guards of one operation: each takes a lock or sets a flag, and gives it back on every path out.
#pragma once

#include <atomic>

#include "platform/framework/Semaphore.h"
#include "platform/sfi/CSfi.h"

// Holds one of the service's own locks, waiting for it without limit.
class SemaphoreGuard
{
public:
    explicit SemaphoreGuard(Semaphore& semaphore)
        : semaphore_(semaphore)
    {
        semaphore_.take(Semaphore::kNoTimeLimit);
    }
    ~SemaphoreGuard() { semaphore_.give(); }
    SemaphoreGuard(SemaphoreGuard const&) = delete;
    SemaphoreGuard& operator=(SemaphoreGuard const&) = delete;

private:
    Semaphore& semaphore_;
};

// Holds the lock of the call control.
class SfiGuard
{
public:
    SfiGuard() { CSfi::GetInstance()->Lock(); }
    ~SfiGuard() { CSfi::GetInstance()->Unlock(); }
    SfiGuard(SfiGuard const&) = delete;
    SfiGuard& operator=(SfiGuard const&) = delete;
};

// Sets a flag that other threads read, and clears it.
class FlagGuard
{
public:
    explicit FlagGuard(std::atomic<bool>& flag)
        : flag_(flag)
    {
        flag_ = true;
    }
    ~FlagGuard() { flag_ = false; }
    FlagGuard(FlagGuard const&) = delete;
    FlagGuard& operator=(FlagGuard const&) = delete;

private:
    std::atomic<bool>& flag_;
};
