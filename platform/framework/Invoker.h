// The base of a request invoker: it takes the text requests of other applications to one service.
#pragma once

class Executable;
class FrameworkContext;
class InvokerResponse;

class Invoker
{
public:
    virtual ~Invoker() = default;

    // Handles one request. `message` is NUL-terminated and `length` bytes long; `service` is the object that the
    // request is for; the answer goes to `response`, which the framework owns. May run on several threads at once.
    virtual void handleMessage(Executable* service, char const* message, int length, InvokerResponse* response) = 0;
    // Binds the invoker to the framework. Called once, before the first request; the context outlives the invoker.
    virtual void initInvoker(FrameworkContext* context) = 0;
};
