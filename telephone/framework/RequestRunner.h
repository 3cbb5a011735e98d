// Hands a request to the loaded library's invoker and brings its answer back. Telephone owns the one runner; requests
// may run on several threads at once.
#pragma once

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
        std::optional<std::string> answer;  // none: a request that is never answered
        bool finished = false;              // the invoker has said that the request is done
        std::vector<Refusal> refusals;      // what the telephone refused while the request ran
    };

    RequestRunner(Executable& service, Invoker& invoker);

    // Runs a request, behind whose text a NUL must stand, on behalf of a channel. Returns when it is done. Never
    // throws: a request that the service cannot take is answered "sfiFailure", and the log says why.
    Reply run(Channel const& channel, std::string_view request);

private:
    Executable& service_;
    Invoker& invoker_;
};

}  // namespace telephone
