#include "telephone/calls/SecurityPage.h"

#include <array>

#include <spdlog/fmt/fmt.h>

#include "telephone/configuration/ConfigurationFields.h"
#include "telephone/sip/Permissions.h"

namespace telephone {

namespace {

constexpr std::string_view kHead = R"(# Security

What the telephone listens on, who may do what to it, and what its files say. The tables of requests and limits are
generated from `telephone/sip/Permissions.h` and `telephone/configuration/ConfigurationFields.h`.

## What listens where

| What | Where | Who reaches it |
|---|---|---|
| SIP | UDP and TCP port `sip.port` of `sip.address`, and the next one for TLS where that is used; 127.0.0.1 unless the file names another address | the network of that address; see below |
| audio | two UDP ports for each call, on the same address, for as long as the call lasts | the same |
| built-in exchange | UDP and TCP port `exchange.port` of 127.0.0.1, and the next one for TLS with `exchange.certificate`, unless a registrar is configured or it is off | programs of this machine |
| applications | a UNIX socket | the user who runs the telephone |
| HTTP | off; `http.address` ([http.md](http.md)) | programs with the token, browsers that opened the panel with it; another address than this machine's own needs a certificate |

In virtual time no SIP or audio port is opened.

## Who may send what

A sender is one of these, and each includes those before it:

| Sender | Recognised by |
|---|---|
| `server` | the line's call server: the request comes from the address that answered the line's REGISTER, or it is for the line's registered contact, which carries a secret (`;line=`) that only the server was given. A server that redirects a caller passes the contact on, and its trust with it |
| `authenticated` | the line's password, by digest (SHA-256 or MD5), under any user name. The first request is answered with 401 |
| `anybody` | nothing |

Requests outside a dialog:

| Request | What it does | Setting | Line with a registrar | Line without |
|---|---|---|---|---|
)";

constexpr std::string_view kAfterPermissions = R"(
The section `[permissions]` of the configuration file changes a row for all lines: `calls = "anybody"`. What is not permitted
is answered with 401, or with 403 where a password would not help, and leaves nothing behind. A line without a password cannot
be authenticated to.

- A far end may send anything within its own dialog: the dialog's tags, which nobody else is told, are its permission. A watcher
  of a line does learn them, and can take a call over if it may send the request for that.
- `P-Asserted-Identity` (RFC 3325) of the line's server is shown as the far end's name and number, in calls, answers and changes
  of a call. Anybody else's is ignored: From is shown.
- OPTIONS is answered to anybody. Other methods than those above are refused with 405 or 481, whoever sends them.
- A subscription of somebody unknown, where `subscriptions = "anybody"` permits it, must have the address it comes from as its
  Contact: the telephone sends its notifications to nobody who has not asked for them.
- Two telephones without a registrar take over each other's calls (attended transfer, pickup) and watch each other only if
  their lines have the same password. The same is true at the built-in exchange of a consultation call that is transferred;
  `exchange.password` is such a password.
- UDP addresses can be forged, and SIP without TLS can be read on its way. On a network in which others can do either, the
  address of the server and the secret of the contact prove little.

## Limits

| Setting | Default | Meaning |
|---|---|---|
)";

constexpr std::string_view kTail = R"(
What exceeds `requests` is dropped without an answer, which would double the traffic and go to an address that may be forged.
What exceeds `transactions` or `subscriptions` is answered with 503 and Retry-After (RFC 3261 section 21.5.4), without a
transaction. A burst may use the requests of two seconds at once. Refusals, OPTIONS and everything that is dropped take no memory.
A connection too many is closed before a byte of it is read, and before TLS begins.

## What the telephone sends

- Challenges are answered with the strongest algorithm that both sides support: SHA-256-sess, SHA-256, MD5-sess, MD5 (RFC 7616,
  RFC 8760), each with `qop=auth`. A server that offers nothing but `auth-int` gets no answer, and the log says so.
- A destination with headers in its URI (`sip:100@host?Subject=x`) is refused. In redirections and transfers the headers are left
  out, but for Replaces in a transfer (RFC 3261 section 19.1.5).

## What others write

Display names, reason phrases and identities from the network are put on one line; control characters become blanks, and `<` and
`>` become `(` and `)`, because applications would take them for elements of an event. Bodies (CSTA, conference documents) are
passed on as they are.

## Files and logs

Everything the telephone writes can be read by its owner alone: log, store, recordings, WAV files, saved states, sockets. From a
file that exists and that others can read, their rights are taken before it is written; one that belongs to another user, so that
they cannot be taken, is refused. Only the reports of tests are written as they are.

| Level | In the log |
|---|---|
| 1 to 4 | numbers and addresses of callers, refused requests with the address of their sender |
| 5 | also every operation of the service with its parameters: numbers, names, settings |
| 6 | also every request of applications and every SIP message, with names, numbers and session descriptions |

Passwords are never logged. In SIP messages of level 6, digest responses and the keys of encrypted audio are replaced by `***`. Each
entry is one line, or goes on in lines that begin with four blanks, so that no text from outside can pass for an entry.
)";

constexpr std::array<std::string_view, 3> kSenderNames{"server", "authenticated", "anybody"};

std::string_view nameOf(sip::Sender sender)
{
    return kSenderNames.at(static_cast<std::size_t>(sender));
}

}  // namespace

std::string securityPage()
{
    std::string page(kHead);
    for (auto const& row : sip::kPermissions) {
        page += fmt::format("| {} | {} | `{}` | {} | {} |\n", row.request, row.effect, row.name, nameOf(row.withServer),
                            nameOf(row.withoutServer));
    }
    page += kAfterPermissions;
    LimitsConfiguration const limits;
    for (auto const& field : fields::kLimits) {
        page += fmt::format("| `limits.{}` | {} | {} |\n", field.name,
                            limits.*std::get<int LimitsConfiguration::*>(field.member), field.meaning);
    }
    return page + std::string(kTail);
}

}  // namespace telephone
