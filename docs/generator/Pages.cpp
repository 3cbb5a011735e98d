#include "Pages.h"

#include <string_view>

#include "telephone/access/Commands.h"
#include "telephone/faults/FaultKinds.h"
#include "telephone/protocol/Phrases.h"
#include "telephone/protocol/Vocabulary.h"

namespace {

using namespace telephone;

constexpr std::string_view kCommandsHead = R"(# Commands

<!-- Written by generate_docs from telephone/access/Commands.cpp. -->

The telephone's own commands, beside the requests of the service. Every way in takes all of them: the console, scripts, the
application socket (a message that begins with neither `<` nor `SigEvent`), HTTP (`POST /commands`), and the program for a
running telephone (`telephone do press 3`). A command has a result, which may be empty, or is refused with a sentence.

Capitals stand for a value, `|` for a choice, brackets for what may be left out. Quotes keep blanks in a value:
`call 4711 from 555 name "Ann B"`.

| Command | Meaning |
|---|---|
)";

constexpr std::string_view kFaultsHead = R"(# Faults

<!-- Written by generate_docs from telephone/faults/FaultKinds.cpp. -->

What surrounds a telephone fails: messages are lost, the registrar is away, the disk is full. The command `fault` makes that
happen at the moment you choose, so that a script can show what the telephone does about it.

```
telephone> fault datagrams lost 2
telephone> fault registrar away at 3s for 10m
telephone> fault store full on CallHeldEvent CallID=1 for 2s
telephone> fault lamps stuck after 5 requests
telephone> faults
telephone> fault off store full
telephone> fault off
```

A fault begins

- at once, if nothing else is said;
- `at SECONDS`, from the command on (`3`, `0.5`, `200ms`);
- `on EVENT`, at the first such event that comes after the command; elements are written as in a script's `wait`;
- `after COUNT requests`, when so many more requests of applications have been answered.

It ends after `for SECONDS`, when it has done what it can, by `fault off NAME` or `fault off`, and with the telephone. At any
moment one fault of a kind is active: another one of the same kind takes its place. `faults` lists those that are active and
those that wait.

The log has each beginning, each end with what the fault did, and each datagram that a fault of a given number befell.

A configuration file has the same as `[[fault]]` ([configuration.md](configuration.md)); there, moments count from the start of
the telephone. A fault without a moment is active before the lines register.

Faults of the network act in [virtual time](virtual-time.md) only, where datagrams stay inside the telephone. They concern UDP:
what lines send over TCP is not lost. Audio is lost whether anybody listens to it or not: the receiver counts it, and a call without
any audio for a minute ends ([networks.md](networks.md)).

| Fault | Meaning | Only in virtual time |
|---|---|---|
)";

constexpr std::string_view kRequestsHead = R"(# Requests

<!-- Written by generate_docs from include/CommunicationsServiceRequests.h. -->

A request is one text: the element `Method` with the name, then an element for each parameter, with nothing between them.
The order of the parameters does not matter, except that in `SendCSTARequest` and `SendUACSTAServerMessage` everything
after `</Line>` is the body, so `Line` comes last. Names are case-sensitive. Values are not escaped, so a value cannot
contain its own closing tag. If an element occurs twice, the first one applies.

Wrong input is not an error: the service gives it a meaning.

| Value | A missing element is read as | A wrong value is read as |
|---|---|---|
| text | empty | unchanged |
| number | -1 | its leading digits, after blanks and a sign; 0 without digits; beyond 32 bits, the largest or smallest number |
| flag | true | true for every number but 0; false for a non-number |
| service state | `sfiServiceOutOfService` | `sfiServiceOutOfService` |
| `TRUE` | false | false |

**Call ids.** The application chooses the id of a call that it makes: any number from 1 that is not in use. The telephone
chooses the ids of incoming calls and of calls made by its keys; they begin at 1001, so that 1 to 1000 are for applications.
An id is free again when its call is over.

