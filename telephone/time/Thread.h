// A thread that follows the telephone's time. Its owner joins it before it is destroyed.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <thread>

namespace telephone {

class Thread
{
public:
    Thread() = default;
    // The name says in the report of a standstill who waits.
    Thread(std::string name, std::function<void()> body);

    [[nodiscard]] bool joinable() const { return thread_.joinable(); }
    [[nodiscard]] std::thread::id id() const { return thread_.get_id(); }
    void join();

private:
    struct Part;

    std::shared_ptr<Part> part_;  // null: in real time
    std::thread thread_;
};

}  // namespace telephone
