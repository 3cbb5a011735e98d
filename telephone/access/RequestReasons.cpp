#include "telephone/access/RequestReasons.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include <spdlog/fmt/fmt.h>

#include "CommunicationsServiceRequests.h"
#include "platform/sfi/SfiTypes.h"
#include "telephone/access/LineNames.h"
#include "telephone/access/RequestCase.h"
#include "telephone/base/Touched.h"
#include "telephone/protocol/Phrases.h"
#include "telephone/protocol/ProtocolCheck.h"

namespace telephone {

namespace {

// --- the rules

using RefusalKinds = unsigned;

template <typename... Kinds>
constexpr RefusalKinds kinds(Kinds... each)
{
    return (0U | ... | (1U << static_cast<unsigned>(each)));
}

struct Rule;

struct Finder
{
    std::string_view finds;                                               // in two words, for the coverage of scripts
    std::string (*reason)(RequestCase const& request, Rule const& rule);  // empty: the rule does not apply
    RefusalKinds explains = 0;  // refusals that say the same less precisely, or follow from it
};

// A rule for one request. What the last three columns mean is up to the finder.
struct Rule
{
    std::string_view request;
    Finder const& finder;
    std::string_view tag;
    std::string_view noun = {};         // what the element names
    std::string_view consequence = {};  // of a wrong value