**Answers.** The answer is one text, usually a [result word](enumerations.md#result). The answer to an unknown method is
`sfiFailure`, and so is an answer that would be empty. `sfiSuccess` means that the work has begun; events tell how it ends.
After the command `reasons on`, a sentence says why a request was refused or did nothing; after `strict on`, wrong input is
refused ([commands](commands.md)).

A text that begins with `SigEvent:` is a notice of the signalling component: it is passed on and not answered.

**Where to send them.** To the telephone's socket, which [protocol.md](protocol.md) describes, or over [HTTP](http.md). By hand:
`telephone request HoldCall Line=4711 CallID=2`. [applications.md](applications.md) shows how a program does it.
`telephone describe HoldCall` prints the same as this page.

**Exchanges.** Each section ends with an exchange that a telephone recorded, and says what there was before it. Shown are
the request, its answer, and the events that this application received until nothing more came. 100 answers, 101 is busy,
102 rings and does not answer. [exchanges.json](exchanges.json) has them for programs.

"This telephone" is the reference telephone. The file `tests/golden/requests.json` has the exact texts of each request, and
[protocol.json](protocol.json) has the contents of this page for programs.
)";

constexpr std::string_view kEventsHead = R"(# Events

<!-- Written by generate_docs from include/CommunicationsServiceEvents.h. -->

An event is one text under the protocol `CommunicationsServiceProtocol`: the element `Method`, then every element of its
table, in this order, with nothing between them. No element is ever left out. Values are not escaped. Numbers are decimals.
The spelling of the tags differs from event to event and is part of the protocol. The meaning of an element belongs to its
event: the same tag means different things in different events.

An application receives events after [Subscribe](requests.md#subscribe), or after the [command](commands.md) `events`, which
also sends what the application has missed. Events alone do not add up to the state of the telephone, which the command
`state` returns ([applications.md](applications.md#follow-the-events) lists the differences). `telephone watch` prints events
in words, `telephone watch --raw` as they stand; `telephone describe CallHeldEvent` prints the same as this page.

"This telephone" is the reference telephone. The file `tests/golden/events.json` has the exact texts of each event, and
[protocol.json](protocol.json) has the contents of this page for programs.
)";

constexpr std::string_view kEnumerationsHead = R"(# Enumerations

<!-- Written by generate_docs from include/CommunicationsServiceEnumerations.h. -->

The meaning of the numbers and fixed words in [requests](requests.md) and [events](events.md). The names are the telephone's
vocabulary. The service passes every number through, so an application must accept numbers that are not listed.
`telephone describe CallState 6` and `telephone describe remote ringing` look up one value.
)";

std::string code(std::string_view text)
{
    return "`" + std::string(text) + "`";
}

// Text in which nothing is markup: a bar would end a table's cell, and "<" would begin HTML.
std::string plain(std::string_view text)
{
    std::string escaped;
    for (char const letter : text) {
        if (letter == '|' || letter == '<' || letter == '*') {
            escaped += '\\';
        }
        escaped += letter;
    }
    return escaped;
}

std::string anchorOf(std::string_view name)
{
    std::string anchor(name);
    for (char& letter : anchor) {
        letter = letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    }
    return anchor;
}

std::string link(std::string_view page, std::string_view name)
{
    return "[" + std::string(name) + "](" + std::string(page) + "#" + anchorOf(name) + ")";
}

std::string linkOf(Enumeration const* values)
{
    return values == nullptr ? std::string() : link("enumerations.md", values->name);
}

std::string rowOf(RequestParameter const& parameter)
{
    bool const isUsed = parameter.need != RequestNeed::unused;
    return "| " + code(parameter.tag) + " | " + plain(valueForm(parameter, linkOf(parameter.values))) + " | " +
           std::string(needName(parameter.need)) + " | " + plain(parameter.meaning) + " | " +
           (isUsed ? plain(missingText(parameter)) : "") + " | " + plain(parameter.wrong) + " |\n";
}

std::string tableOf(RequestParameters const& parameters)
{
    if (parameters.size() == 0) {
        return {};
    }
    std::string table = "| Parameter | Value | Need | Meaning | If missing | If wrong |\n|---|---|---|---|---|---|\n";
    for (auto const& parameter : parameters) {
        table += rowOf(parameter);
    }
    return table + "\n";
}

std::string tableOf(EventElements const& elements)
{
    if (elements.size() == 0) {
        return {};
    }
    std::string table = "| Element | Value | Meaning |\n|---|---|---|\n";
    for (auto const& element : elements) {
        table += "| " + code(element.tag) + " | " + plain(valueForm(element, linkOf(element.values))) + " | " +
                 plain(element.meaning) + " |\n";
    }
    return table + "\n";
}

std::string eventsOf(RequestDescription const& request)
{
    std::string text;
    for (auto const event : request.events) {
        // The page's headings are the operations.
        auto const operation = findEventDescription(event)->operation;
        text += (text.empty() ? "" : ", ") + ("[" + std::string(event)) + "](events.md#" + anchorOf(operation) + ")";
    }
    return text.empty() ? "none" : text;
}

std::string blockOf(Exchange const& exchange)
{
    std::string text = "```\nrequest  " + exchange.request + "\n";
    if (exchange.answer) {
        text += "answer   " + *exchange.answer + "\n";
    }
    for (auto const& event : exchange.events) {
        text += "event    " + event + "\n";
    }
    return text + "```\n";
}

std::string sectionOf(RequestDescription const& request, Exchange const& exchange)
{
    std::string text = "\n## " + std::string(request.name) + "\n\n" + std::string(request.meaning) + "\n\n";
    text += tableOf(request.parameters);
    text += "- **What counts:** " + plain(request.addressing) + "\n";
    text += "- **Answer:** " + answerText(request) + ".\n";
    text += "- **It promises:** " + plain(request.promise) + "\n";
    if (!request.noPromise.empty()) {
        text += "- **It does not promise:** " + plain(request.noPromise) + "\n";
    }
    text += "- **Events:** " + eventsOf(request) + "\n\n";
    if (request.answerElements.size() > 0) {
        text += "In the answer:\n\n" + tableOf(request.answerElements);
    }
    return text + "A recorded exchange. " + plain(exchange.before) + "\n\n" + blockOf(exchange);
}

std::string sectionOf(EventDescription const& event)
{
    std::string text = "\n## " + std::string(event.operation) + "\n\n" + std::string(event.meaning) + "\n\n";
    text += tableOf(event.elements);
    text += plain(event.when) + "\n";
    return event.method.empty() ? text : text + "\n```\n" + formOf(event) + "\n```\n";
}

std::string sectionOf(Enumeration const& enumeration)
{
    std::string const carried = enumeration.isOfWords() ? "Word" : "Number";
    std::string text = "\n## " + std::string(enumeration.name) + "\n\n" + std::string(enumeration.meaning) + "\n\n| " +
                       carried + " | Name | Meaning |\n|---|---|---|\n";
    for (auto const& value : enumeration) {
        text += "| " + code(textOfValue(enumeration, value)) + " | " + std::string(value.name) + " | " +
                plain(value.meaning) + " |\n";
    }
    return text;
}

}  // namespace

