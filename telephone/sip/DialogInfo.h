// Documents of two event packages as values: dialog-info (RFC 4235), which tells the calls of a party, and
// simple-message-summary (RFC 3842), which tells its waiting messages. Pure functions of their input; any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "telephone/sip/Message.h"

namespace telephone::sip {

constexpr char const* kDialogEvent = "dialog";
constexpr char const* kDialogInfoType = "application/dialog-info+xml";
constexpr char const* kMessageSummaryEvent = "message-summary";
constexpr char const* kMessageSummaryType = "application/simple-message-summary";

enum class DialogState : int
{
    kTrying,
    kProceeding,
    kEarly,
    kConfirmed,
    kTerminated
};

// One end of a dialog: who, and where to reach it.
struct DialogParty
{
    std::string identity;  // URI; empty: not told
    std::string displayName;
    std::string target;     // URI; empty: not told
    bool rendering = true;  // false: it has put the call on hold ("+sip.rendering" of RFC 4235 section 5)
};

// One call, seen from the party that is watched.
struct DialogEntry
{
    std::string id;
    DialogId dialog;         // tags may be empty
    bool recipient = false;  // the watched party is called; false: it calls
    DialogState state = DialogState::kTrying;
    DialogParty local;
    DialogParty remote;
};

struct DialogInfo
{
    std::uint32_t version = 0;
    bool full = true;    // else only what changed
    std::string entity;  // URI of the watched party
    std::vector<DialogEntry> dialogs;

    // Nothing for what is no dialog-info document. Unknown elements and states are passed over.
    static std::optional<DialogInfo> parse(std::string const& document);
    std::string format() const;
};

struct MessageCounts
{
    unsigned fresh = 0;
    unsigned old = 0;
    unsigned urgentFresh = 0;
    unsigned urgentOld = 0;

    bool operator==(MessageCounts const&) const = default;
};

struct MessageSummary
{
    bool waiting = false;
    std::string account;  // URI; empty: not told
    MessageCounts voice;

    // Nothing without a Messages-Waiting line.
    static std::optional<MessageSummary> parse(std::string const& document);
    std::string format() const;
};

}  // namespace telephone::sip
