#include "telephone/display/ElementWords.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include <spdlog/fmt/fmt.h>
#include <spdlog/fmt/ranges.h>

#include "CommunicationsServiceRequests.h"
#include "telephone/display/Parties.h"
#include "telephone/display/SafeText.h"
#include "telephone/display/XmlWords.h"
#include "telephone/protocol/Vocabulary.h"

namespace telephone {

namespace {

enum class ElementForm
{
    column,         // not here: it has a column of its own
    name,           // not here: it stands with its address
    what,           // its word is what happened
    flagAsWhat,     // the same of a flag: label, or other
    caller,         // the party that a call comes from, first of all; "unknown" for none
    party,          // the far end, first of all
    labelledParty,  // another party
    word,           // its word, not if it is `other`; the label only with a number that has no word
    labelledWord,   // its word with the label
    number,         // with the label, not if it is 0
    flag,           // the label if it is true, or other
    text,           // in quotation marks, with the label
    list,           // the label, with an s for several, and its items
    body,           // its first element and its size
    conference,     // the parties that the document names
};

struct ElementRow
{
    std::string_view message;  // method of the event, or of the request that is answered; empty: all other events
    std::string_view tag;
    ElementForm form;
    std::string_view label;  // {}: its place
    std::string_view other;  // for a party the tag of its name; see ElementForm
};

using F = ElementForm;

// clang-format off
constexpr ElementRow kElementRows[] = {
    {"CallStateChangeEvent", "CallState",                F::what,          "",                 ""},
    {"CallStateChangeEvent", "Reason",                   F::word,          "reason {}",        ""},
    {"CallStateChangeEvent", "SendOptions",              F::word,          "digits {}",        ""},
    {"CallStateChangeEvent", "GPUCLG",                   F::labelledParty, "caller {}",        "GPUCLGName"},
    {"CallStateChangeEvent", "GPUCLGName",               F::name,          "",                 ""},
    {"CallStateChangeEvent", "GPUCLD",                   F::labelledParty, "called {}",        "GPUCLDName"},
    {"CallStateChangeEvent", "GPUCLDName",               F::name,          "",                 ""},
    {"CallStateChangeEvent", "PreemptionCause",          F::labelledWord,  "preempted: {}",    ""},
    {"CallStateChangeEvent", "PreemptionText",           F::text,          "{}",               ""},
    {"CallStateChangeEvent", "CallBackFearureAvailable", F::flag,          "call-back possible", ""},

    {"RegistrationStateChangeEvent", "Registered",         F::flagAsWhat, "registered",        "not registered"},
    {"RegistrationStateChangeEvent", "RegistrationResult", F::word,       "result {}",         "registered"},

    {"IncomingCallEvent", "URI",                         F::caller, "{}",               "Name"},
    {"IncomingCallEvent", "AlertInformation_AlertURI",   F::text,   "ring tone {}",     ""},
    {"IncomingCallEvent", "AlertInformation_InfoParam",  F::text,   "ringing {}",       ""},
    {"IncomingCallEvent", "AlertInformation_AutoAnswer", F::flag,   "to be answered automatically", ""},
    {"IncomingCallEvent", "CallType",                    F::word,   "type {}",          "unknown"},
    {"IncomingCallEvent", "AICSZIPAutoAnswer",           F::flag,   "to be answered automatically", ""},
    {"IncomingCallEvent", "IsVideoCall",                 F::flag,   "video",            ""},

    {"CallRetrievedEvent",  "ConnectedToMediaServer", F::flag, "at a media server", ""},
    {"FeatureSuccessEvent", "Feature",                F::word, "feature {}",        ""},
    {"FeatureFailedEvent",  "Feature",                F::word, "feature {}",        ""},
    {"FeatureFailedEvent",  "FeatureFailure",         F::word, "failure {}",        ""},

    {"RemoteEndpointDetailsChangedEvent", "exitConf",  F::flag, "out of the conference", ""},
    {"RemoteEndpointDetailsChangedEvent", "jointCall", F::flag, "in a conference",       ""},

    {"IncomingCallMissedEvent", "URI",    F::caller, "{}",        "Name"},
    {"IncomingCallMissedEvent", "Reason", F::word,   "reason {}", ""},

    {"CallForwardedEvent", "CallingParty",     F::caller,        "{}",        "CallingPartyName"},
    {"CallForwardedEvent", "CallingPartyName", F::name,          "",          ""},
    {"CallForwardedEvent", "NewDestination",   F::labelledParty, "to {}",     ""},
    {"CallForwardedEvent", "Reason",           F::word,          "reason {}", ""},

    {"IncomingAssociatedCallEvent", "CurrentCallID", F::column, "",   ""},
    {"IncomingAssociatedCallEvent", "NewCallID",     F::number, "{}", ""},

    {"messageWaitingEvent", "type",                F::word,          "type {}",       "voice"},
    {"messageWaitingEvent", "new_messages",        F::number,        "{} new",        ""},
    {"messageWaitingEvent", "old_messages",        F::number,        "{} old",        ""},
    {"messageWaitingEvent", "new_urgent_messages", F::number,        "{} new urgent", ""},
    {"messageWaitingEvent", "old_urgent_messages", F::number,        "{} old urgent", ""},
    {"messageWaitingEvent", "return_type",         F::word,          "return type {}", "voice mail"},
    {"messageWaitingEvent", "avail_info",          F::labelledWord,  "{} known",      "counts"},
    {"messageWaitingEvent", "messages_waiting",    F::word,          "waiting {}",    ""},
    {"messageWaitingEvent", "voiceMailNumber",     F::labelledParty, "number {}",     ""},

    {"DoNotDisturbEvent", "doNotDisturbOn", F::flag, "on", "off"},
    {"AgentStateEvent",   "agentState",     F::word, "{}", ""},

    {"securityStatusChanged", "securityStatus",       F::word, "{}",             ""},
    {"securityStatusChanged", "CallIDsRecorded",      F::list, "recorded: call", ""},
    {"securityStatusChanged", "CallLineURIsRecorded", F::list, "line",           ""},
    {"callRecordingStatusEvent", "callRecorded",      F::word, "{}",             ""},

    {"preemptionStatusChanged", "priority", F::word,         "{}",        ""},
    {"preemptionStatusChanged", "cause",    F::labelledWord, "cause {}",  ""},
    {"preemptionStatusChanged", "reason",   F::text,         "{}",        ""},

    {"impactLevelChanged", "ILCallLevel",  F::number, "call {}",  ""},
    {"impactLevelChanged", "ILLocalLevel", F::number, "local {}", ""},

    {"systemStatusEvent",        "status",     F::word,       "{}",      ""},
    {"systemStatusEvent",        "statusInfo", F::text,       "{}",      ""},
    {"serverFeatureStatusEvent", "status",     F::word,       "{}",      ""},
    {"b2buaCSTAResponse",        "success",    F::flag,       "success", "failure"},
    {"b2buaCSTAResponse",        "Body",       F::body,       "",        ""},
    {"b2buaCSTAEventOrRequest",  "Body",       F::body,       "",        ""},
    {"conferenceStatusEvent",    "XMLContent", F::conference, "",        ""},

    {"callCompletionEvent", "CallCompletionType",         F::word, "type {}",       ""},
    {"callCompletionEvent", "CallCompletionState",        F::word, "state {}",      ""},
    {"callCompletionEvent", "DisplayOutcomeCallUI",       F::flag, "outcome shown", ""},
    {"callCompletionFailedEvent", "CallCompletionFailureType", F::word, "type {}",  ""},

    {"bluetoothAudioStatusChanged", "AudioEnabled",  F::flag, "audio on",        "audio off"},
    {"bluetoothAudioStatusChanged", "AudioGateway",  F::flag, "as gateway",      ""},
    {"bluetoothAudioStatusChanged", "InBandRinging", F::flag, "in-band ringing", ""},

    // Of several events.
    {"", "LineID",           F::column,        "",                 ""},
    {"", "lineURI",          F::column,        "",                 ""},
    {"", "deviceId",         F::column,        "",                 ""},
    {"", "CallID",           F::column,        "",                 ""},
    {"", "callId",           F::column,        "",                 ""},
    {"", "URI",              F::party,         "{}",               "Name"},
    {"", "Name",             F::name,          "",                 ""},
    {"", "DiversionURI",     F::labelledParty, "diverted by {}",   "DiversionName"},
    {"", "DiversionName",    F::name,          "",                 ""},
    {"", "DiversionReason",  F::labelledWord,  "diversion reason {}", ""},
    {"", "ResourcePriority", F::labelledWord,  "precedence {}",    ""},
    {"", "ILCallLevel",      F::number,        "call level {}",    ""},
    {"", "ILLocalLevel",     F::number,        "local level {}",   ""},

    // Answers.
    {"GetServiceState",         "value", F::word, "{}",  ""},
    {"GetDoNotDisturb",         "value", F::flag, "yes", "no"},
    {"GetMicrophoneMute",       "value", F::flag, "yes", "no"},
    {"getManualHoldIndication", "value", F::flag, "yes", "no"},

    {"GetMessageWaitingIndicator", "Type",             F::word,          "type {}",        "voice"},
    {"GetMessageWaitingIndicator", "newMsgs",          F::number,        "{} new",         ""},
    {"GetMessageWaitingIndicator", "oldMsgs",          F::number,        "{} old",         ""},
    {"GetMessageWaitingIndicator", "newUrgMsgs",       F::number,        "{} new urgent",  ""},
    {"GetMessageWaitingIndicator", "oldUrgMsgs",       F::number,        "{} old urgent",  ""},
    {"GetMessageWaitingIndicator", "return_type",      F::word,          "return type {}", "voice mail"},
    {"GetMessageWaitingIndicator", "available_info",   F::labelledWord,  "{} known",       "counts"},
    {"GetMessageWaitingIndicator", "messages_waiting", F::word,          "waiting {}",     ""},
    {"GetMessageWaitingIndicator", "voiceMailNumber",  F::labelledParty, "number {}",      ""},
    {"GetMessageWaitingIndicator", "func_return_val",  F::what,          "",               ""},

    {"getForwardingConfiguration", "sfiResult",     F::what,          "",         ""},
    {"getForwardingConfiguration", "status",        F::flag,          "on",       "off"},
    {"getForwardingConfiguration", "uri",           F::labelledParty, "to {}",    ""},
    {"getForwardingConfiguration", "cfnrRingCount", F::number,        "rings {}", ""},
};
// clang-format on

// A row of the message itself, else the one that all events share. Null: none.
constexpr ElementRow const* findElementRow(std::string_view message, std::string_view tag)
{
    ElementRow const* shared = nullptr;
    for (auto const& row : kElementRows) {
        if (row.tag == tag && row.message == message) {
            return &row;
        }
        if (row.tag == tag && row.message.empty()) {
            shared = &row;
        }
    }
    return shared;
}

constexpr bool needsWords(ElementForm form)
{
    return form == F::what || form == F::word || form == F::labelledWord;
}

constexpr bool haveRows(std::string_view message, EventElements const& elements)
{
    return std::all_of(elements.begin(), elements.end(), [message](EventElement const& element) {
        ElementRow const* const row = findElementRow(message, element.tag);
        return row != nullptr && (element.values != nullptr || !needsWords(row->form));
    });
}

constexpr bool isComplete()
{
    return std::all_of(std::begin(kEventDescriptions), std::end(kEventDescriptions),
                       [](auto const& event) { return haveRows(event.method, event.elements); }) &&
           std::all_of(std::begin(kRequestDescriptions), std::end(kRequestDescriptions),
                       [](auto const& request) { return haveRows(request.name, request.answerElements); });
}
static_assert(isComplete(),
              "an element of an event or answer has no row, or its row wants words that it does not have");

constexpr bool hasElement(ElementRow const& row, std::string_view message, EventElements const& elements)
{
    return (row.message.empty() || row.message == message) &&
           std::any_of(elements.begin(), elements.end(),
                       [&row](EventElement const& element) { return element.tag == row.tag; });
}

constexpr bool isOfUse(ElementRow const& row)
{
    return std::any_of(std::begin(kEventDescriptions), std::end(kEventDescriptions),
                       [&row](auto const& event) { return hasElement(row, event.method, event.elements); }) ||
           std::any_of(std::begin(kRequestDescriptions), std::end(kRequestDescriptions),
                       [&row](auto const& request) { return hasElement(row, request.name, request.answerElements); });
}
static_assert(std::all_of(std::begin(kElementRows), std::end(kElementRows), isOfUse),
              "a row is for an element that no event or answer has");

// The name of a value; one without a name, "4?", is written as one word.
std::string wordOf(EventValue const& value)
{
    std::string const name = nameOfValue(*value.element->values, value.value);
    return value.element->values->findName(name) != nullptr ? name : safeWord(name);
}

std::string wordText(ElementRow const& row, EventValue const& value)
{
    std::string const word = wordOf(value);
    bool const hasWord = value.element->values->findName(word) != nullptr;
    if (hasWord && (word == "none" || word == "normal" || word == row.other)) {
        return {};
    }
    bool const isBare = hasWord && row.form == F::word;
    return isBare ? word : withValue(row.label, word);
}

// The items of a list in the framework's serialised form: separated by commas, a comma in an item after a backslash.
std::vector<std::string> itemsOf(std::string_view list)
{
    std::vector<std::string> items(1);
    for (std::size_t index = 0; index < list.size(); ++index) {
        if (list[index] == ',') {
            items.emplace_back();
            continue;
        }
        bool const isEscape = list[index] == '\\' && index + 1 < list.size();
        index += isEscape ? 1 : 0;
        items.back() += list[index];
    }
    return items;
}

std::string listText(ElementRow const& row, std::string_view list)
{
    if (list.empty()) {
        return {};
    }
    std::vector<std::string> items = itemsOf(list);
    std::transform(items.begin(), items.end(), items.begin(), safeWord);
    std::string const last = std::move(items.back());
    items.pop_back();
    return items.empty() ? fmt::format("{} {}", row.label, last)
                         : fmt::format("{}s {} and {}", row.label, fmt::join(items, ", "), last);
}

class ElementWriter
{
public:
    ElementWriter(std::string_view message, std::vector<EventValue> const& values, DisplayOptions const& options)
        : message_(message)
        , values_(values)
        , options_(options)
    {}