std::string requestsPage(std::vector<Exchange> const& exchanges)
{
    std::string page(kRequestsHead);
    page += "\nThere are " + std::to_string(kRequestCount) + " requests.\n";
    for (std::size_t i = 0; i < kRequestCount; ++i) {
        page += sectionOf(kRequestDescriptions[i], exchanges.at(i));
    }
    return page;
}

std::string eventsPage()
{
    std::string page(kEventsHead);
    std::size_t sent = 0;
    for (auto const& event : kEventDescriptions) {
        sent += event.method.empty() ? 0U : 1U;
    }
    page += "\nThere are " + std::to_string(kEventCount) + " events, named here by the operation that sends them; " +
            std::to_string(sent) + " of them are delivered.\n";
    for (auto const& event : kEventDescriptions) {
        page += sectionOf(event);
    }
    return page;
}

std::string commandsPage()
{
    std::string page(kCommandsHead);
    for (CommandDescription const& command : commandDescriptions()) {
        std::string const usage = command.name + (command.arguments.empty() ? "" : " ") + command.arguments;
        page += "| `" + plain(usage) + "` | " + plain(command.help) + " |\n";
    }
    return page;
}

std::string faultsPage()
{
    std::string page(kFaultsHead);
    for (FaultKind const& kind : faultKinds()) {
        page += "| `" + plain(usageOf(kind)) + "` | " + plain(kind.meaning) + " | " +
                (kind.isVirtualOnly ? "yes" : "no") + " |\n";
    }
    return page;
}

std::string enumerationsPage()
{
    std::string page(kEnumerationsHead);
    for (auto const* const enumeration : kEnumerations) {
        page += sectionOf(*enumeration);
    }
    return page;
}
