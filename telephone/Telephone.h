// The whole telephone: every part made, wired and ended in its order, the service library loaded and its service driven
// through its life. main makes one; there can be only one in a process.
//
//     Telephone telephone(configuration, ServiceLibrary::find(""));
//     ... open channels, which then miss no event ...
//     telephone.activate();          // lines register; requests can be made
//     ... telephone.requests().run(channel, text) ...
//     telephone.stop();
#pragma once

#include <memory>
#include <string>

namespace telephone {

class RequestRunner;
class TelephoneContext;
class TelephoneControls;
struct Configuration;

class Telephone
{
public:
    // Loads the library and initialises its service. Throws std::runtime_error with what a person can do about it: a
    // port that is taken, a store that is damaged, a library that cannot be loaded.
    Telephone(Configuration configuration, std::string const& library);
    // As stop.
    ~Telephone();
    Telephone(Telephone const&) = delete;
    Telephone& operator=(Telephone const&) = delete;

    // Activates the service and waits until every line is registered, or refused. A registrar that does not answer
    // within a few seconds is not waited for longer: the lines go on trying. Throws std::runtime_error where the
    // service refuses.
    void activate();
    // Ends calls and registrations, then the service and the library. Channels are closed before.
    void stop();

    TelephoneContext& context();
    RequestRunner& requests();
    TelephoneControls& controls();

private:
    struct Parts;

    std::unique_ptr<Parts> parts_;
};

}  // namespace telephone
