// Who may send which kind of request outside a dialog: one table, and what the configuration changes in it. A request
// within a dialog is the far end's of that dialog and needs no permission. Plain values; any thread.
#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace telephone::sip {

// From the most trusted: each includes those before it.
enum class Sender : int
{
    kServer,         // the server with which the line is registered
    kAuthenticated,  // knows the line's password (digest)
    kAnybody,
};

enum class RequestKind : int
{
    kCall,
    kTakeOver,
    kSubscription,
    kNotification,
    kControl,
    kTransfer,
};

struct PermissionRow
{
    RequestKind kind;
    std::string_view name;     // in the configuration
    std::string_view request;  // as in the message
    std::string_view effect;
    Sender withServer;     // for a line that registers
    Sender withoutServer;  // for one that does not
};

// clang-format off
inline constexpr auto kPermissions = std::to_array<PermissionRow>({
    {RequestKind::kCall,         "calls",         "INVITE",                        "calls the line",                                Sender::kServer,        Sender::kAnybody},
    {RequestKind::kTakeOver,     "take-overs",    "INVITE with Replaces or Join",  "takes a call of the line over, or joins it",    Sender::kAuthenticated, Sender::kAuthenticated},
    {RequestKind::kSubscription, "subscriptions", "SUBSCRIBE",                     "learns of the line's calls, with their dialogs", Sender::kServer,       Sender::kAuthenticated},
    {RequestKind::kNotification, "notifications", "NOTIFY without a subscription", "sets the line's waiting messages",              Sender::kServer,        Sender::kAuthenticated},
    {RequestKind::kControl,      "control",       "INFO with CSTA",                "is passed to the applications",                 Sender::kServer,        Sender::kAuthenticated},
    {RequestKind::kTransfer,     "transfers",     "REFER outside a dialog",        "lets the line call another party",              Sender::kServer,        Sender::kAuthenticated},
});
// clang-format on

// The texts of the configuration; "default" is the table's.
constexpr std::string_view kSenderChoices = "default|server|authenticated|anybody";

class Permissions
{
public:
    void set(RequestKind kind, std::optional<Sender> sender) { changed_.at(static_cast<std::size_t>(kind)) = sender; }
    // The least trusted sender whose requests are accepted.
    Sender of(RequestKind kind, bool hasServer) const;

private:
    std::array<std::optional<Sender>, kPermissions.size()> changed_{};
};

// A user whose requests need a permission.
struct GuardedUser
{
    std::string name;
    std::string password;  // empty: nobody can authenticate
    bool hasServer = false;
    Permissions permissions;
};

}  // namespace telephone::sip
