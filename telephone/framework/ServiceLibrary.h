// The loaded shared library of the service and its three factories. Whoever holds an object that it made destroys the
// object before the library: its code goes with the library.
#pragma once

#include <memory>
#include <string>

class Invoker;
class Proxy;
class Service;

namespace telephone {

class ServiceLibrary
{
public:
    static constexpr char const* kFileName = "libcommunications_service.so";
    static constexpr char const* kEnvironment = "COMMUNICATIONS_SERVICE_LIBRARY";

    // The library's file: the wish where there is one, else what the environment names, else the file beside the
    // program or in the folders that a build and an installation put it in. Throws std::runtime_error naming every
    // place that was looked at.
    static std::string find(std::string const& wish);

    // Loads a library. Throws std::runtime_error with the loader's reason, or the factory that is missing.
    explicit ServiceLibrary(std::string const& path);
    ~ServiceLibrary();
    ServiceLibrary(ServiceLibrary const&) = delete;
    ServiceLibrary& operator=(ServiceLibrary const&) = delete;

    [[nodiscard]] std::unique_ptr<Service> createService() const;
    [[nodiscard]] std::unique_ptr<Invoker> createInvoker() const;
    [[nodiscard]] std::unique_ptr<Proxy> createEventProxy() const;

private:
    void* symbol(char const* name) const;

    struct Closer
    {
        void operator()(void* handle) const;
    };

    std::unique_ptr<void, Closer> handle_;
    // Each object begins with its framework class, so the factories are called as making that.
    Service* (*service_)();
    Invoker* (*invoker_)();
    Proxy* (*eventProxy_)();
};

}  // namespace telephone
