// A path for a sound file of one test, which is removed at the end.
#pragma once

#include <filesystem>
#include <string>

#include <unistd.h>

namespace telephone::test {

class SoundFile
{
public:
    explicit SoundFile(std::string const& name)
        : path(std::filesystem::temp_directory_path() / (name + '-' + std::to_string(::getpid()) + ".wav"))
    {}
    ~SoundFile() { std::filesystem::remove(path); }
    SoundFile(SoundFile const&) = delete;
    SoundFile& operator=(SoundFile const&) = delete;

    std::string const path;
};

}  // namespace telephone::test
