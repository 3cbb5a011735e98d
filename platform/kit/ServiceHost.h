/// @file
/// The smallest framework around the service.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "platform/framework/SvcRTEContext.h"
#include "platform/kit/EventChannel.h"
#include "platform/kit/Library.h"

namespace kit {

/// Loads the library, starts its service in a context of its own, carries requests to it and events from it, and ends
/// it. The program owns one.
///
/// Normal flow: construct, `provide` and `receive` as often as needed, `start`, `request`; the destructor ends all. The
/// call control must send no event to a subscriber after CSfi::Deactivate with `final` set.
///
/// Thread: `request` and the look-ups on any; the rest on the thread that made the host, before the first request.
class ServiceHost final : public SvcRTEContext
{
public:
    /// Loads a library. Throws std::runtime_error with the reason if it cannot be loaded.
    explicit ServiceHost(std::string const& library);
    /// Shuts the service down, if it was started and there is call control, and unloads the library.
    ~ServiceHost() override;
    /// Not copied: the service knows one context.
    ServiceHost(ServiceHost const&) = delete;
    /// Not copied.
    ServiceHost& operator=(ServiceHost const&) = delete;

    /// Registers what the service looks up by name, for example "LocalMgmtIfc". The executable outlives the host.
    void provide(std::string const& name, Executable& executable);
    /// Opens the channel of an application: once it has sent a request Subscribe, `receiver` takes its events.
    void receive(std::string const& channel, EventChannel::Receiver receiver);
    /// Checks the collaborators (Check.h), and initialises service and invoker. A missing feature is logged. Throws
    /// std::runtime_error, before init, if a collaborator is null without which init would crash.
    void start();
    /// Sends a request, and waits until it has been carried out.
    /// @param channel the application that sends it; any text for one that receives no events
    /// @param text the request, for example "<Method>Activate</Method>"
    /// @return The answer; empty for a request that has none.
    std::string request(std::string const& channel, std::string const& text);

    /// The service.
    /// @return The one of this host; a cast leads to its other interfaces (CommunicationsServiceIfc).
    Service& service() { return *service_; }

    Proxy* findProxy(std::string const& interfaceName, std::string const& channelName) override;
    Executable* findExecutable(std::string const& name) override;

private:
    Library library_;
    std::unique_ptr<Service> service_;
    std::unique_ptr<Invoker> invoker_;
    bool started_ = false;
    std::mutex mutex_;
    std::map<std::string, Executable*> executables_;
    std::map<std::string, EventChannel::Receiver> receivers_;
    std::map<std::string, std::unique_ptr<EventChannel>> channels_;
};

}  // namespace kit
