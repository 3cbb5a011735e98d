/// @file
/// The base of a request invoker.
#pragma once

class Executable;
class FrameworkContext;
class InvokerResponse;

/// Takes the text requests of other applications to one service. The framework creates it with the library's factory
/// and owns it.
class Invoker
{
public:
    /// Destroyed by the framework, when no request is being handled.
    virtual ~Invoker() = default;

    /// Handles one request to its end: the answer, if there is one, and then InvokerResponse::finish. Thread: any,
    /// several requests at once, with no lock held.
    /// @param service the object that the request is for; null: every request fails
    /// @param message the text, NUL-terminated; it need not outlive the call
    /// @param length its bytes, without the NUL
    /// @param response receives the answer; the framework owns it; null: the request is carried out and nothing is
    ///     answered
    virtual void handleMessage(Executable* service, char const* message, int length, InvokerResponse* response) = 0;
    /// Binds the invoker to the framework. Called once, before the first request; `context` outlives the invoker.
    virtual void initInvoker(FrameworkContext* context) = 0;
};