    MessageWords write(std::string_view name)
    {
        words_.what = name;
        for (EventValue const& each : values_) {
            if (ElementRow const* const row = findElementRow(message_, each.element->tag)) {
                write(*row, each);
            }
        }
        std::erase(words_.details, words_.what);
        return std::move(words_);
    }

private:
    void write(ElementRow const& row, EventValue const& value)
    {
        if (row.form == F::what || row.form == F::flagAsWhat) {
            words_.what = row.form == F::what ? wordOf(value) : std::string(isSet(value.value) ? row.label : row.other);
            return;
        }
        std::string detail = textOf(row, value);
        auto& details = words_.details;
        if (row.form == F::party || row.form == F::caller) {
            words_.party = std::move(detail);
        } else if (!detail.empty() && std::find(details.begin(), details.end(), detail) == details.end()) {
            details.push_back(std::move(detail));
        }
    }

    [[nodiscard]] std::string textOf(ElementRow const& row, EventValue const& value) const
    {
        std::string_view const text = value.value;
        switch (row.form) {
        case F::caller:
            return text.empty() && valueOf(row.other).empty() ? "unknown" : party(row, text);
        case F::party:
        case F::labelledParty:
            return party(row, text);
        case F::word:
        case F::labelledWord:
            return text.empty() ? "" : wordText(row, value);
        case F::number:
            return text == "0" || text.empty() ? "" : withValue(row.label, safeWord(text));
        case F::flag:
            return std::string(isSet(text) ? row.label : row.other);
        case F::text:
            return text.empty() ? "" : withValue(row.label, quotedText(text));
        case F::list:
            return listText(row, text);
        case F::body:
            return text.empty() ? "" : bodyWords(text);
        case F::conference:
            return conferenceWords(text, options_);
        case F::column:
        case F::name:
        case F::what:
        case F::flagAsWhat:
            break;
        }
        return {};
    }

