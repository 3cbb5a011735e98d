// The documents of two event packages as values: dialog-info (RFC 4235), the calls of a party, and
// simple-message-summary (RFC 3842), its waiting messages. Pure functions of their input; any thread.
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

// One end of a dialog.
struct DialogParty
{
    std::string identity;  // URI; empty: not given
    std::string displayName;
    std::string target;     // URI; empty: not given
    bool rendering = true;  // false: the party holds the call ("+sip.rendering", RFC 4235 section 5)
};

// One call of the watched party.
struct DialogEntry
{
    std::string id;
    DialogId dialog;         // tags may be empty
    bool recipient = false;  // the watched party is the called one
    DialogState state = DialogState::kTrying;
    DialogParty local;
    DialogParty remote;
    int appearance = 0;      // of a shared line (RFC 7463), from 1; 0: not given
    bool exclusive = false;  // private: other telephones cannot take it over or join it (RFC 7463)
};

struct DialogInfo
{
    std::uint32_t version = 0;
    bool full = true;    // false: only the changed dialogs
    std::string entity;  // URI of the watched party
    std::vector<DialogEntry> dialogs;

    // Nothing if the document is malformed. Unknown elements and dialogs in unknown states are skipped.
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
    std::string account;  // URI; empty: not given
    MessageCounts voice;

    // Nothing if the Messages-Waiting line is missing.
    static std::optional<MessageSummary> parse(std::string const& document);
    std::string format() const;
};

}  // namespace telephone::sip
