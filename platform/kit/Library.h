/// @file
/// The service's shared library, loaded.
#pragma once

#include <memory>
#include <string>

#include "platform/framework/Invoker.h"
#include "platform/framework/Proxy.h"
#include "platform/framework/Service.h"

namespace kit {

/// Loads the library and calls its three factories. What they make must be destroyed before this object. Thread: any.
class Library
{
public:
    /// Loads a library.
    /// @param path its file; a name without a slash is looked for where the loader looks
    /// Throws std::runtime_error with the loader's reason, or the name of the missing factory.
    explicit Library(std::string const& path);

    /// Makes a service.
    /// @return Never null.
    std::unique_ptr<Service> createService() const { return std::unique_ptr<Service>(service_()); }
    /// Makes an invoker.
    /// @return Never null.
    std::unique_ptr<Invoker> createInvoker() const { return std::unique_ptr<Invoker>(invoker_()); }
    /// Makes an event proxy.
    /// @return Never null.
    std::unique_ptr<Proxy> createEventProxy() const { return std::unique_ptr<Proxy>(eventProxy_()); }

private:
    void* factory(char const* name) const;

    std::unique_ptr<void, int (*)(void*)> handle_;
    // Each object begins with its framework class, so these types fit the factories.
    Service* (*service_)();
    Invoker* (*invoker_)();
    Proxy* (*eventProxy_)();
};

}  // namespace kit
