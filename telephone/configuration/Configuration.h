// The contents of a configuration file, as plain values with their defaults. ConfigurationFile reads it once at the
// start; it is constant from then on, so every thread may read it.
//
// Without a file the telephone is a keyset of two lines, 4711 and 4712, at its built-in exchange.
#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace telephone {

enum class Transport
{
    kUdp,
    kTcp,
    kTls,
};

// One line, and the account it registers with.
struct LineConfiguration
{
    std::string id;           // the line identifier that requests and events carry, for example 4711
    int number = 0;           // 1 to 255; 0: its position in the file
    std::string user;         // user part of its address; empty: the id
    std::string displayName;  // shown to the called party
    std::string description;  // short label for its key
    std::string authUser;     // empty: the user
    std::string password;
    bool registers = true;  // false: peer to peer, calls by URI
    bool primary = false;
    int sharedLineType = 0;    // LineData::kNotShared, kSharedLine, kBridgedLine
    int ring = 1;              // 0: silent
    int ringDelay = 0;         // seconds
    int overviewPosition = 0;  // 0: its position in the file, from 1
    bool visibleOnOverview = true;
    int audibleAlert = 0;
    int hotWarmType = 0;  // LineData::kHotWarmNone, kHotLine, kWarmLine
    std::string hotWarmDigits;
    int appearances = 1;  // more than 1: a multi-call-appearance line
    bool isPrivate = false;
};

// One key of the layout.
struct KeyConfiguration
{
    int number = 0;  // key number (FPK), from 1
    // line, dss, blf, forwarding, dnd, hold, mute, headset, messages, toggle, release, preview, ignore, transfer
    std::string function;
    std::string target;  // line id, or the number of a dss, blf or toggle key
    std::string label;
    bool monitorOnly = false;  // a dss key that shows the line's state and does nothing when pressed
};

struct SipConfiguration
{
    std::string address = "127.0.0.1";  // or an interface; another only if the file names it
    int port = 0;                       // UDP and TCP; TLS: the next one; 0: any free one
    Transport transport = Transport::kUdp;
    std::string certificate;  // PEM files for TLS; both or neither
    std::string key;
    int keepAlive = 120;  // seconds between keep-alives over TCP and TLS, at most; 0: none
    std::string userAgent = "reference telephone";
};

// Where names of servers are looked up.
struct DnsConfiguration
{
    std::vector<std::string> servers;  // "address" or "address:port"; empty: those of the system
};

// The call server with which lines register.
struct ServerConfiguration
{
    std::string registrar;  // sip:host, sip:host:port or sips:; empty: the built-in exchange, or none if that is off
    std::string domain;     // empty: the registrar's host
    int expires = 300;      // seconds
    int type = 0;           // sfiServerType
    std::string directedPickup;  // address to which the number to pick up is appended; empty: the exchange's
    std::string groupPickup;     // number; empty: the exchange's
    std::string voiceMail;
    bool messageWaiting = true;   // subscribe to message-summary
    bool serverFeatures = false;  // the server controls forwarding and do-not-disturb
    bool forwardingPrivacy = false;
};

struct ExchangeConfiguration
{
    bool enabled = true;
    int port = 0;             // for TLS the next one; 0: any free ones
    std::string certificate;  // PEM files for TLS; both or neither
    std::string key;
    std::string realm = "exchange";
    int digests = 0;                  // 0: SHA-256 and MD5, 1: SHA-256, 2: MD5
    std::string password = "secret";  // of every number without a password of its own
};

// One text, or several.
struct Texts
{
    std::vector<std::string> list;
};

// A number of the exchange.
struct ExchangeNumberConfiguration
{
    std::string number;
    std::string name;  // shown to the other party
    Texts does;        // steps, in one text with commas or each in its own; none: a telephone registers under it
    std::string forwardAlways;
    std::string forwardOnBusy;
    std::string forwardOnNoReply;
    int noReplyAfter = 10;  // seconds
    int newMessages = 0;
    int oldMessages = 0;
    std::string pickupGroup;
    int lamp = 0;         // exchange::NumberLamp
    int appearances = 0;  // of a line that it shares with telephones; 0: those of the line here, if that is shared
};

