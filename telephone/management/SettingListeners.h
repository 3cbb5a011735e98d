// The listeners to changed settings. Settings owns it and calls `tell` with no lock held.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "telephone/time/Condition.h"

namespace telephone {

class SettingListeners
{
public:
    using Listener = std::function<void(std::vector<std::string> const& keys)>;
    using Id = std::uint64_t;
    enum class By
    {
        kKey,
        kTag,
    };

    // subject: a key or a tag. A key that ends in "/" stands for its family.
    Id add(By by, std::string_view subject, Listener listener);
    // Waits until no other thread is running the listener.
    void remove(Id id);
    // Tells each listener the keys that it subscribed to. An exception of a listener is logged.
    void tell(std::vector<std::string> const& keys);

private:
    struct Entry
    {
        Id id = 0;
        By by = By::kKey;
        std::string subject;
        Listener listener;
        bool removed = false;
        std::vector<std::thread::id> running;  // threads running the listener
    };

    static bool concerns(Entry const& entry, std::string const& key);
    bool enter(Entry& entry);
    void leave(Entry& entry);

    std::mutex mutex_;
    Condition left_{"the end of a listener's call"};
    std::vector<std::shared_ptr<Entry>> entries_;
    Id lastId_ = 0;
};

}  // namespace telephone
