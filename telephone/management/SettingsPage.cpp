#include "telephone/management/SettingsPage.h"

#include <algorithm>

#include <spdlog/fmt/fmt.h>

#include "telephone/management/SettingCheck.h"
#include "telephone/management/SettingRows.h"

namespace telephone {

namespace {

constexpr std::string_view kHead = R"(# Settings

What the configuration store holds. `telephone store list`, `telephone store get KEY` and `telephone store set KEY VALUE`
read and write it, also while the telephone runs; requests and management data write the same keys. A key that ends in
`/*` stands for every key that begins so. An application hears of changes by their tag.

This page is made from the table in `telephone/management/SettingRows.h`.

| Key | Takes | Standard | Who | Tag | Meaning |
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
    page +=
        "\nA user's setting goes back to its standard value when the user's data are reset; an administrator's stays.\n"
        "A read-only one comes from the configuration file or is reported by the telephone itself.\n";
    return page;
}

}  // namespace telephone
