#include "telephone/management/Settings.h"

#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <mutex>
#include <shared_mutex>

#include "platform/management/DxlCollection.h"
#include "platform/management/ManageableData.h"
#include "telephone/configuration/Configuration.h"
#include "telephone/framework/Log.h"
#include "telephone/management/ConfigurationStore.h"
#include "telephone/management/SettingCheck.h"
#include "telephone/management/SettingListeners.h"
#include "telephone/management/StoreError.h"

namespace telephone {

namespace {

constexpr std::string_view kComponent = "settings";

using Values = ConfigurationStore::Values;

char const* wordOf(bool flag)
{
    return flag ? "true" : "false";
}

Values standardsOf(Configuration const& configuration)
{
    Values values;
    for (auto const& row : kSettingRows) {
        if (!isFamily(row)) {
            values.emplace(row.name, row.standard);
        }
    }
    auto const put = [&values](std::string_view key, std::string value) {
        values.find(key)->second = std::move(value);
    };
    put(SettingNames::kServerBasedFeatures, wordOf(configuration.server.serverFeatures));
    put(SettingNames::kServerType, std::to_string(configuration.server.type));
    put(SettingNames::kForwardingPrivacy, wordOf(configuration.server.forwardingPrivacy));
    put(SettingNames::kDialRestriction, std::to_string(configuration.calls.dialRestriction));
    return values;
}

// What another program or an older telephone has left in the store and this one can't use.
bool isUsable(std::string const& key, std::string const& value)
{
    std::string normal;
    auto const checked = checkSetting(key, value, normal);
    if (!checked) {
        log(kLogWarning, kComponent, "stored value ignored: {}", checked.reason);
        return false;
    }
    return findSettingRow(key)->access != SettingAccess::kReadOnly;
}

}  // namespace

class Settings::State
{
public:
    State(std::unique_ptr<ConfigurationStore> store, Configuration const& configuration)
        : store_(std::move(store))
        , standards_(standardsOf(configuration))
        , stored_(usable(store_->load()))
    {}

    std::string text(std::string_view key) const
    {
        std::shared_lock const guard(values_);
        return inForce(key);
    }
    Values stored() const
    {
        std::shared_lock const guard(values_);
        return stored_;
    }

    SettingOutcome write(std::vector<Item> const& items);
    SettingOutcome resetUserSettings();
    void report(std::string_view key, std::string_view value);
    void refresh();

    SettingListeners listeners;

private:
    static Values usable(Values values)
    {
        std::erase_if(values, [](auto const& item) { return !isUsable(item.first, item.second); });
        return values;
    }
    // With values_ held.
    std::string inForce(std::string_view key) const
    {
        if (auto const found = stored_.find(key); found != stored_.end()) {
            return found->second;
        }
        auto const found = standards_.find(key);
        return found == standards_.end() ? std::string() : found->second;
    }
    // Both with writing_ held; `changed` grows by the keys whose value in force is another one now.
    void takeOver(Values values, std::vector<std::string>& changed);
    SettingOutcome store(std::vector<ConfigurationStore::Change> const& changes, std::vector<std::string>& changed);
    void readOthers(std::vector<std::string>& changed);

