// Uses the installed headers, by both of their include paths, and loads the installed library, which its argument
// names, with the porting kit as its platform.
#include <cstdio>
#include <exception>

#include "CommunicationsServiceRequests.h"
#include "CommunicationsServiceVersion.h"
#include "lines/LineManager.h"
#include "platform/kit/Library.h"
#include "platform/lines/Line.h"

int main(int count, char** arguments)
{
    if (count != 2) {
        return 2;
    }
    try {
        kit::Library const library(arguments[1]);
        auto const service = library.createService();
        std::printf("version %s, %zu requests\n", COMMUNICATIONS_SERVICE_VERSION, kRequestCount);
        return 0;
    } catch (std::exception const& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
