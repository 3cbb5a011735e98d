// Uses the installed headers, by both of their include paths, and loads the installed library, which its argument names.
#include <cstdio>
#include <cstring>

#include <dlfcn.h>

#include "CommunicationsServiceIfc.h"
#include "CommunicationsServiceRequests.h"
#include "lines/LineManager.h"
#include "platform/framework/Service.h"
#include "platform/lines/Line.h"

int main(int count, char** arguments)
{
    if (count != 2) {
        return 2;
    }
    // A telephone would say RTLD_NOW: this program has none of the platform's functions.
    void* const library = dlopen(arguments[1], RTLD_LAZY | RTLD_LOCAL);
    if (library == nullptr) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    for (char const* const factory : {"createCommunicationsService", "createCommunicationsServiceInvoker",
                                      "createCommunicationsServiceEventProxy"}) {
        if (dlsym(library, factory) == nullptr) {
            std::fprintf(stderr, "%s\n", dlerror());
            return 1;
        }
    }
    std::printf("%zu requests\n", kRequestCount);
    return 0;
}
