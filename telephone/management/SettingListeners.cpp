#include "telephone/management/SettingListeners.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "telephone/framework/Log.h"
#include "telephone/management/SettingRows.h"

namespace telephone {

SettingListeners::Id SettingListeners::add(By by, std::string_view subject, Listener listener)
{
    std::lock_guard const guard(mutex_);
    auto entry = std::make_shared<Entry>();
    entry->id = ++lastId_;
    entry->by = by;
    entry->subject = subject;
    entry->listener = std::move(listener);
    entries_.push_back(std::move(entry));
    return lastId_;
}

void SettingListeners::remove(Id id)
{
    std::unique_lock guard(mutex_);
    auto const found =
        std::find_if(entries_.begin(), entries_.end(), [id](auto const& entry) { return entry->id == id; });
    if (found == entries_.end()) {
        return;
    }
    auto const entry = *found;
    entry->removed = true;
    entries_.erase(found);
    auto const here = std::this_thread::get_id();
    left_.wait(guard, [&] {
        return std::all_of(entry->running.begin(), entry->running.end(),
                           [here](auto thread) { return thread == here; });
    });
}

bool SettingListeners::concerns(Entry const& entry, std::string const& key)
{
    if (entry.by == By::kKey) {
        return entry.subject.ends_with('/') ? key.starts_with(entry.subject) : key == entry.subject;
    }
    auto const* row = findSettingRow(key);
    return row != nullptr && row->tag == entry.subject;
}

void SettingListeners::tell(std::vector<std::string> const& keys)
{
    std::unique_lock guard(mutex_);
    auto const entries = entries_;
    guard.unlock();
    for (auto const& entry : entries) {
        std::vector<std::string> concerned;
        std::copy_if(keys.begin(), keys.end(), std::back_inserter(concerned),
                     [&entry](auto const& key) { return concerns(*entry, key); });
        if (concerned.empty() || !enter(*entry)) {
            continue;
        }
        try {
            entry->listener(concerned);
        } catch (std::exception const& error) {
            log(kLogFailure, "settings", "a listener to \"{}\" failed: {}", entry->subject, error.what());
        }
        leave(*entry);
    }
}

bool SettingListeners::enter(Entry& entry)
{
    std::lock_guard const guard(mutex_);
    if (entry.removed) {
        return false;
    }
    entry.running.push_back(std::this_thread::get_id());
    return true;
}

void SettingListeners::leave(Entry& entry)
{
    {
        std::lock_guard const guard(mutex_);
        entry.running.erase(std::find(entry.running.begin(), entry.running.end(), std::this_thread::get_id()));
    }
    left_.notifyAll();
}

}  // namespace telephone
