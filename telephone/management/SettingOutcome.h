// What became of a setting that was to be changed.
#pragma once

#include <string>

namespace telephone {

enum class SettingRefusal
{
    kNone,
    kUnknownKey,
    kWrongValue,  // of another type, out of range, too long
    kReadOnly,
    kStoreFull,
    kStoreLocked,    // another program holds it
    kStoreReadOnly,  // the file can't be written
    kStoreGone,      // the file was removed or replaced under the running telephone
    kStoreFailed,    // anything else that the disk answered
};

struct [[nodiscard]] SettingOutcome
{
    SettingRefusal refusal = SettingRefusal::kNone;
    std::string reason;  // for a person; empty when accepted

    explicit operator bool() const { return refusal == SettingRefusal::kNone; }
};

}  // namespace telephone
