// The loaded shared library of the service and its three factories. Objects that it made must be destroyed before it.
#pragma once

#include <memory>
#include <string>

#include "platform/framework/Invoker.h"
#include "platform/framework/Proxy.h"
#include "platform/framework/Service.h"
#include "telephone/base/Refusal.h"

namespace telephone {

class ServiceLibrary
{
public:
    static constexpr char const* kEnvironment = "COMMUNICATIONS_SERVICE_LIBRARY";

    // The library's file: `wish` unless empty, else the file that the environment names, else the file beside the
    // program or in the folders of a build and an installation. A refusal names every place searched.
    [[nodiscard]] static Outcome<std::string> find(std::string const& wish);

    // Loads a library. Throws std::runtime_error with the loader's reason, or the missing factory.
    explicit ServiceLibrary(std::string const& path);

    [[nodiscard]] std::unique_ptr<Service> createService() const { return std::unique_ptr<Service>(service_()); }
    [[nodiscard]] std::unique_ptr<Invoker> createInvoker() const { return std::unique_ptr<Invoker>(invoker_()); }
    [[nodiscard]] std::unique_ptr<Proxy> createEventProxy() const { return std::unique_ptr<Proxy>(eventProxy_()); }

private:
    void* symbol(char const* name) const;

    std::unique_ptr<void, int (*)(void*)> handle_;
    // Each object begins with its framework class, so these types fit the factories.
    Service* (*service_)();
    Invoker* (*invoker_)();
    Proxy* (*eventProxy_)();
};

}  // namespace telephone
