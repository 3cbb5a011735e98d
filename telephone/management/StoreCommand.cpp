#include "telephone/management/StoreCommand.h"

#include <ostream>
#include <utility>

#include "telephone/management/ConfigurationStore.h"
#include "telephone/management/SettingCheck.h"
#include "telephone/management/Settings.h"

namespace telephone {

namespace {

// arguments: a known verb with its operands.
Outcome<> runVerb(std::vector<std::string> const& arguments, Configuration const& configuration, std::ostream& out)
{
    auto const& verb = arguments[0];
    auto const& path = configuration.store.path;
    if (path.empty()) {
        return refuse(RefusalKind::kBadInput, "this telephone keeps its settings in memory: name a file in store.path");
    }
    if (verb != "set" && identityOf(path) == FileIdentity{}) {
        return refuse(RefusalKind::kNotFound,
                      "there is no store \"" + path + "\" yet: the first start or the first set creates it");
    }
    auto store = ConfigurationStore::open(path);
    if (!store) {
        return tl::unexpected(store.error());
    }
    Settings settings(*std::move(store), configuration);
    if (verb == "set") {
        return settings.set(arguments[1], arguments[2]);
    }
    if (verb == "list") {
        for (auto const& [key, value] : settings.all()) {
            out << key << " = " << value << '\n';
        }
        return {};
    }
    if (findSettingRow(arguments[1]) == nullptr) {
        return tl::unexpected(checkSetting(arguments[1], {}).error());
    }
    out << settings.text(arguments[1]) << '\n';
    return {};
}

}  // namespace

int runStoreCommand(std::vector<std::string> const& arguments, Configuration const& configuration, std::ostream& out,
                    std::ostream& err)
{
    auto const is = [&arguments](char const* verb, std::size_t count) {
        return arguments.size() == count && arguments[0] == verb;
    };
    if (!is("list", 1) && !is("get", 2) && !is("set", 3)) {
        err << "usage: telephone store list | get KEY | set KEY VALUE\n";
        return kStoreUsage;
    }
    auto const done = runVerb(arguments, configuration, out);
    if (!done) {
        err << "telephone store: " << done.error().reason << '\n';
    }
    return done ? kStoreDone : kStoreRefused;
}

}  // namespace telephone
