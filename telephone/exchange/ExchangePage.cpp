#include "telephone/exchange/ExchangePage.h"

#include <array>
#include <string_view>

#include <spdlog/fmt/fmt.h>

#include "telephone/exchange/BuiltInNumbers.h"
#include "telephone/exchange/Steps.h"

namespace telephone::exchange {

namespace {

constexpr std::string_view kHead = R"(# The built-in exchange

<!-- Written by the test of telephone/exchange/ExchangePage.cpp. -->

The exchange is a call server for a telephone without one. It plays the far ends of calls: a number is what its steps say.

```
exchange 107 does ring 2s, answer 5s, hang-up    # in the next calls of 107
exchange 107 hold 1s, retrieve                   # now, in its present call
exchange 107 call 4711 5s, wait 2s, hang-up      # now: 107 calls 4711, for five seconds at most
exchange numbers                                 # what they all do
```

The configuration says the same, and more, with `[[exchange.number]]` ([configuration](configuration.md)):

```
[[exchange.number]]
number = "107"
name = "Reception"
does = "ring 2s, answer 5s, hang-up"
forward-on-no-reply = "103"
```

## Steps

Commas separate steps; in the configuration, each may also be a text of its own in an array. A step begins when the one before
is over: the far end has answered a re-INVITE, a call or a transfer, the sound has ended. TIME is `2s`, `1.5s` or `500ms`; the
next step waits that long. A step must be possible where it stands, else the sequence is refused with what is possible there.

| Step | What the number does | Where |
|---|---|---|
)";

constexpr std::string_view kAfterSteps = R"(
An answered number without `say` echoes what it hears. After the last step a call stays as it is, until the far end ends it.
When that happens earlier, the steps up to the next one that ends a call (`hang-up`, `preempt`, `redirect`, `busy`, `refuse`,
`release`) are skipped: `answer 5s, hang-up, call caller` calls back in either case.

A command takes `#` at the beginning of a word for a comment; write `dtmf "#1"`.

## Numbers that are always there

The configuration and the command replace them under the same number.

| Number | What it does | Steps |
|---|---|---|
)";

constexpr std::string_view kTail = R"(
`*97` with a number behind it picks up the call that rings there, `*98` any ringing call. With a `pickup-group`, `*98` takes
calls of the caller's group only.

## A line with several users

A line with `shared-line-type = "shared"` or `"bridged"` has colleagues, whom the exchange plays as calls of the line's own
number:

```
exchange 4711 seize                # the key of 4711 shows that the line is in use
exchange 4711 call 100             # from the seized line, or from one that is free
exchange 4711 hold                 # held elsewhere: the key takes the call over
exchange 4711 retrieve             # active elsewhere: on a bridged line the key joins the call
exchange 4711 private              # neither is possible any more
exchange 4711 hang-up
```

The telephone learns all of it from the event package "dialog" (RFC 4235, RFC 7463). The exchange counts the appearances of the
line: if two want the same one, the first gets it. A seizure that comes too late is refused; a call that comes too late is
answered with 403.

## The registrar

| Command | From now on |
|---|---|
| `exchange registrar accept` | telephones register |
| `exchange registrar refuse 403` | every REGISTER is refused with this status |
| `exchange registrar redirect sip:127.0.0.1:5099` | telephones are sent to another registrar (302) |
| `exchange registrar away` | no REGISTER is answered |
| `exchange registrar forget` | all registrations are gone, once; their telephones are not told |

Calls are routed as before; registrations last until they expire.
)";

struct PhaseName
{
    CallPhase phase;
    std::string_view name;
};

constexpr std::array kPhaseNames{
    PhaseName{CallPhase::kNoCall, "without a call"},     PhaseName{CallPhase::kSeized, "on a seized line"},
    PhaseName{CallPhase::kOffered, "before the answer"}, PhaseName{CallPhase::kConnected, "in an answered call"},
    PhaseName{CallPhase::kHeld, "in a held call"},
};

// The phases of a step, in words. Early media has those of an offered call, except where it is the only one.
std::string placesOf(StepRow const& row)
{
    std::string places;
    for (PhaseName const& each : kPhaseNames) {
        if ((row.possibleIn & static_cast<unsigned>(each.phase)) != 0) {
            places += fmt::format("{}{}", places.empty() ? "" : ", ", each.name);
        }
    }
    bool const isOnlyEarly = (row.possibleIn & static_cast<unsigned>(CallPhase::kEarly)) != 0 &&
                             (row.possibleIn & static_cast<unsigned>(CallPhase::kOffered)) == 0;
    return isOnlyEarly ? "after early-media, " + places : places;
}

}  // namespace

std::string exchangePage()
{
    std::string page(kHead);
    for (StepRow const& row : stepRows()) {
        page += fmt::format("| `{}{}{}` | {} | {} |\n", row.name, row.argument.empty() ? "" : " ", row.argument,
                            row.meaning, placesOf(row));
    }
    page += kAfterSteps;
    for (BuiltInNumber const& each : kBuiltInNumbers) {
        page += fmt::format("| {} | {} | `{}` |\n", each.number, each.description, each.does);
    }
    return page.append(kTail);
}

}  // namespace telephone::exchange
