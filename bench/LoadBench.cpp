// Measures the memory that the library adds to a process which loads it and initialises its service:
//   bench_load LIBRARY
// Prints one JSON object in kilobytes: resident memory before, and the increase.
#include <cstdio>
#include <stdexcept>

#include <dlfcn.h>
#include <malloc.h>

#include "bench/ResidentMemory.h"
#include "platform/framework/FrameworkContext.h"
#include "src/CommunicationsService.h"

namespace {

using CreateService = CommunicationsService* (*)();

CreateService load(char const* library)
{
    auto* const handle = dlopen(library, RTLD_NOW | RTLD_LOCAL);
    auto* const create = handle == nullptr ? nullptr : dlsym(handle, "createCommunicationsService");
    if (create == nullptr) {
        throw std::runtime_error(dlerror());
    }
    return reinterpret_cast<CreateService>(create);
}

}  // namespace

int main(int argc, char** argv)
try {
    if (argc != 2) {
        std::fprintf(stderr, "usage: bench_load LIBRARY\n");
        return 2;
    }
    SvcRTEContext context;
    residentKilobytes();  // allocates what later calls need
    long const before = residentKilobytes();
    Executable* const service = load(argv[1])();
    service->init(context);
    long const after = residentKilobytes();
    std::printf("{\"before_kb\": %ld, \"added_kb\": %ld}\n", before, after - before);
    service->shutdown();
    delete service;
    return 0;
} catch (std::exception const& problem) {
    std::fprintf(stderr, "bench_load: %s\n", problem.what());
    return 1;
}
