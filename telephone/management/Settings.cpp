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
#include "telephone/framework/Refusals.h"
#include "telephone/management/ConfigurationStore.h"
#include "telephone/management/SettingCheck.h"
#include "telephone/management/SettingListeners.h"

namespace telephone {

namespace {

constexpr std::string_view kSettingsComponent = "settings";

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

// False for a value that another program or an older telephone stored and this one cannot use.
bool isUsable(std::string const& key, std::string const& value)
{
    if (auto const checked = checkSetting(key, value); !checked) {
        log(kLogWarning, kSettingsComponent, "stored value ignored: {}", checked.error().reason);
        return false;
    }
    return findSettingRow(key)->access != SettingAccess::kReadOnly;
}

Values usable(Values values)
{
    std::erase_if(values, [](auto const& item) { return !isUsable(item.first, item.second); });
    return values;
}

}  // namespace

class Settings::State
{
public:
    State(std::unique_ptr<ConfigurationStore> store, Configuration const& configuration)
        : store_(std::move(store))
        , standards_(standardsOf(configuration))
        , stored_(usable(valueOrThrow(store_->load())))
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

    Outcome<> write(std::vector<Item> const& items);
    Outcome<> resetUserSettings();
    void report(std::string_view key, std::string_view value);
    void refresh();

    SettingListeners listeners;

private:
    using Changes = std::vector<ConfigurationStore::Change>;

    // With values_ held.
    std::string inForce(std::string_view key) const
    {
        if (auto const found = stored_.find(key); found != stored_.end()) {
            return found->second;
        }
        auto const found = standards_.find(key);
        return found == standards_.end() ? std::string() : found->second;
    }
    // Stores the changes that `changesOf` makes of the stored values, then tells the listeners.
    Outcome<> change(std::function<Changes(Values const& stored)> const& changesOf);
    // With writing_ held. Each appends the keys whose value in force has changed.
    void takeOver(Values values, std::vector<std::string>& changed);
    Outcome<> store(Changes const& changes, std::vector<std::string>& changed);
    void readOthers(std::vector<std::string>& changed);

    std::unique_ptr<ConfigurationStore> store_;
    mutable std::shared_mutex values_;  // guards standards_ and stored_; never held during file access
    std::mutex writing_;                // guards the store; taken before values_
    bool stale_ = false;                // another program's changes could not be read yet
    Values standards_;                  // and the reported values
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
    stale_ = store_->changedByOthers() || stale_;
    if (!stale_) {
        return;
    }
    auto loaded = store_->load();
    if (!loaded) {
        log(kLogFailure, kSettingsComponent, "{}", loaded.error().reason);
        return;
    }
    takeOver(usable(*std::move(loaded)), changed);
    stale_ = false;
}

Outcome<> Settings::State::store(Changes const& changes, std::vector<std::string>& changed)
{
    if (changes.empty()) {
        return {};
    }
    auto written = store_->write(changes);
    if (!written) {
        return written;
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
    return {};
}

Outcome<> Settings::State::change(std::function<Changes(Values const& stored)> const& changesOf)
{
    std::vector<std::string> changed;
    std::unique_lock guard(writing_);
    readOthers(changed);
    auto outcome = store(changesOf(stored_), changed);
    guard.unlock();
    listeners.tell(changed);
    return outcome;
}

Outcome<> Settings::State::write(std::vector<Item> const& items)
{
    return change([&items](Values const& stored) {
        Values wanted;
        for (auto const& [key, value] : items) {
            wanted.insert_or_assign(key, value);
        }
        Changes changes;
        for (auto const& [key, value] : wanted) {
            auto const found = stored.find(key);
            if (found == stored.end() || found->second != value) {
                changes.push_back({key, value});
            }
        }
        return changes;
    });
}

Outcome<> Settings::State::resetUserSettings()
{
    return change([](Values const& stored) {
        Changes changes;
        for (auto const& item : stored) {
            if (findSettingRow(item.first)->access == SettingAccess::kUser) {
                changes.push_back({item.first, std::nullopt});
            }
        }
        return changes;
    });
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

Outcome<> Settings::set(std::string_view key, std::string_view value)
{
    return setAll({{std::string(key), std::string(value)}});
}

Outcome<> Settings::setAll(std::vector<Item> const& items)
{
    std::vector<Item> normal;
    for (auto const& [key, value] : items) {
        auto checked = checkChange(key, value);
        if (!checked) {
            return tl::unexpected(std::move(checked.error()));
        }
        normal.emplace_back(key, *std::move(checked));
    }
    return state_->write(normal);
}

void Settings::report(std::string_view key, std::string_view value)
{
    auto const* row = findSettingRow(key);
    if (row == nullptr || row->access != SettingAccess::kReadOnly) {
        log(kLogFailure, kSettingsComponent, "not reported: \"{}\" is not a read-only setting", key);
        return;
    }
    state_->report(key, value);
}

Outcome<> Settings::resetUserSettings()
{
    return state_->resetUserSettings();
}

int Settings::apply(ManageableData& data, bool changed)
{
    if (changed) {
        return 1;
    }
    auto const outcome = setAll(itemsOf(data));
    if (!outcome) {
        reportRefusal(kSettingsComponent, outcome.error());
    }
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
