// Passes requests to the loaded library's invoker and returns the answers. Telephone owns the one runner; requests may
// run on several threads at once.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "telephone/base/Refusal.h"

class Executable;
class Invoker;

namespace telephone {

class Channel;

class RequestRunner
{
public:
    struct Reply
    {
        std::optional<std::string> answer;  // nothing: the request has no answer
        bool finished = false;              // the invoker has reported the end of the request
        std::vector<Refusal> refusals;      // reported on this thread while the request ran
    };

    // Called with each request before it runs, on the thread that runs it.
    using Watcher = std::function<void(std::string_view request)>;

    RequestRunner(Executable& service, Invoker& invoker);

    // Sets the watcher, or removes it. While no request runs.
    void watch(Watcher watcher);

    // Called after each request, on the thread that ran it. Set once, before the first request.
    void whenDone(std::function<void()> done);

    // Runs a request on behalf of a channel and returns when it is done. A NUL must follow its text. Never throws: if
    // the request cannot be run, the answer is "sfiFailure" and a refusal says why.
    Reply run(Channel const& channel, std::string_view request);

private:
    Reply invoke(Channel const& channel, std::string_view request);

    Executable& service_;
    Invoker& invoker_;
    Watcher watcher_;
    std::function<void()> done_;
};

}  // namespace telephone
