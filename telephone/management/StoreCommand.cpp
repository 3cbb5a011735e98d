#include "telephone/management/StoreCommand.h"

#include <memory>
#include <ostream>
#include <utility>

#include "telephone/management/ConfigurationStore.h"
#include "telephone/management/SettingCheck.h"
#include "telephone/management/Settings.h"

namespace telephone {

StoreCommand::StoreCommand(Configuration configuration, std::ostream& out, std::ostream& err)
    : configuration_(std::move(configuration))
    , out_(out)
    , err_(err)
{}

int StoreCommand::run(std::vector<std::string> const& arguments)
{
    auto const is = [&arguments](char const* verb, std::size_t count) {
        return arguments.size() == count && arguments[0] == verb;
    };
    bool const sets = is("set", 3);
    if (!sets && !is("list", 1) && !is("get", 2)) {
        err_ << "usage: telephone store list | get KEY | set KEY VALUE\n";
        return kUsage;
    }
    auto const& path = configuration_.store.path;
    if (path.empty()) {
        return refuse("this telephone keeps its settings in memory: name a file in store.path");
    }
    if (!sets && identityOf(path) == FileIdentity{}) {
        return refuse("there is no store \"" + path + "\" yet: the first start or the first set creates it");
    }
    auto store = ConfigurationStore::open(path);
    if (!store) {
        return refuse(store.error().reason);
    }
    Settings settings(*std::move(store), configuration_);
    if (sets) {
        return set(settings, arguments[1], arguments[2]);
    }
    return arguments[0] == "list" ? list(settings) : get(settings, arguments[1]);
}

int StoreCommand::list(Settings const& settings)
{
    for (auto const& [key, value] : settings.all()) {
        out_ << key << " = " << value << '\n';
    }
    return kDone;
}

int StoreCommand::get(Settings const& settings, std::string const& key)
{
    if (findSettingRow(key) == nullptr) {
        return refuse(checkSetting(key, {}).error().reason);
    }
    out_ << settings.text(key) << '\n';
    return kDone;
}

int StoreCommand::set(Settings& settings, std::string const& key, std::string const& value)
{
    auto const outcome = settings.set(key, value);
    return outcome ? kDone : refuse(outcome.error().reason);
}

int StoreCommand::refuse(std::string const& reason)
{
    err_ << "telephone store: " << reason << '\n';
    return kRefused;
}

}  // namespace telephone
