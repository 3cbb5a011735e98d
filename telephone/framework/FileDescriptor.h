// Owns a file descriptor and closes it in the destructor. Movable, not copyable.
#pragma once

#include <utility>

#include <unistd.h>

namespace telephone {

class FileDescriptor
{
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int number)
        : number_(number)
    {}
    ~FileDescriptor()
    {
        if (number_ >= 0) {
            ::close(number_);
        }
    }
    FileDescriptor(FileDescriptor&& other) noexcept
        : number_(std::exchange(other.number_, -1))
    {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept
    {
        std::swap(number_, other.number_);
        return *this;
    }

    [[nodiscard]] int get() const { return number_; }
    explicit operator bool() const { return number_ >= 0; }

private:
    int number_ = -1;
};

}  // namespace telephone