    [[nodiscard]] constexpr RequestParameter const* parameter() const
    {
        RequestDescription const* const description = findRequestDescription(request);
        if (description == nullptr) {
            return nullptr;
        }
        for (auto const& each : description->parameters) {
            if (each.tag == tag) {
                return &each;
            }
        }
        return nullptr;
    }
};

// "call 2", "calls 2 and 3", "no calls".
std::string counted(std::string const& noun, std::vector<std::string> const& items)
{
    return items.empty()       ? "no " + noun + "s"
           : items.size() == 1 ? noun + " " + items.front()
                               : noun + "s " + listed(items);
}

std::string lacks(RequestCase const& request, Rule const& rule)
{
    return fmt::format("{} lacks {}", request.method(), rule.tag);
}

// --- lines and calls

// The telephone also finds lines by their address.
bool isAddress(std::string_view name)
{
    return name.find_first_of("@:") != std::string_view::npos;
}

std::string unknownLine(RequestCase const& request, Rule const& rule)
{
    auto const name = request.word(rule.tag);
    TelephoneState const& state = request.state();
    if (isAddress(name) || !placeNamed(state, name).empty()) {
        return {};
    }
    return fmt::format("{}; {}", name.empty() ? lacks(request, rule) : fmt::format("there is no line {}", name),
                       linesThatAre(state));
}

// Whether a setting of the named line has an effect.
bool namesLine(RequestCase const& request)
{
    auto const name = request.word("Line");
    TelephoneState const& state = request.state();
    return !state.keyset || isAddress(name) || !placeNamed(state, name).empty();
}

std::string unknownLineOfKeyset(RequestCase const& request, Rule const& rule)
{
    return request.state().keyset ? unknownLine(request, rule) : std::string();
}

// Another line stands in for a missing one.
std::string unknownLineIfNamed(RequestCase const& request, Rule const& rule)
{
    return request.word(rule.tag).empty() ? std::string() : unknownLine(request, rule);
}

struct CallSearch
{
    bool alsoEnded = false;  // those on which a call-back can be set
    std::string_view place;  // the line or appearance they are on; empty: any
};

std::vector<std::string> callIds(TelephoneState const& state, CallSearch const& search)
{
    std::vector<std::string> ids;
    for (auto const& call : state.calls) {
        bool const isThere = search.place.empty() || call.line == search.place || call.place == search.place;
        if (isThere && (search.alsoEnded || !call.over)) {
            ids.push_back(std::to_string(call.id));
        }
    }
    return ids;
}

// "line 4711 has no call 7; it has calls 2 and 3". searched: where the call would have to be; the line that the request
// names is where a person looks for it.
std::string missingCall(RequestCase const& request, Rule const& rule, CallSearch const& searched)
{
    TelephoneState const& state = request.state();
    auto const id = request.number(rule.tag);
    auto const there = callIds(state, searched);
    if (id && std::ranges::find(there, std::to_string(*id)) != there.end()) {
        return {};
    }
    auto const place = placeNamed(state, request.word("Line"));
    auto const onLine = callIds(state, {searched.alsoEnded, place});
    bool const tellsLine = !place.empty() && !onLine.empty();
    std::string const calls = counted("call", tellsLine ? onLine : callIds(state, {searched.alsoEnded, {}}));
    std::string const owner = tellsLine ? fmt::format("line {}", place) : std::string("the telephone");
    if (!id) {
        return fmt::format("{}; {} has {}",
                           request.value(rule.tag)
                               ? fmt::format("{} \"{}\" is not a number", rule.tag, request.word(rule.tag))
                               : lacks(request, rule),
                           owner, calls);
    }
    return place.empty()
               ? fmt::format("there is no call {}; the telephone has {}", *id, calls)
               : fmt::format("line {} has no call {}; {} has {}", place, *id, tellsLine ? "it" : owner, calls);
}

// For requests that succeed whether or not the call exists, and for queries.
std::string unknownCall(RequestCase const& request, Rule const& rule)
{
    return missingCall(request, rule, {});
}

std::string unknownCallIfFailed(RequestCase const& request, Rule const& rule)
{
    return request.failed() ? unknownCall(request, rule) : std::string();
}

std::string unknownCallOfOneLine(RequestCase const& request, Rule const& rule)
{
    return request.state().keyset ? std::string() : unknownCallIfFailed(request, rule);
}

// A keyset looks for the call on the line only.
std::string unknownCallOfLine(RequestCase const& request, Rule const& rule)
{
    TelephoneState const& state = request.state();
    auto const place = state.keyset ? placeNamed(state, request.word("Line")) : std::string_view();
    return missingCall(request, rule, {false, place});
}

// The telephone remembers more calls than the state shows: those that allow no call-back.
std::string unknownAttempt(RequestCase const& request, Rule const& rule)
{
    return request.met(RefusalKind::kNotFound) ? missingCall(request, rule, {true, {}}) : std::string();
}

// --- numbers and words

// "there is no forwarding type 99 (0 to 9)"
std::string outOfRange(RequestCase const& request, Rule const& rule)
{
    auto const& range = rule.parameter()->range;
    if (!request.value(rule.tag)) {
        return fmt::format("{} ({})", lacks(request, rule), rangeText(range));
    }
    auto const number = request.number(rule.tag);
    bool const exists = !number || (*number >= range.least && *number <= range.most);
    return exists ? std::string() : fmt::format("there is no {} {} ({})", rule.noun, *number, rangeText(range));
}

// "there is no lamp "Mute" (Hold and SecondAlert)"
std::string unknownWord(RequestCase const& request, Rule const& rule)
{
    Enumeration const& values = *rule.parameter()->values;
    auto const word = request.word(rule.tag);
    if (values.findWord(word) != nullptr) {
        return {};
    }
    std::vector<std::string> words;
    for (auto const& value : values) {
        words.emplace_back(value.word);
    }
    return fmt::format("{} ({}){}",
                       request.value(rule.tag) ? fmt::format("there is no {} \"{}\"", rule.noun, word)
                                               : lacks(request, rule),
                       listed(words), rule.consequence);
}

// --- what the service decides from the state and the settings

// The service asks the telephone for these only while it checks a new call; anything else is refused by the telephone.
std::string notDialled(RequestCase const& request, Rule const& rule)
{
    if (!request.failed() || !request.reply().refusals.empty()) {
        return {};
    }
    TelephoneState const& state = request.state();
    auto const number = request.word(rule.tag);
    return state.barred
               ? fmt::format("\"{}\" cannot be dialled: outgoing calls are barred (dial-restriction-mode)", number)
           : state.locked ? fmt::format("\"{}\" cannot be dialled while the telephone is locked", number)
                          : std::string();
}

std::string ringsOnKeysetOnly(RequestCase const& request, Rule const& rule)
{
    return !request.flag(rule.tag) || request.state().keyset
               ? std::string()
               : std::string("AcceptCall without AutoAnswer 0 does nothing on a telephone of one line");
}

std::string switchedOff(RequestCase const& request, Rule const& rule)
{
    return request.failed() ? std::string(rule.consequence) : std::string();
}

std::string noAgent(RequestCase const& request, Rule const& rule)
{
    bool const exists = rule.parameter()->values->findWord(request.word(rule.tag)) != nullptr;
    return exists ? switchedOff(request, rule) : std::string();
}

std::string noPickupNumber(RequestCase const& request, Rule const& rule)
{
    if (!request.failed() || !request.reply().refusals.empty() || request.flag("BLFPickup")) {
        return {};
    }
    return request.word(rule.tag).empty()
               ? fmt::format("{} names no number to pick up", request.method())
               : std::string(
                     "no number for directed pickup is configured (server.directed-pickup); BLFPickup 1 needs none");
}

std::string unknownCounts(RequestCase const& request, Rule const& rule)
{
    bool const unknown = request.reply().answer && request.reply().answer->starts_with("<Type>0</Type>");
    return unknown ? std::string(rule.consequence) : std::string();
}

std::string noBody(RequestCase const& request, Rule const&)
{
    bool const sent = !request.failed() && request.reply().refusals.empty();
    return sent && request.text().find("</Line>") == std::string_view::npos
               ? fmt::format("{} has no </Line>: the request itself, without its first six characters, was sent",
                             request.method())
               : std::string();
}

// --- forwarding

// The rule was set, but has nowhere to send calls to. An explicitly empty destination is one that was meant.
std::string noDestination(RequestCase const& request, Rule const& rule)
{
    auto const type = request.number(rule.tag);
    bool const isSet = request.succeeded() && request.reply().refusals.empty() && type &&
                       *type >= rule.parameter()->range.least && *type <= rule.parameter()->range.most;
    if (!isSet || !request.word("uri").empty() || !namesLine(request)) {
        return {};
    }
    if (request.flag("status")) {
        return fmt::format("forwarding type {} is on without a destination: it forwards no call", *type);
    }
    return request.value("uri")
               ? std::string()
               : fmt::format("{} lacks uri: forwarding type {} has no destination now", request.method(), *type);
}

std::string ringsNotSet(RequestCase const& request, Rule const& rule)
{
    if (!request.met(RefusalKind::kBadInput) || request.number("fwType") != sfiForwardNoReply) {
        return {};
    }
    return fmt::format("{}: the number of rings stays as it was",
                       request.value(rule.tag) ? fmt::format("{} \"{}\" is out of range ({})", rule.tag,
                                                             request.word(rule.tag), rangeText(rule.parameter()->range))
                                               : lacks(request, rule));
}

// --- the table

constexpr RefusalKinds kAboutLine = kinds(RefusalKind::kNotFound);
constexpr RefusalKinds kAboutCall = kinds(RefusalKind::kNotFound, RefusalKind::kWrongState, RefusalKind::kLimit);
constexpr RefusalKinds kAboutText = kinds(RefusalKind::kBadInput);

// clang-format off
constexpr Finder kLine          {"unknown line",     unknownLineOfKeyset,  kAboutLine};
constexpr Finder kLineIfNamed   {"unknown line",     unknownLineIfNamed,   kAboutLine};
constexpr Finder kCall          {"unknown call",     unknownCallIfFailed,  kAboutCall};
constexpr Finder kCallAnyway    {"unknown call",     unknownCall,          kAboutCall};
constexpr Finder kCallOfOneLine {"unknown call",     unknownCallOfOneLine, kAboutCall};
constexpr Finder kCallOfLine    {"unknown call",     unknownCallOfLine,    kAboutCall};
constexpr Finder kAttempt       {"unknown call",     unknownAttempt,       kAboutCall};
constexpr Finder kRange         {"out of range",     outOfRange,           kAboutText};
constexpr Finder kWord          {"unknown word",     unknownWord,          kAboutText};
constexpr Finder kDialled       {"not permitted",    notDialled};
constexpr Finder kKeysetOnly    {"only on a keyset", ringsOnKeysetOnly};
constexpr Finder kSwitchedOff   {"not available",    switchedOff};
constexpr Finder kAgent         {"no agent",         noAgent};
constexpr Finder kPickupNumber  {"no pickup number", noPickupNumber};
constexpr Finder kCounts        {"counts not known", unknownCounts};
constexpr Finder kBody          {"no body",          noBody};
constexpr Finder kDestination   {"no destination",   noDestination};
constexpr Finder kRings         {"rings not set",    ringsNotSet,          kAboutText};

constexpr Rule kRules[] = {
    {"OutgoingCallMakeRequest",            kLine,          "Line"},
    {"OutgoingCallMakeRequest",            kDialled,       "Destination"},
    {"AcceptCall",                         kCallAnyway,    "CallID"},
    {"AcceptCall",                         kKeysetOnly,    "AutoAnswer"},
    {"AnswerCall",                         kLine,          "Line"},
    {"AnswerCall",                         kCallOfOneLine, "CallID"},
    {"DeflectCall",                        kCall,          "CallID"},
    {"HoldCall",                           kCall,          "CallID"},
    {"RetrieveCall",                       kLine,          "Line"},
    {"RetrieveCall",                       kCallOfLine,    "CallID"},
    {"Consult",                            kLine,          "Line"},
    {"AttendedTransfer",                   kCall,          "heldCall"},
    {"BlindTransfer",                      kCall,          "CallID"},
    {"RefuseCall",                         kCall,          "CallID"},
    {"RefuseCall",                         kRange,         "RefuseCallReason", "refusal reason"},
    {"CallClearRequest",                   kCall,          "CallID"},
    {"SystemStatus",                       kWord,          "SystemStatus",     "view"},
    {"ActivateCallbackRinging",            kAttempt,       "CallID"},
    {"ActivateCallbackBusy",               kAttempt,       "CallID"},
    {"DirectedPickupCall",                 kLine,          "Line"},
    {"DirectedPickupCall",                 kPickupNumber,  "CallToBePickedUp"},
    {"GroupPickupCall",                    kLine,          "Line"},
    {"ConferenceCall",                     kCall,          "heldCall"},
    {"SetServiceState",                    kWord,          "state",            "service state", ": the telephone is out of service now"},
    {"SetDoNotDisturb",                    kLine,          "Line"},
    {"SetDoNotDisturb",                    kSwitchedOff,   "doNotDisturbOn",   "", "do-not-disturb cannot be switched on: the setting call-dnd-enabled is false"},
    {"SetAgentState",                      kLineIfNamed,   "Line"},
    {"SetAgentState",                      kWord,          "agentState",       "agent state"},
    {"SetAgentState",                      kAgent,         "agentState",       "", "the telephone has no agent: while the setting agent-feature-enabled is false, only loggedOff is accepted"},
    {"GenerateDigits",                     kCall,          "activeCall"},
    {"GetDevices",                         kSwitchedOff,   "",                 "", "the telephone has no device: its line does not register"},
    {"getManualHoldIndication",            kCallAnyway,    "CallID"},
    {"SendCSTARequest",                    kLineIfNamed,   "Line"},
    {"SendCSTARequest",                    kBody,          "Body"},
    {"InitializeOrFinalizeServerFeatures", kLineIfNamed,   "Line"},
    {"AlternateCalls",                     kLine,          "Line"},
    {"GetMessageWaitingIndicator",         kCounts,        "",                 "", "the mailbox has not reported: the counts are not known"},
    {"setLampMode",                        kWord,          "lampId",           "lamp"},
    {"setLampMode",                        kRange,         "lampMode",         "lamp mode"},
    {"makeSecurityChangeReinvite",         kCall,          "CallID"},
    {"setForwardingConfiguration",         kLine,          "Line"},
    {"setForwardingConfiguration",         kRange,         "fwType",           "forwarding type"},
    {"setForwardingConfiguration",         kDestination,   "fwType"},
    {"setForwardingConfiguration",         kRings,         "cfnrRingCount"},
    {"getForwardingConfiguration",         kRange,         "fwType",           "forwarding type"},
    {"setIsInServiceInitiatedState",       kLine,          "Line"},
    {"SendUACSTAServerMessage",            kBody,          "Body"},
};

// What a refusal by the store means for a request that succeeds all the same.
constexpr std::pair<std::string_view, std::string_view> kNotKept[] = {
    {"SetDoNotDisturb",            "do-not-disturb stays as it was"},
    {"SetAgentState",              "the agent state stays as it was"},
    {"setForwardingConfiguration", "the forwarding rule was not kept"},
};
// clang-format on

constexpr bool describedWell()
{
    return std::all_of(std::begin(kRules), std::end(kRules), [](Rule const& rule) {
        return rule.tag.empty() ? findRequestDescription(rule.request) != nullptr : rule.parameter() != nullptr;
    });
}
static_assert(describedWell(), "a rule names a request or parameter that does not exist");

// "HoldCall: unknown call"
std::string nameOf(Rule const& rule)
{
    return fmt::format("{}: {}", rule.request, rule.finder.finds);
}

// --- all together

void addOnce(std::vector<std::string>& reasons, std::string reason)
{
    if (std::ranges::find(reasons, reason) == reasons.end()) {
        reasons.push_back(std::move(reason));
    }
}

// Adds the sentences of the rules that apply.
RefusalKinds applyRules(RequestCase const& request, std::vector<std::string>& reasons)
{
    RefusalKinds explained = 0;
    for (auto const& rule : kRules) {
        auto reason = rule.request == request.method() ? rule.finder.reason(request, rule) : std::string();
        if (!reason.empty()) {
            touch(Touched::kReason, nameOf(rule));
            addOnce(reasons, std::move(reason));
            explained |= rule.finder.explains;
        }
    }
    return explained;
}

// A request that succeeded may leave parameters out.
RefusalKinds checkText(RequestCase const& request, std::vector<std::string>& reasons)
{
    auto const checked = request.failed() ? checkRequest(request.text()) : checkForm(request.text());
    if (checked) {
        return 0;
    }
    addOnce(reasons, checked.error().reason);
    return kAboutText;
}

// The settings refuse with these kinds when they cannot be stored.
bool isOfStore(RefusalKind kind)
{
    return (kinds(kind) & kinds(RefusalKind::kLimit, RefusalKind::kUnavailable, RefusalKind::kNotPermitted)) != 0;
}

std::string sentenceOf(Refusal const& refusal, RequestCase const& request)
{
    auto const* const row =
        std::ranges::find(kNotKept, request.method(), &std::pair<std::string_view, std::string_view>::first);
    bool const notKept = row != std::end(kNotKept) && request.succeeded() && isOfStore(refusal.kind);
    return notKept ? fmt::format("{}, because {}", row->second, refusal.reason) : refusal.reason;
}

}  // namespace

std::vector<std::string> reasonRules()
{
    std::vector<std::string> names;
    std::ranges::transform(kRules, std::back_inserter(names), nameOf);
    return names;
}

std::vector<std::string> reasonsOf(std::string_view request, RequestRunner::Reply const& reply,
                                   StateOfRequest const& before)
{
    RequestCase const whole(request, reply, before);
    std::vector<std::string> reasons;
    RefusalKinds explained = applyRules(whole, reasons);
    if (reasons.empty()) {
        explained = checkText(whole, reasons);
    }
    for (auto const& refusal : reply.refusals) {
        if ((kinds(refusal.kind) & explained) == 0) {
            addOnce(reasons, sentenceOf(refusal, whole));
        }
    }
    return reasons;
}

}  // namespace telephone
