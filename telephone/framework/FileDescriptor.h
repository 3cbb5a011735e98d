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
    ~FileDescriptor() { close(); }
    FileDescriptor(FileDescriptor&& other) noexcept
        : number_(std::exchange(other.number_, -1))
    {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept
    {
        if (this != &other) {
            close();
            number_ = std::exchange(other.number_, -1);
        }
        return *this;
    }

    [[nodiscard]] int get() const { return number_; }
    explicit operator bool() const { return number_ >= 0; }
    void close()
    {
        if (number_ >= 0) {
            ::close(std::exchange(number_, -1));
        }
    }

private:
    int number_ = -1;
};

}  // namespace telephone
