/// @file
/// The way back for the answer of one request.
#pragma once

#include <string>

/// Takes the answer of one request to the application that sent it. The framework implements and owns it; it must live
/// until `finish` returns.
///
/// Thread: that of Invoker::handleMessage.
class InvokerResponse
{
public:
    /// Destroyed by the framework.
    virtual ~InvokerResponse() = default;

    /// The request is done. Called exactly once for every request, after the answer.
    virtual void finish() = 0;
    /// Delivers the answer. Called at most once; not at all for a request that has no answer.
    /// @param answer the text, valid during the call only
    /// @param length its bytes
    virtual void sendResponse(char const* answer, int length) = 0;
    /// The channel of the application that sent the request.
    /// @return Its name, valid as long as the response.
    virtual std::string const& channelName() = 0;
};
