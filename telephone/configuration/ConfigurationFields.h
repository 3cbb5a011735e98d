// Every key of a configuration file: section, name, the member that it sets, its values and meaning. The reader, its
// messages and docs/configuration.md use these tables.
#pragma once

#include <array>
#include <limits>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "telephone/configuration/Configuration.h"

namespace telephone {

// The types of fields, in the order of FieldMember.
enum class FieldKind
{
    kFlag,
    kInteger,
    kText,
    kTexts,
    kTransport,
    kTextOrTexts,
};

template <typename Section>
using FieldMember = std::variant<bool Section::*, int Section::*, std::string Section::*,
                                 std::vector<std::string> Section::*, Transport Section::*, Texts Section::*>;

template <typename Section>
struct ConfigurationField
{
    std::string_view name;
    FieldMember<Section> member;
    std::string_view meaning;
    // The permitted values, separated by "|". For an integer or a transport, a word stands for its position from 0 and
    // a number for itself.
    std::string_view choices = {};
    int minimum = 0;
    int maximum = std::numeric_limits<int>::max();
};

namespace fields {

constexpr int kHighestPort = 65535;

// clang-format off
inline constexpr auto kPhone = std::to_array<ConfigurationField<Configuration>>({
    {"keyset",              &Configuration::keyset,                 "true: several line keys; false: a telephone of one line"},
});

inline constexpr auto kLine = std::to_array<ConfigurationField<LineConfiguration>>({
    {"id",                  &LineConfiguration::id,                 "how requests and events name the line; required"},
    {"number",              &LineConfiguration::number,             "line number; if missing, its position in the file", {}, 1, 255},
    {"user",                &LineConfiguration::user,               "user part of its address; empty: the id"},
    {"display-name",        &LineConfiguration::displayName,        "shown to the called party"},
    {"description",         &LineConfiguration::description,        "short label for its key"},
    {"auth-user",           &LineConfiguration::authUser,           "user name for authentication; empty: the user"},
    {"password",            &LineConfiguration::password,           "password for authentication; empty: that of the exchange"},
    {"registers",           &LineConfiguration::registers,          "false: peer to peer, calls by address"},
    {"primary",             &LineConfiguration::primary,            "the telephone's main line; if no line is primary, the first is"},
    {"shared-line-type",    &LineConfiguration::sharedLineType,     "how several telephones share it", "none|shared|bridged"},
    {"ring",                &LineConfiguration::ring,               "0: silent, else the kind of ring", {}, 0, 255},
    {"ring-delay",          &LineConfiguration::ringDelay,          "seconds until it rings", {}, 0, 3600},
    {"overview-position",   &LineConfiguration::overviewPosition,   "position in the overview; if missing, its position in the file", {}, 1, 255},
    {"visible-on-overview", &LineConfiguration::visibleOnOverview,  "whether the overview shows it"},
    {"audible-alert",       &LineConfiguration::audibleAlert,       "kind of alert for a second call", {}, 0, 255},
    {"hot-warm",            &LineConfiguration::hotWarmType,        "dials by itself when it is seized: at once (hot) or after a delay (warm)", "none|hot|warm"},
    {"hot-warm-digits",     &LineConfiguration::hotWarmDigits,      "the number that it dials then"},
    {"appearances",         &LineConfiguration::appearances,        "number of appearances, and so of simultaneous calls", {}, 1, 20},
    {"private",             &LineConfiguration::isPrivate,          "other telephones may not join its calls"},
});

inline constexpr auto kKey = std::to_array<ConfigurationField<KeyConfiguration>>({
    {"number",              &KeyConfiguration::number,              "key number; required", {}, 1, 1000},
    {"function",            &KeyConfiguration::function,            "its function; required", "line|dss|blf|forwarding|dnd|hold|mute|headset|messages|toggle|release|preview|ignore|transfer"},
    {"target",              &KeyConfiguration::target,              "line id, or the number of a dss, blf or toggle key"},
    {"label",               &KeyConfiguration::label,               "its label"},
    {"monitor-only",        &KeyConfiguration::monitorOnly,         "a dss key that shows the line's state and does nothing when pressed"},
});

inline constexpr auto kSip = std::to_array<ConfigurationField<SipConfiguration>>({
    {"address",             &SipConfiguration::address,             "IP address of the telephone, or a network interface, which stands for one address of each family"},
    {"port",                &SipConfiguration::port,                "UDP and TCP port, for TLS the next one; 0: any free ones", {}, 0, kHighestPort},
    {"transport",           &SipConfiguration::transport,           "for registrations and calls", "udp|tcp|tls"},
    {"certificate",         &SipConfiguration::certificate,         "PEM file with the telephone's certificate for TLS, followed by those of its authorities; empty: it shows none, and only its server can call it over TLS"},
    {"key",                 &SipConfiguration::key,                 "PEM file with the private key of the certificate"},
    {"keep-alive",          &SipConfiguration::keepAlive,           "seconds between the empty lines that keep a TCP or TLS connection to the server open, at most; 0: none", {}, 0, 3600},
    {"user-agent",          &SipConfiguration::userAgent,           "its name in SIP messages"},
});

inline constexpr auto kDns = std::to_array<ConfigurationField<DnsConfiguration>>({
    {"servers",             &DnsConfiguration::servers,             "DNS servers for the names of call servers, as address or address:port; empty: those of the system"},
});

inline constexpr auto kServer = std::to_array<ConfigurationField<ServerConfiguration>>({
    {"registrar",           &ServerConfiguration::registrar,        "sip:host or sip:host:port, by name or address, or sips: for TLS; empty: the built-in exchange"},
    {"domain",              &ServerConfiguration::domain,           "domain of the lines' addresses; empty: the registrar's host"},
    {"expires",             &ServerConfiguration::expires,          "seconds until a registration expires", {}, 10, 86400},
    {"type",                &ServerConfiguration::type,             "0 generic, 1 with pickup, 2 with a no-reply delay set on the phone, 7 with bridged appearances", {}, 0, 255},
    {"directed-pickup",     &ServerConfiguration::directedPickup,   "address to which the number to pick up is appended; empty: the exchange's"},
    {"group-pickup",        &ServerConfiguration::groupPickup,      "number of the group pickup; empty: the exchange's"},
    {"voice-mail",          &ServerConfiguration::voiceMail,        "number of the mailbox"},
    {"message-waiting",     &ServerConfiguration::messageWaiting,   "subscribe to the mailbox"},
    {"server-features",     &ServerConfiguration::serverFeatures,   "the server controls forwarding and do-not-disturb"},
    {"forwarding-privacy",  &ServerConfiguration::forwardingPrivacy, "a forwarding rule that is switched off loses its destination"},
});

inline constexpr auto kExchange = std::to_array<ConfigurationField<ExchangeConfiguration>>({
    {"enabled",             &ExchangeConfiguration::enabled,        "whether the built-in exchange runs"},
    {"port",                &ExchangeConfiguration::port,           "UDP and TCP port, for TLS the next one; 0: any free ones", {}, 0, kHighestPort},
    {"certificate",         &ExchangeConfiguration::certificate,    "PEM file with its certificate: it listens for TLS, too; empty: it does not"},
    {"key",                 &ExchangeConfiguration::key,            "PEM file with the private key of the certificate"},
    {"realm",               &ExchangeConfiguration::realm,          "realm for authentication"},
    {"digests",             &ExchangeConfiguration::digests,        "algorithms that it offers for authentication", "sha-256-and-md5|sha-256|md5"},
    {"password",            &ExchangeConfiguration::password,       "password of every number without one of its own"},
});

inline constexpr auto kExchangeNumber = std::to_array<ConfigurationField<ExchangeNumberConfiguration>>({
    {"number",              &ExchangeNumberConfiguration::number,   "the number; required"},
    {"name",                &ExchangeNumberConfiguration::name,     "shown to the other party"},
    {"does",                &ExchangeNumberConfiguration::does,     "its steps in a call ([exchange.md](exchange.md)), separated by commas or each a text of its own; empty: a telephone registers under the number"},
    {"forward-always",      &ExchangeNumberConfiguration::forwardAlways, "number to which its calls go; empty: they stay"},
    {"forward-on-busy",     &ExchangeNumberConfiguration::forwardOnBusy, "number to which a call goes at its step busy"},
    {"forward-on-no-reply", &ExchangeNumberConfiguration::forwardOnNoReply, "number to which a call goes that it does not answer in time"},
    {"no-reply-after",      &ExchangeNumberConfiguration::noReplyAfter, "that time, in seconds", {}, 1, 3600},
    {"new-messages",        &ExchangeNumberConfiguration::newMessages, "new messages in its mailbox", {}, 0, 9999},
    {"old-messages",        &ExchangeNumberConfiguration::oldMessages, "old messages in its mailbox", {}, 0, 9999},
    {"pickup-group",        &ExchangeNumberConfiguration::pickupGroup, "a group pickup takes calls of the same group only; empty: of any number"},
    {"lamp",                &ExchangeNumberConfiguration::lamp,     "what its watchers see while it has no call; from-steps: busy if its first step is busy, else idle", "from-steps|idle|ringing|busy|holding"},
    {"appearances",         &ExchangeNumberConfiguration::appearances, "of a line that telephones share; if missing, those of the shared line with this number", {}, 1, 20},
});

inline constexpr auto kMedia = std::to_array<ConfigurationField<MediaConfiguration>>({
    {"source",              &MediaConfiguration::source,            "audio that the telephone sends: tone, silence, device (what the microphone hears), or a WAV file"},
    {"microphone",          &MediaConfiguration::microphone,        "with the source device: its name, as telephone devices lists it; empty: the system's default"},
    {"loudspeaker",         &MediaConfiguration::loudspeaker,       "the same, for what is heard"},
    {"heard",               &MediaConfiguration::heard,             "WAV file for all received audio; empty: none"},
    {"encryption",          &MediaConfiguration::encryption,        "of the audio of calls (SRTP, [audio.md](audio.md)); optional: where the far end does it, too; required: a call without it fails", "none|optional|required"},
    {"keys-without-tls",    &MediaConfiguration::keysWithoutTls,    "its keys may travel in SIP messages that others can read, over UDP or TCP; false: calls without TLS are not encrypted"},
});

inline constexpr auto kCalls = std::to_array<ConfigurationField<CallConfiguration>>({
    {"maximum",             &CallConfiguration::maximum,            "calls at once", {}, 1, 10000},
    {"automatic-ringing",   &CallConfiguration::automaticRinging,   "an offered call rings before an application accepts it"},
    {"do-not-disturb-status", &CallConfiguration::doNotDisturbStatus, "answer to a call while do-not-disturb is on: 480 or 486", "480|486"},
    {"dial-restriction",    &CallConfiguration::dialRestriction,    "4: no outgoing calls", {}, 0, 4},
    {"reinvite-timeout",    &CallConfiguration::reinviteTimeout,    "seconds until an unanswered re-INVITE counts as failed", {}, 1, 64},
    {"session-expires",     &CallConfiguration::sessionExpires,     "seconds within which a call is refreshed, else it ends (RFC 4028), 90 or more; 0: never", {}, 0, 86400},
    {"reliable-responses",  &CallConfiguration::reliableResponses,  "responses before the answer are acknowledged with PRACK (RFC 3262): never, where the far end supports it, or always", "none|supported|required"},
    {"audio-timeout",       &CallConfiguration::audioTimeout,       "seconds without audio from the far end after which a call ends that is not on hold; 0: never", {}, 0, 86400},
    {"call-backs",          &CallConfiguration::callBacks,          "call-backs that may be pending at once", {}, 0, 100},
    {"permitted-numbers",   &CallConfiguration::permittedNumbers,   "may be dialled while the telephone is locked; a trailing * stands for any digits"},
    {"emergency-numbers",   &CallConfiguration::emergencyNumbers,   "always permitted, and marked as emergency calls"},
});

inline constexpr auto kApplications = std::to_array<ConfigurationField<ApplicationSocketConfiguration>>({
    {"path",                &ApplicationSocketConfiguration::path,  "UNIX socket for applications; empty: the default path (docs/protocol.md)"},
    {"maximum",             &ApplicationSocketConfiguration::maximumApplications, "applications at once", {}, 1, 10000},
    {"queued-messages",     &ApplicationSocketConfiguration::queuedMessages, "messages kept for an application that does not read", {}, 1, 10000000},
    {"kept-events",         &ApplicationSocketConfiguration::keptEvents, "events kept for applications that come back", {}, 1, 10000000},
});

inline constexpr auto kHttp = std::to_array<ConfigurationField<HttpConfiguration>>({
    {"address",             &HttpConfiguration::address,            "host:port for HTTP (docs/http.md), port 0: any free one; empty: off"},
    {"certificate",         &HttpConfiguration::certificate,        "PEM file for HTTPS; an address other than this machine's own needs it"},
    {"key",                 &HttpConfiguration::key,                "PEM file with the private key of the certificate"},
});

inline constexpr auto kStore = std::to_array<ConfigurationField<StoreConfiguration>>({
    {"path",                &StoreConfiguration::path,              "SQLite file of the settings; empty: in memory, for one run"},
});

inline constexpr auto kRecording = std::to_array<ConfigurationField<RecordingConfiguration>>({
    {"folder",              &RecordingConfiguration::folder,        "for the WAV files of recorded calls; empty: calls are not recorded"},
});

inline constexpr auto kPush = std::to_array<ConfigurationField<PushConfiguration>>({
    {"address",             &PushConfiguration::address,            "http://host:port/path that receives push requests; empty: off"},
});

inline constexpr auto kLog = std::to_array<ConfigurationField<LogConfiguration>>({
    {"level",               &LogConfiguration::level,               "0 off, 1 fatal, 2 failures, 3 refusals, 4 news, 5 operations, 6 requests and SIP messages", {}, 0, 6},
    {"file",                &LogConfiguration::file,                "empty: standard error"},
});

inline constexpr auto kFault = std::to_array<ConfigurationField<FaultConfiguration>>({
    {"what",                &FaultConfiguration::what,              "name and arguments of a fault ([faults.md](faults.md)); required"},
    {"at",                  &FaultConfiguration::at,                "begins so many seconds after the start: \"3s\""},
    {"on",                  &FaultConfiguration::on,                "begins at an event: \"CallHeldEvent CallID=1\""},
    {"after",               &FaultConfiguration::after,             "begins after so many requests; 0: not given", {}, 0, 1000000},
    {"for",                 &FaultConfiguration::lasts,             "ends so many seconds later; empty: when it has done what it can"},
});

inline constexpr auto kCertificates = std::to_array<ConfigurationField<CertificateConfiguration>>({
    {"folder",              &CertificateConfiguration::folder,      "trusted authorities: HOST.pem for an address, authorities.pem for all others; empty: none"},
});

// The words are those of sip::kSenderChoices.
inline constexpr std::string_view kSenders = "default|server|authenticated|anybody";
inline constexpr auto kPermissions = std::to_array<ConfigurationField<PermissionsConfiguration>>({
    {"calls",               &PermissionsConfiguration::calls,       "who may call a line ([security.md](security.md))", kSenders},
    {"take-overs",          &PermissionsConfiguration::takeOvers,   "who may take over or join a call of a line", kSenders},
    {"subscriptions",       &PermissionsConfiguration::subscriptions, "who may watch the calls of a line", kSenders},
    {"notifications",       &PermissionsConfiguration::notifications, "who may set the waiting messages of a line without a subscription", kSenders},
    {"control",             &PermissionsConfiguration::control,     "who may send CSTA to the applications", kSenders},
    {"transfers",           &PermissionsConfiguration::transfers,   "who may let a line call another party", kSenders},
});

inline constexpr auto kLimits = std::to_array<ConfigurationField<LimitsConfiguration>>({
    {"requests",            &LimitsConfiguration::requests,         "SIP requests a second from one address, ten times as many from a line's server and within calls; others are dropped; 0: any number", {}, 0, 100000},
    {"transactions",        &LimitsConfiguration::transactions,     "requests outside calls in 32 s; others are answered with 503; 0: any number", {}, 0, 1000000},
    {"subscriptions",       &LimitsConfiguration::subscriptions,    "watchers of the lines at once; others are answered with 503; 0: any number", {}, 0, 100000},
    {"connections",         &LimitsConfiguration::connections,      "TCP and TLS connections that others have open to the telephone; more are closed at once; 0: any number", {}, 0, 8000},
    {"connections-per-address", &LimitsConfiguration::sourceConnections, "of these, from one address; 0: any number", {}, 0, 8000},
});
// clang-format on

}  // namespace fields

// Calls `use` for each section of the file with its name, its member of Configuration and its fields. A section within
// another has the name of both: "exchange.number".
template <typename Use>
void forEachSection(Use use)
{
    use("line", &Configuration::lines, fields::kLine);
    use("key", &Configuration::keys, fields::kKey);
    use("sip", &Configuration::sip, fields::kSip);
    use("dns", &Configuration::dns, fields::kDns);
    use("server", &Configuration::server, fields::kServer);
    use("exchange", &Configuration::exchange, fields::kExchange);
    use("exchange.number", &Configuration::exchangeNumbers, fields::kExchangeNumber);
    use("media", &Configuration::media, fields::kMedia);
    use("calls", &Configuration::calls, fields::kCalls);
    use("applications", &Configuration::applications, fields::kApplications);
    use("http", &Configuration::http, fields::kHttp);
    use("store", &Configuration::store, fields::kStore);
    use("recording", &Configuration::recording, fields::kRecording);
    use("push", &Configuration::push, fields::kPush);
    use("log", &Configuration::log, fields::kLog);
    use("certificates", &Configuration::certificates, fields::kCertificates);
    use("permissions", &Configuration::permissions, fields::kPermissions);
    use("limits", &Configuration::limits, fields::kLimits);
    use("fault", &Configuration::faults, fields::kFault);
}

// The values that a field takes, in words: "an integer from 0 to 65535", "one of udp, tcp".
std::string expectedValues(FieldKind kind, std::string_view choices, int minimum, int maximum);

template <typename Section>
std::string expectedOf(ConfigurationField<Section> const& field)
{
    return expectedValues(static_cast<FieldKind>(field.member.index()), field.choices, field.minimum, field.maximum);
}

}  // namespace telephone
