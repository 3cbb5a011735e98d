// The telephone's settings: every value of the configuration store by its key, as it is in force.
//
// The composition root owns the one object. Every operation may be called from any thread, with or without the phone
// lock; no lock of the settings is held while a listener runs. Reading takes no time; `set` returns when the value is
// on the disk, so a thread that holds the phone lock keeps the telephone waiting meanwhile.
//
// Normally: settings.set("cfu-activated", "true") writes, puts into force, tells the listeners, returns.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "telephone/management/SettingOutcome.h"
#include "telephone/management/SettingRows.h"

class ManageableData;

namespace telephone {

class ConfigurationStore;
struct Configuration;

class Settings
{
public:
    using Item = std::pair<std::string, std::string>;  // key, value
    // Told the keys that changed. Read the values in force by the getters: another thread may have set them again.
    using Listener = std::function<void(std::vector<std::string> const& keys)>;
    using ListenerId = std::uint64_t;

    // Takes what is stored into force. The configuration gives the standard values of "server-based-features",
    // "server-type", "forwarding-privacy" and "dial-restriction-mode".
    Settings(std::unique_ptr<ConfigurationStore> store, Configuration const& configuration);
    ~Settings();
    Settings(Settings const&) = delete;
    Settings& operator=(Settings const&) = delete;

    // The value in force: what is stored, else the standard value. An unknown key reads as "".
    std::string text(std::string_view key) const;
    // True when the text is "true".
    bool flag(std::string_view key) const;
    // 0 when the text is no number.
    int number(std::string_view key) const;
    // All keys with a value: each of the table, and what is stored of its families. In the table's order.
    std::vector<Item> all() const;
    // The keys of a family that are stored, with their values: by "line/4711/" those of that line.
    std::vector<Item> allUnder(std::string_view prefix) const;

    // Durable and in force when it returns an acceptance; on a refusal nothing has changed. A value that is in force
    // already is accepted and nobody is told.
    SettingOutcome set(std::string_view key, std::string_view value);
    // All or none.
    SettingOutcome setAll(std::vector<Item> const& items);
    // A read-only value that the telephone itself knows ("interface-status"): in force, never stored.
    void report(std::string_view key, std::string_view value);
    // Every setting that is the user's goes back to its standard value; the administrator's stay.
    SettingOutcome resetUserSettings();

    // What CSfi::ApplyManageableData does with its data: stores the items, all or none. `changed`: they come from the
    // store, so they are in force already. 0: refused, and why is logged.
    int apply(ManageableData& data, bool changed);

    // Values that another program wrote into the store file come into force.
    void refresh();

    // The listener runs on the thread that sets, after the write, and may call the settings. Of a family: the prefix.
    ListenerId listenToKey(std::string_view key, Listener listener);
    ListenerId listenToTag(std::string_view tag, Listener listener);
    // When it returns, the listener no longer runs, unless the listener itself calls it. It waits for a listener that
    // is running: hold no lock that the listener takes.
    void endListening(ListenerId id);

private:
    class State;
    std::unique_ptr<State> state_;
};

// The items of management data, in their order.
std::vector<Settings::Item> itemsOf(ManageableData const& data);

}  // namespace telephone
