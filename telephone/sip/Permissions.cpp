#include "telephone/sip/Permissions.h"

namespace telephone::sip {

namespace {

constexpr bool isInOrder()
{
    for (std::size_t i = 0; i < kPermissions.size(); ++i) {
        if (kPermissions[i].kind != static_cast<RequestKind>(i)) {
            return false;
        }
    }
    return true;
}
static_assert(isInOrder());

}  // namespace

Sender Permissions::of(RequestKind kind, bool hasServer) const
{
    auto const place = static_cast<std::size_t>(kind);
    PermissionRow const& row = kPermissions.at(place);
    return changed_.at(place).value_or(hasServer ? row.withServer : row.withoutServer);
}

}  // namespace telephone::sip
