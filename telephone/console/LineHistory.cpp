#include "telephone/console/LineHistory.h"

// readline requires FILE to be declared.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include <fcntl.h>
#include <readline/history.h>

#include "telephone/framework/FileDescriptor.h"

namespace telephone {

namespace {

constexpr int kMostLines = 1000;
constexpr mode_t kOwnerOnly = 0600;

std::filesystem::path historyFile()
{
    char const* const state = std::getenv("XDG_STATE_HOME");
    if (state != nullptr && *state == '/') {
        return std::filesystem::path(state) / "telephone" / "history";
    }
    char const* const home = std::getenv("HOME");
    bool const hasHome = home != nullptr && *home == '/';
    return hasHome ? std::filesystem::path(home) / ".local" / "state" / "telephone" / "history"
                   : std::filesystem::path();
}

// Makes the file, so that it never exists with other permissions. False: there is none, and none can be made.
bool prepareFile(std::filesystem::path const& file)
{
    std::error_code error;
    std::filesystem::create_directories(file.parent_path(), error);
    return static_cast<bool>(FileDescriptor(open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, kOwnerOnly)));
}

}  // namespace

LineHistory::LineHistory()
{
    using_history();
    clear_history();
    stifle_history(kMostLines);
    auto const file = historyFile();
    if (file.empty() || !prepareFile(file)) {
        return;
    }
    file_ = file;
    read_history(file_.c_str());
    known_ = history_base + history_length - 1;
}

LineHistory::~LineHistory()
{
    int const fresh = history_base + history_length - 1 - known_;
    if (!file_.empty() && fresh > 0) {
        append_history(std::min(fresh, history_length), file_.c_str());
        history_truncate_file(file_.c_str(), kMostLines);
    }
}

void LineHistory::add(char const* line)
{
    HIST_ENTRY const* const last = history_get(history_base + history_length - 1);
    bool const isRepeated = last != nullptr && std::strcmp(last->line, line) == 0;
    if (*line != '\0' && *line != ' ' && !isRepeated) {
        add_history(line);
    }
}

}  // namespace telephone
