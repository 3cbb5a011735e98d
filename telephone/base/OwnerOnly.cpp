#include "telephone/base/OwnerOnly.h"

#include <cerrno>
#include <cstring>

#include <sys/stat.h>

namespace telephone {

Outcome<> makeOwnerOnly(std::string const& file)
{
    constexpr mode_t kOthers = S_IRWXG | S_IRWXO;
    struct stat status = {};
    bool const isFile = ::stat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode);
    if (!isFile || (status.st_mode & kOthers) == 0 || ::chmod(file.c_str(), status.st_mode & ~kOthers & 07777) == 0) {
        return {};
    }
    return refuse(RefusalKind::kNotPermitted, "\"" + file + "\" can be read by others, which cannot be changed: " +
                                                  std::strerror(errno) + "; remove it, or name another file");
}

}  // namespace telephone
