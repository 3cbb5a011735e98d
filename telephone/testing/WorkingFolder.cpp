#include "telephone/testing/WorkingFolder.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include <sys/sysinfo.h>

namespace telephone {

namespace fs = std::filesystem;

Outcome<std::string> workingFolder(std::string const& wanted, std::string const& purpose)
{
    std::error_code error;
    if (!wanted.empty()) {
        fs::create_directories(wanted, error);
        return error ? refuse(RefusalKind::kUnavailable, wanted + ": " + error.message())
                     : Outcome<std::string>(fs::absolute(wanted).string());
    }
    std::string folder = (fs::temp_directory_path() / ("telephone-" + purpose + "-XXXXXX")).string();
    return mkdtemp(folder.data()) == nullptr ? refuse(RefusalKind::kUnavailable, folder + ": the folder cannot be made")
                                             : Outcome<std::string>(folder);
}

std::size_t jobsOf(std::optional<int> wanted)
{
    return static_cast<std::size_t>(wanted.value_or(std::max(1, get_nprocs())));
}

}  // namespace telephone
