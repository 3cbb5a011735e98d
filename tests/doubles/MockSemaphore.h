// Is told what happens to semaphores. The semaphore double itself works, with or without a listener, and reports a
// failure when a unit is given back that nobody took, when a thread takes a lock that it holds, and when a taken
// semaphore is destroyed. The two locks of the service differ in `inheritPriority`.
#pragma once

#include <gmock/gmock.h>

#include "platform/framework/Semaphore.h"

class MockSemaphore
{
public:
    virtual ~MockSemaphore() = default;

    MOCK_METHOD(void, created, (int initial, int maximum, bool inheritPriority));
    MOCK_METHOD(void, taken, (bool inheritPriority, int timeoutMilliseconds));
    MOCK_METHOD(void, given, (bool inheritPriority));
    MOCK_METHOD(void, destroyed, (bool inheritPriority));
};
