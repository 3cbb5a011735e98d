// The telephone's settings: the values in force of the configuration store, by key.
//
// Telephone owns the one object. Every operation may be called from any thread, with or without the phone lock; no lock
// of the settings is held while a listener runs. Reading never waits for the disk; `set` returns when the value is on
// the disk, so calling it with the phone lock held delays the telephone.
//
// Normally: settings.set("cfu-activated", "true") writes, puts the value into force, tells the listeners and returns.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "telephone/base/Refusal.h"
#include "telephone/management/ConfigurationStore.h"
#include "telephone/management/SettingListeners.h"
#include "telephone/management/SettingRows.h"

namespace telephone {

struct Configuration;

class Settings
{
public:
    using Item = std::pair<std::string, std::string>;  // key, value
    // Receives the changed keys. Read their values with the getters: another thread may have changed them again.
    using Listener = SettingListeners::Listener;
    using ListenerId = SettingListeners::Id;

    // Puts the stored values into force. The configuration gives the standard values of "server-based-features",
    // "server-type", "forwarding-privacy" and "dial-restriction-mode". Throws std::runtime_error if the store cannot be
    // read.
    Settings(std::unique_ptr<ConfigurationStore> store, Configuration const& configuration);

    // The value in force: the stored value, else the standard value; "" for an unknown key.
    std::string text(std::string_view key) const;
    // True when the text is "true".
    bool flag(std::string_view key) const;
    // 0 when the text is not a number.
    int number(std::string_view key) const;
    // The stored values in force that the store does not hold; it is read for this. Refused if it cannot be read.
    [[nodiscard]] Outcome<std::vector<Item>> missingInStore();
    // All keys of the table with their values, and the stored keys of its families, in the table's order.
    std::vector<Item> all() const;

    // The value is on the disk and in force after a success; after a refusal nothing has changed. Setting the value
    // that is in force already succeeds without telling the listeners.
    [[nodiscard]] Outcome<> set(std::string_view key, std::string_view value);
    // Sets all items or none.
    [[nodiscard]] Outcome<> setAll(std::vector<Item> const& items);
    // Returns every user setting to its standard value; administrator settings stay.
    [[nodiscard]] Outcome<> resetUserSettings();

    // As ConfigurationStore::deviceUuid.
    [[nodiscard]] Outcome<std::string> deviceUuid();

    // Whether the last write reached the disk; true before the first.
    [[nodiscard]] bool isWritable() const { return writable_; }

    // Faults on request: every write is refused as on a full disk; `pause` runs before every write, on the thread that
    // writes and without a lock of the settings (null: none). Any thread.
    void setStoreFull(bool full) { store_->setFull(full); }
    void setPauseBeforeWrites(std::shared_ptr<std::function<void()> const> pause) { pause_ = std::move(pause); }

    // Puts values that another program wrote into the store file into force.
    void refresh();

    // The listener runs on the thread that sets the value, after the write, and may call the settings. A key that ends
    // in "/" stands for all keys of that family.
    ListenerId listenToKey(std::string_view key, Listener listener);
    ListenerId listenToTag(std::string_view tag, Listener listener);
    // The listener is no longer running on return, unless it makes this call itself. Waits for a running listener: hold
    // no lock that the listener takes.
    void endListening(ListenerId id);

private:
    using Values = ConfigurationStore::Values;
    using Changes = std::vector<ConfigurationStore::Change>;

    // With values_ held.
    std::string inForce(std::string_view key) const;
    // Stores the changes that `changesOf` makes of the stored values, then tells the listeners.
    Outcome<> change(std::function<Changes(Values const& stored)> const& changesOf);
    // With writing_ held. Each appends the keys whose value in force has changed.
    void takeOver(Values values, std::vector<std::string>& changed);
    Outcome<> store(Changes const& changes, std::vector<std::string>& changed);
    void readOthers(std::vector<std::string>& changed);

    std::unique_ptr<ConfigurationStore> const store_;
    mutable std::shared_mutex values_;  // guards stored_; never held during file access
    std::mutex writing_;                // guards the store; taken before values_
    bool stale_ = false;                // another program's changes could not be read yet
    std::atomic<bool> writable_{true};
    std::atomic<std::shared_ptr<std::function<void()> const>> pause_;  // null: none
    Values const standards_;
    Values stored_;
    SettingListeners listeners_;
};

}  // namespace telephone
