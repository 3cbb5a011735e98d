#include "platform/kit/Library.h"

#include <stdexcept>

#include <dlfcn.h>

#include "platform/kit/Platform.h"

namespace {

void* load(std::string const& path)
{
    void* const handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        std::string reason = dlerror();
        if (reason.find("undefined symbol") != std::string::npos) {
            reason +=
                "; is the program linked with -rdynamic? telephone-check " + path + " PROGRAM names what is missing";
        }
        throw std::runtime_error(reason);
    }
    return handle;
}

}  // namespace

kit::Library::Library(std::string const& path)
    : handle_(load(path), dlclose)
    , service_(reinterpret_cast<Service* (*)()>(factory("createCommunicationsService")))
    , invoker_(reinterpret_cast<Invoker* (*)()>(factory("createCommunicationsServiceInvoker")))
    , eventProxy_(reinterpret_cast<Proxy* (*)()>(factory("createCommunicationsServiceEventProxy")))
{
    completePlatform();
}

void* kit::Library::factory(char const* name) const
{
    void* const found = dlsym(handle_.get(), name);
    if (found == nullptr) {
        throw std::runtime_error(std::string("the library has no factory ") + name);
    }
    return found;
}
