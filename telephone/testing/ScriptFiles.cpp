#include "telephone/testing/ScriptFiles.h"

#include <filesystem>
#include <set>

namespace telephone {

namespace {

namespace fs = std::filesystem;

constexpr char const* kEnding = ".script";

Outcome<std::set<std::string>> scriptsIn(std::string const& folder)
{
    std::set<std::string> scripts;
    std::error_code error;
    fs::recursive_directory_iterator entry(folder, error);
    for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
        if (entry->path().extension() == kEnding && entry->is_regular_file()) {
            scripts.insert(entry->path().lexically_normal().string());
        }
    }
    if (error) {
        return refuse(RefusalKind::kUnavailable, folder + ": " + error.message());
    }
    return scripts.empty() ? refuse(RefusalKind::kNotFound, folder + ": no file *.script in this folder")
                           : Outcome<std::set<std::string>>(scripts);
}

Outcome<std::set<std::string>> scriptsAt(std::string const& path)
{
    std::error_code error;
    if (fs::is_directory(path, error)) {
        return scriptsIn(path);
    }
    return fs::exists(path, error) ? Outcome<std::set<std::string>>({fs::path(path).lexically_normal().string()})
                                   : refuse(RefusalKind::kNotFound, path + ": there is no such file or folder");
}

}  // namespace

Outcome<std::vector<std::string>> findScripts(std::vector<std::string> const& paths)
{
    std::set<std::string> all;
    for (std::string const& path : paths) {
        auto scripts = scriptsAt(path);
        if (!scripts) {
            return tl::unexpected(std::move(scripts.error()));
        }
        all.merge(*scripts);
    }
    return std::vector<std::string>(all.begin(), all.end());
}

}  // namespace telephone