struct MediaConfiguration
{
    std::string source = "tone";  // tone, silence, device, or a WAV file (8 kHz mono 16 bit, or converted)
    std::string microphone;       // of the source "device"; empty: the system's default
    std::string loudspeaker;
    std::string heard;   // WAV file for all received audio; empty: none
    int encryption = 0;  // sip::Encryption
    bool keysWithoutTls = false;
};

struct CallConfiguration
{
    int maximum = 100;                          // calls at once
    bool automaticRinging = true;               // an offered call rings before an application accepts it
    int doNotDisturbStatus = 486;               // or 480
    int dialRestriction = 0;                    // 4: no outgoing calls
    int reinviteTimeout = 8;                    // seconds until an unanswered re-INVITE counts as failed
    int sessionExpires = 1800;                  // seconds of a session timer (RFC 4028), 90 or more; 0: none
    int reliableResponses = 1;                  // none, supported, required
    int audioTimeout = 60;                      // seconds without audio after which a call ends; 0: never
    int callBacks = 5;                          // pending at once
    std::vector<std::string> permittedNumbers;  // may be dialled while the telephone is locked
    std::vector<std::string> emergencyNumbers;
};

struct ApplicationSocketConfiguration
{
    std::string path;  // empty: in the run folder
    int maximumApplications = 256;
    int queuedMessages = 20000;  // for an application that does not read; then the oldest is dropped
    int keptEvents = 20000;      // for applications that come back
};

struct HttpConfiguration
{
    std::string address;      // host:port, port 0: any free one; empty: off
    std::string certificate;  // PEM files; both or neither, and both for an address that is not a loopback address
    std::string key;
};

struct StoreConfiguration
{
    std::string path;  // SQLite file; empty: in memory, for this run only
};

struct RecordingConfiguration
{
    std::string folder;  // empty: recording is refused
};

struct PushConfiguration
{
    std::string address;  // http://host:port/path; empty: off
};

// A fault of what surrounds the telephone (docs/faults.md). Of at, on and after, one at most is given; none: at the
// start.
struct FaultConfiguration
{
    std::string what = {};   // its name and arguments
    std::string at = {};     // seconds after the start
    std::string on = {};     // event, with elements
    int after = 0;           // requests; 0: not given
    std::string lasts = {};  // seconds; empty: until it is ended
};

struct CertificateConfiguration
{
    std::string folder;  // HOST.pem for one address, authorities.pem for all others; empty: no authority is trusted
};

struct LogConfiguration
{
    int level = 4;     // 0 (off) to 6 (every request)
    std::string file;  // empty: standard error
};

// Who may send what (sip/Permissions.h). Each is the position in its choices; 0: the default.
struct PermissionsConfiguration
{
    int calls = 0;
    int takeOvers = 0;
    int subscriptions = 0;
    int notifications = 0;
    int control = 0;
    int transfers = 0;
};

// How many SIP requests are taken in; 0: any number.
struct LimitsConfiguration
{
    int requests = 20;        // a second from one source
    int transactions = 1000;  // remembered at once
    int subscriptions = 100;  // at once
    int connections = 100;    // accepted, at once
    int sourceConnections = 20;
};

struct Configuration
{
    bool keyset = true;  // false: a single-line telephone
    std::vector<LineConfiguration> lines;
    std::vector<KeyConfiguration> keys;
    SipConfiguration sip;
    DnsConfiguration dns;
    ServerConfiguration server;
    ExchangeConfiguration exchange;
    std::vector<ExchangeNumberConfiguration> exchangeNumbers;
    MediaConfiguration media;
    CallConfiguration calls;
    ApplicationSocketConfiguration applications;
    HttpConfiguration http;
    StoreConfiguration store;
    RecordingConfiguration recording;
    PushConfiguration push;
    LogConfiguration log;
    CertificateConfiguration certificates;
    PermissionsConfiguration permissions;
    LimitsConfiguration limits;
    std::vector<FaultConfiguration> faults;

    // The telephone without a file.
    static Configuration standard();
};

}  // namespace telephone
