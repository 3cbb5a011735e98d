#include "telephone/fleet/ProcessUse.h"

#include <fstream>
#include <sstream>
#include <string>

#include <unistd.h>

namespace telephone {

namespace {

std::string fileOf(pid_t process, char const* name)
{
    std::ifstream stream("/proc/" + std::to_string(process) + "/" + name);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

// Of statm: size, resident and shared, in pages.
std::uint64_t memoryOf(pid_t process)
{
    std::istringstream fields(fileOf(process, "statm"));
    std::uint64_t size = 0;
    std::uint64_t resident = 0;
    std::uint64_t shared = 0;
    fields >> size >> resident >> shared;
    return (resident - shared) * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

// Of stat: the name is in brackets and may contain anything; utime and stime are the 12th and 13th field behind it, in
// clock ticks.
std::chrono::milliseconds processorOf(pid_t process)
{
    constexpr int kBefore = 11;
    std::string const text = fileOf(process, "stat");
    std::istringstream fields(text.substr(std::min(text.size(), text.rfind(')') + 1)));
    std::string skipped;
    for (int i = 0; i < kBefore; ++i) {
        fields >> skipped;
    }
    std::int64_t user = 0;
    std::int64_t system = 0;
    fields >> user >> system;
    return std::chrono::milliseconds((user + system) * 1000 / sysconf(_SC_CLK_TCK));
}

}  // namespace

ProcessUse useOf(pid_t process)
{
    return {memoryOf(process), processorOf(process)};
}

}  // namespace telephone
