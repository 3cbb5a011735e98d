#include "telephone/management/Settings.h"

#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <iterator>
#include <mutex>
#include <shared_mutex>

#include "telephone/configuration/Configuration.h"
#include "telephone/framework/Log.h"
#include "telephone/management/SettingCheck.h"
#include "telephone/trace/Trace.h"

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

// Their values may be secret.
std::string namesOf(std::vector<ConfigurationStore::Change> const& changes)
{
    std::string names;
    for (auto const& each : changes) {
        names += (names.empty() ? "" : ", ") + each.name;
    }
    return names;
}

}  // namespace

Settings::Settings(std::unique_ptr<ConfigurationStore> store, Configuration const& configuration)
    : store_(std::move(store))
    , standards_(standardsOf(configuration))
    , stored_(usable(valueOrThrow(store_->load())))
{}

std::string Settings::text(std::string_view key) const
{
    std::shared_lock const guard(values_);
    return inForce(key);
}

std::string Settings::inForce(std::string_view key) const
{
    if (auto const found = stored_.find(key); found != stored_.end()) {
        return found->second;
    }
    auto const found = standards_.find(key);
    return found == standards_.end() ? std::string() : found->second;
}

bool Settings::flag(std::string_view key) const
{
    return text(key) == "true";
}

int Settings::number(std::string_view key) const
{
    auto const value = text(key);
    int number = 0;
    std::from_chars(value.data(), value.data() + value.size(), number);
    return number;
}

std::vector<Settings::Item> Settings::all() const
{
    std::shared_lock const guard(values_);
    std::vector<Item> items;
    for (auto const& row : kSettingRows) {
        if (!isFamily(row)) {
            items.emplace_back(row.name, inForce(row.name));
            continue;
        }
        std::copy_if(stored_.begin(), stored_.end(), std::back_inserter(items),
                     [&row](auto const& item) { return findSettingRow(item.first) == &row; });
    }
    return items;
}

Outcome<std::vector<Settings::Item>> Settings::missingInStore()
{
    std::lock_guard const guard(writing_);
    stale_ = store_->changedByOthers() || stale_;  // which `load` would hide
    return store_->load().map([this](Values const& held) {
        std::vector<Item> missing;
        std::set_difference(stored_.begin(), stored_.end(), held.begin(), held.end(), std::back_inserter(missing));
        return missing;
    });
}

void Settings::takeOver(Values values, std::vector<std::string>& changed)
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

void Settings::readOthers(std::vector<std::string>& changed)
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

Outcome<> Settings::store(Changes const& changes, std::vector<std::string>& changed)
{
    if (changes.empty()) {
        return {};
    }
    auto written = store_->write(changes);
    writable_ = written.has_value();
    traceStep("store", [&](TraceStep& step) {
        step.add("settings", namesOf(changes)).addUnlessEmpty("reason", written ? "" : written.error().reason);
    });
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

Outcome<> Settings::change(std::function<Changes(Values const& stored)> const& changesOf)
{
    if (auto const pause = pause_.load()) {
        (*pause)();
    }
    std::vector<std::string> changed;
    std::unique_lock guard(writing_);
    readOthers(changed);
    auto outcome = store(changesOf(stored_), changed);
    guard.unlock();
    listeners_.tell(changed);
    return outcome;
}

Outcome<> Settings::resetUserSettings()
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

Outcome<std::string> Settings::deviceUuid()
{
    std::lock_guard const guard(writing_);
    return store_->deviceUuid();
}

void Settings::refresh()
{
    std::vector<std::string> changed;
    {
        std::lock_guard const guard(writing_);
        readOthers(changed);
    }
    listeners_.tell(changed);
}

Outcome<> Settings::set(std::string_view key, std::string_view value)
{
    return setAll({{std::string(key), std::string(value)}});
}

Outcome<> Settings::setAll(std::vector<Item> const& items)
{
    Values wanted;
    for (auto const& [key, value] : items) {
        auto checked = checkChange(key, value);
        if (!checked) {
            return tl::unexpected(std::move(checked.error()));
        }
        wanted.insert_or_assign(key, *std::move(checked));
    }
    return change([&wanted](Values const& stored) {
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

Settings::ListenerId Settings::listenToKey(std::string_view key, Listener listener)
{
    return listeners_.add(SettingListeners::By::kKey, key, std::move(listener));
}

Settings::ListenerId Settings::listenToTag(std::string_view tag, Listener listener)
{
    return listeners_.add(SettingListeners::By::kTag, tag, std::move(listener));
}

void Settings::endListening(ListenerId id)
{
    listeners_.remove(id);
}

}  // namespace telephone
