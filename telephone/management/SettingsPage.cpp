#include "telephone/management/SettingsPage.h"

#include <algorithm>

#include <spdlog/fmt/fmt.h>

#include "telephone/management/SettingCheck.h"
#include "telephone/management/SettingRows.h"

namespace telephone {

namespace {

constexpr std::string_view kHead = R"(# Settings

The keys of the configuration store. `telephone store list`, `telephone store get KEY` and `telephone store set KEY VALUE`
read and write it, also while the telephone is running; requests and management data write the same keys. A key that
ends in `/*` stands for every key with that beginning. Applications subscribe to changes by tag.

This page is generated from the table in `telephone/management/SettingRows.h`.

| Key | Values | Standard | Access | Tag | Meaning |
|---|---|---|---|---|---|
)";

std::string_view wordOf(SettingAccess access)
{
    switch (access) {
    case SettingAccess::kUser:
        return "user";
    case SettingAccess::kAdministrator:
        return "administrator";
    case SettingAccess::kReadOnly:
        return "read-only";
    }
    return {};
}

}  // namespace

std::string settingsPage()
{
    std::string page(kHead);
    for (auto const& row : kSettingRows) {
        page += fmt::format("| `{}` | {} | {} | {} | `{}` | {} |\n", row.name, expectedOf(row),
                            row.standard.empty() ? "" : fmt::format("`{}`", row.standard), wordOf(row.access), row.tag,
                            row.meaning);
    }
    page += "\nA reset of the user's data restores the standard values of user settings; administrator settings stay.\n"
            "Read-only settings come from the configuration file.\n";
    return page;
}

}  // namespace telephone
