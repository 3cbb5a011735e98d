// Takes the answer of one request back to the application that sent it. The framework implements and owns it.
#pragma once

#include <string>

class InvokerResponse
{
public:
    virtual ~InvokerResponse() = default;

    // The request is done; called exactly once for every request, after the answer where there is one.
    virtual void finish() = 0;
    // Delivers the answer: `length` bytes at `answer`, valid during the call only.
    virtual void sendResponse(char const* answer, int length) = 0;
    // The name of the channel of the application that sent the request.
    virtual std::string const& channelName() = 0;
};