    std::unique_ptr<ConfigurationStore> store_;
    mutable std::shared_mutex values_;  // standards_ and stored_; never held for longer than a look
    std::mutex writing_;                // the store; taken before values_
    bool stale_ = false;                // others have written what could not be read yet
    Values standards_;                  // and what was reported
    Values stored_;
};

void Settings::State::takeOver(Values values, std::vector<std::string>& changed)
{
    std::unique_lock const guard(values_);
    Values before;
    for (auto const* source : std::initializer_list<Values const*>{&stored_, &values}) {
        for (auto const& item : *source) {
            before.emplace(item.first, inForce(item.first));
        }
    }
    stored_ = std::move(values);
    for (auto const& [key, value] : before) {
        if (inForce(key) != value) {
            changed.push_back(key);
        }
    }
}

void Settings::State::readOthers(std::vector<std::string>& changed)
{
    try {
        stale_ = store_->changedByOthers() || stale_;
        if (stale_) {
            takeOver(usable(store_->load()), changed);
            stale_ = false;
        }
    } catch (StoreError const& error) {
        log(kLogFailure, kComponent, "{}", error.what());
    }
}

SettingOutcome Settings::State::store(std::vector<ConfigurationStore::Change> const& changes,
                                      std::vector<std::string>& changed)
{
    if (changes.empty()) {
        return {};
    }
    auto outcome = store_->write(changes);
    if (!outcome) {
        return outcome;
    }
    auto values = stored_;
    for (auto const& change : changes) {
        if (change.value) {
            values.insert_or_assign(change.name, *change.value);
        } else {
            values.erase(change.name);
        }
    }
    takeOver(std::move(values), changed);
    return outcome;
}

SettingOutcome Settings::State::write(std::vector<Item> const& items)
{
    std::vector<std::string> changed;
    SettingOutcome outcome;
    {
        std::lock_guard const guard(writing_);
        readOthers(changed);
        Values wanted;
        for (auto const& [key, value] : items) {
            wanted.insert_or_assign(key, value);
        }
        std::vector<ConfigurationStore::Change> changes;
        for (auto const& [key, value] : wanted) {
            auto const found = stored_.find(key);
            if (found == stored_.end() || found->second != value) {
                changes.push_back({key, value});
            }
        }
        outcome = store(changes, changed);
    }
    listeners.tell(changed);
    return outcome;
}

SettingOutcome Settings::State::resetUserSettings()
{
    std::vector<std::string> changed;
    SettingOutcome outcome;
    {
        std::lock_guard const guard(writing_);
        readOthers(changed);
        std::vector<ConfigurationStore::Change> changes;
        for (auto const& item : stored_) {
            if (findSettingRow(item.first)->access == SettingAccess::kUser) {
                changes.push_back({item.first, std::nullopt});
            }
        }
        outcome = store(changes, changed);
    }
    listeners.tell(changed);
    return outcome;
}

void Settings::State::report(std::string_view key, std::string_view value)
{
    {
        std::unique_lock const guard(values_);
        auto& standing = standards_[std::string(key)];
        if (standing == value) {
            return;
        }
        standing = value;
    }
    listeners.tell({std::string(key)});
}

void Settings::State::refresh()
{
    std::vector<std::string> changed;
    {
        std::lock_guard const guard(writing_);
        readOthers(changed);
    }
    listeners.tell(changed);
}

Settings::Settings(std::unique_ptr<ConfigurationStore> store, Configuration const& configuration)
    : state_(std::make_unique<State>(std::move(store), configuration))
{}

Settings::~Settings() = default;

std::string Settings::text(std::string_view key) const
{
    return state_->text(key);
}

bool Settings::flag(std::string_view key) const
{
    return state_->text(key) == "true";
}

int Settings::number(std::string_view key) const
{
    auto const value = state_->text(key);
    int number = 0;
    std::from_chars(value.data(), value.data() + value.size(), number);
    return number;
}

std::vector<Settings::Item> Settings::all() const
{
    auto const stored = state_->stored();
    std::vector<Item> items;
    for (auto const& row : kSettingRows) {
        if (!isFamily(row)) {
            items.emplace_back(row.name, text(row.name));
            continue;
        }
        std::copy_if(stored.begin(), stored.end(), std::back_inserter(items),
                     [&row](auto const& item) { return findSettingRow(item.first) == &row; });
    }
    return items;
}

std::vector<Settings::Item> Settings::allUnder(std::string_view prefix) const
{
    auto const stored = state_->stored();
    std::vector<Item> items;
    std::copy_if(stored.begin(), stored.end(), std::back_inserter(items),
                 [prefix](auto const& item) { return item.first.starts_with(prefix); });
    return items;
}

SettingOutcome Settings::set(std::string_view key, std::string_view value)
{
    return setAll({{std::string(key), std::string(value)}});
}

SettingOutcome Settings::setAll(std::vector<Item> const& items)
{
    std::vector<Item> normal;
    for (auto const& [key, value] : items) {
        auto& stored = normal.emplace_back(key, std::string()).second;
        auto checked = checkSetting(key, value, stored);
        if (checked && findSettingRow(key)->access == SettingAccess::kReadOnly) {
            checked = {SettingRefusal::kReadOnly, fmt::format("\"{}\" is read-only", key)};
        }
        if (!checked) {
            log(kLogWarning, kComponent, "refused: {}", checked.reason);
            return checked;
        }
    }
    auto outcome = state_->write(normal);
    if (!outcome) {
        log(kLogFailure, kComponent, "not set: {}", outcome.reason);
    }
    return outcome;
}

void Settings::report(std::string_view key, std::string_view value)
{
    auto const* row = findSettingRow(key);
    if (row == nullptr || row->access != SettingAccess::kReadOnly) {
        log(kLogFailure, kComponent, "not reported: \"{}\" is no read-only setting", key);
        return;
    }
    state_->report(key, value);
}

SettingOutcome Settings::resetUserSettings()
{
    auto outcome = state_->resetUserSettings();
    if (!outcome) {
        log(kLogFailure, kComponent, "settings not reset: {}", outcome.reason);
    }
    return outcome;
}

int Settings::apply(ManageableData& data, bool changed)
{
    if (changed) {
        return 1;
    }
    auto const outcome = setAll(itemsOf(data));
    return outcome ? 1 : 0;
}

void Settings::refresh()
{
    state_->refresh();
}

Settings::ListenerId Settings::listenToKey(std::string_view key, Listener listener)
{
    return state_->listeners.addForKey(key, std::move(listener));
}

Settings::ListenerId Settings::listenToTag(std::string_view tag, Listener listener)
{
    return state_->listeners.addForTag(tag, std::move(listener));
}

void Settings::endListening(ListenerId id)
{
    state_->listeners.remove(id);
}

std::vector<Settings::Item> itemsOf(ManageableData const& data)
{
    DxlCollection ids;
    data.getRootIds(ids);
    std::vector<Settings::Item> items;
    for (std::size_t row = 0; row < ids.size(); ++row) {
        auto key = ids.value(row, ManageableData::kRootId);
        std::string value;
        data.interogate(key, "", value);
        items.emplace_back(std::move(key), std::move(value));
    }
    return items;
}

}  // namespace telephone