    [[nodiscard]] std::string party(ElementRow const& row, std::string_view address) const
    {
        std::string const text = partyText(address, valueOf(row.other), options_);
        return text.empty() ? text : withValue(row.label, text);
    }

    [[nodiscard]] std::string_view valueOf(std::string_view tag) const
    {
        auto const found = std::find_if(values_.begin(), values_.end(),
                                        [tag](EventValue const& each) { return each.element->tag == tag; });
        return found == values_.end() ? std::string_view() : found->value;
    }

    static bool isSet(std::string_view flag) { return flag == "1" || flag == "true"; }

    std::string_view message_;
    std::vector<EventValue> const& values_;
    DisplayOptions const& options_;
    MessageWords words_;
};

std::string farEndOf(EventText const& event, DisplayOptions const& options)
{
    for (EventValue const& each : event.values) {
        ElementRow const* const row = findElementRow(event.description->method, each.element->tag);
        if (row != nullptr && (row->form == F::party || row->form == F::caller)) {
            return addressText(each.value, options);
        }
    }
    return {};
}

}  // namespace

std::string withValue(std::string_view label, std::string_view value)
{
    auto const place = label.find("{}");
    return place == std::string_view::npos ? std::string(label) : std::string(label).replace(place, 2, value);
}

std::string MessageWords::detailText() const
{
    std::string const separator = party.empty() || details.empty() ? "" : ", ";
    return fmt::format("{}{}{}", party, separator, fmt::join(details, ", "));
}

MessageWords elementWords(std::string_view message, std::string_view name, std::vector<EventValue> const& values,
                          DisplayOptions const& options)
{
    return ElementWriter(message, values, options).write(name);
}

EventWords eventWords(EventText const& event, DisplayOptions const& options)
{
    // The call that IncomingAssociatedCallEvent is about.
    std::string_view const call = event.call().empty() ? event.value("CurrentCallID") : event.call();
    return {safeWord(event.line()), safeWord(call), farEndOf(event, options),
            elementWords(event.description->method, event.description->name, event.values, options)};
}

std::string eventInWords(std::string_view event, DisplayOptions const& options)
{
    auto const read = readEvent(event);
    if (!read) {
        return safeText(event);
    }
    EventWords const said = eventWords(*read, options);
    std::string const details = said.words.detailText();
    return fmt::format("{}{}{}: {}{}", read->description->method, said.line.empty() ? "" : " " + said.line,
                       said.call.empty() ? "" : " call " + said.call, said.words.what,
                       details.empty() ? "" : ", " + details);
}

}  // namespace telephone
