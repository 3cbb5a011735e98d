#include "telephone/framework/ServiceLibrary.h"

#include <array>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string_view>

#include <dlfcn.h>

#include "telephone/framework/InstalledPlaces.h"

namespace telephone {

namespace {

// Relative to the program's folder: the same folder, the build's and an installation's.
constexpr std::array<std::string_view, 3> kFolders{".", "../src", kInstalledLibraryFolder};

std::filesystem::path programFolder()
{
    return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

std::string loaderReason()
{
    char const* const reason = dlerror();
    return reason == nullptr ? "unknown reason" : reason;
}

}  // namespace

Outcome<std::string> ServiceLibrary::find(std::string const& wish)
{
    if (!wish.empty()) {
        return wish;
    }
    if (char const* const named = std::getenv(kEnvironment); named != nullptr && *named != '\0') {
        return std::string(named);
    }
    std::string looked;
    std::error_code ignored;
    for (std::string_view const folder : kFolders) {
        auto const candidate = (programFolder() / folder / kLibraryFileName).lexically_normal();
        if (std::filesystem::exists(candidate, ignored)) {
            return candidate.string();
        }
        looked += "\n  " + candidate.string();
    }
    // In a folder that the loader searches, for example /usr/lib/<triplet>.
    if (void* const handle = dlopen(kLibraryFileName, RTLD_NOW | RTLD_LOCAL); handle != nullptr) {
        dlclose(handle);
        return std::string(kLibraryFileName);
    }
    return refuse(RefusalKind::kNotFound, std::string(kLibraryFileName) + " not found: name it with --library or " +
                                              kEnvironment + ". Looked for it at:" + looked);
}

ServiceLibrary::ServiceLibrary(std::string const& path)
    : handle_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL), dlclose)
{
    if (!handle_) {
        throw std::runtime_error("cannot load the service library: " + loaderReason());
    }
    service_ = reinterpret_cast<Service* (*)()>(symbol("createCommunicationsService"));
    invoker_ = reinterpret_cast<Invoker* (*)()>(symbol("createCommunicationsServiceInvoker"));
    eventProxy_ = reinterpret_cast<Proxy* (*)()>(symbol("createCommunicationsServiceEventProxy"));
}

void* ServiceLibrary::symbol(char const* name) const
{
    void* const found = dlsym(handle_.get(), name);
    if (found == nullptr) {
        throw std::runtime_error(std::string("not a communications service library, it has no ") + name + ": " +
                                 loaderReason());
    }
    return found;
}

}  // namespace telephone
