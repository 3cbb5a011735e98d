#include "telephone/management/ForwardingKeys.h"

#include <algorithm>

#include "telephone/management/Settings.h"

namespace telephone {

bool isForwarding(Settings const& settings)
{
    return !settings.text(SettingNames::kForwardingAlternative).empty() ||
           std::any_of(kForwardingKeys.begin(), kForwardingKeys.end(),
                       [&settings](ForwardingKeys const& rule) { return settings.flag(rule.activated); });
}

}  // namespace telephone
