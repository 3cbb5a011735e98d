// A thread that follows the telephone's time. Its owner joins it before it is destroyed.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <thread>

namespace telephone {

class Thread
{
public:
    Thread() = default;
    // The name says who it is, in the trace and in the report of a standstill.
    Thread(std::string name, std::function<void()> body);

    [[nodiscard]] bool joinable() const { return thread_.joinable(); }
    [[nodiscard]] std::thread::id id() const { return thread_.get_id(); }
    void join();

private:
    struct Part;

    std::shared_ptr<Part> part_;  // null: in real time
    std::thread thread_;
};

// The name of the calling thread: "main" for that of the program, "other" for one that a library has made.
[[nodiscard]] std::string_view threadName();

}  // namespace telephone
