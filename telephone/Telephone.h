// The whole telephone: makes, connects and ends its parts, loads the service library and runs its service. A process
// can have one.
//
//     Telephone telephone(configuration, library);
//     Session session("console", telephone.sessions(end), 1000, wake);   // misses no event
//     telephone.activate();          // lines register; requests can be made
//     session.handle(text, sink);
//     telephone.stop();
#pragma once

#include <memory>
#include <string>

#include "telephone/access/Session.h"
#include "telephone/base/Refusal.h"

namespace telephone {

struct Configuration;

class Telephone
{
public:
    // Loads the library and initialises its service. Throws std::runtime_error with a reason to act on: a port in use,
    // a damaged store, a library that cannot be loaded.
    Telephone(Configuration configuration, std::string const& library);
    // As stop.
    ~Telephone();
    Telephone(Telephone const&) = delete;
    Telephone& operator=(Telephone const&) = delete;

    // Activates the service and waits until each line is registered, or its registration was refused. Waits at most a
    // few seconds for a registrar that does not answer; the lines keep trying. Refused if the service refuses.
    [[nodiscard]] Outcome<> activate();
    // Ends calls and registrations, then the service. End sessions before.
    void stop();

    // What sessions need; `end` is what the command quit does.
    SessionServices sessions(std::function<void()> end);

private:
    struct Parts;

    std::unique_ptr<Parts> parts_;
};

}  // namespace telephone
