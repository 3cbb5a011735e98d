"""The goals: each row computes a figure from the measured ones and says which value meets its goal."""

import dataclasses
from collections.abc import Callable

Figures = dict[str, float]


@dataclasses.dataclass(frozen=True)
class Row:
    what: str
    goal: str
    figure: Callable[[Figures], float]
    met: Callable[[float], bool]
    text: Callable[[Figures, float], str]


def at_most(limit: float) -> Callable[[float], bool]:
    return lambda value: value <= limit


def at_least(limit: float) -> Callable[[float], bool]:
    return lambda value: value >= limit


def ratio(what: str, goal: str, ours: str, other: str, met: Callable[[float], bool], unit: str = "ns") -> Row:
    """A ratio of costs: lower is better."""
    return Row(
        what,
        goal,
        lambda f: f[ours] / f[other],
        met,
        lambda f, value: f"{value:.2f} times ({figure(f[ours])} against {figure(f[other])} {unit})",
    )


def faster(what: str, goal: str, ours: str, other: str, limit: float) -> Row:
    """A ratio of speeds: higher is better."""
    return Row(
        what,
        goal,
        lambda f: f[other] / f[ours],
        at_least(limit),
        lambda f, value: f"{value:.1f} times as fast ({figure(f[ours])} against {figure(f[other])} ns)",
    )


def plain(what: str, goal: str, make: Callable[[Figures], float], met: Callable[[float], bool], unit: str) -> Row:
    return Row(what, goal, make, met, lambda f, value: f"{figure(value)} {unit}")


def figure(value: float) -> str:
    """Three significant digits; whole numbers above a hundred."""
    if abs(value) >= 100:
        return f"{value:,.0f}"
    return f"{value:.3g}" if abs(value) >= 0.01 else "0"


def flat(what: str, name: str, few: int, many: int) -> Row:
    """The cost among many compared with the cost among few; a linear search would far exceed the limit."""
    return Row(
        f"{what}: {many:,} beside {few}",
        "flat: at most 2 times",
        lambda f: f[f"{name}/{many}"] / f[f"{name}/{few}"],
        at_most(2),
        lambda f, value: f"{value:.2f} times ({figure(f[f'{name}/{many}'])} against {figure(f[f'{name}/{few}'])} ns)",
    )


ROWS = (
    ratio("HoldCall, from text to answer", "at most 2.5 times the floor", "holdCall", "holdCallFloor", at_most(2.5)),
    ratio("All 43 requests in random order", "at most 2.5 times the floor", "mix", "mixFloor", at_most(2.5)),
    faster("All 43 requests beside CSTA XML by pugixml", "at least 3 times as fast", "mix", "pugixmlMix", 3),
    faster("All 43 requests beside CSTA XML by libxml2", "at least 20 times as fast", "mix", "libxml2Mix", 20),
    faster("All 43 requests beside JSON by nlohmann-json", "shown", "mix", "nlohmannMix", 0),
    faster("All 43 requests beside JSON by simdjson", "shown", "mix", "simdjsonMix", 0),
    ratio("Event of 17 fields", "at most 6 times memcpy", "seventeenFields", "seventeenFieldsCopy", at_most(6)),
    ratio("Event of 5 fields", "at most 6 times memcpy", "fiveFields", "fiveFieldsCopy", at_most(6)),
    ratio("The copy of such a text into a new string, 17 fields", "shown", "seventeenFieldsNewString",
          "seventeenFieldsCopy", at_least(0)),
    ratio("The copy of such a text into a new string, 5 fields", "shown", "fiveFieldsNewString", "fiveFieldsCopy",
          at_least(0)),
    faster("Event of 17 fields beside ostringstream", "at least 10 times as fast", "seventeenFields",
           "seventeenFieldsStream", 10),
    faster("Event of 5 fields beside ostringstream", "at least 10 times as fast", "fiveFields", "fiveFieldsStream", 10),
    plain("Trace that is switched off", "under 2 ns beyond the guard's call",
          lambda f: f["tracedOperation"] - f["untracedOperation"], lambda value: value < 2, "ns"),
    plain("Step of the telephone's trace while nothing is traced", "under 5 ns",
          lambda f: f["operationNotTraced"] - f["operationWithoutStep"], lambda value: value < 5, "ns"),
    plain("The same while it is traced to a file", "shown", lambda f: f["operationTraced"], at_least(0), "ns"),
    plain("Work for another thread: what it costs to take its cause along", "under 5 ns",
          lambda f: f["workHandedOverWithItsCause"] - f["workHandedOver"], lambda value: value < 5, "ns"),
    plain("Whole service operation (hold) beyond the platform's", "within 100 ns",
          lambda f: f["holdService"] - f["holdPlatform"], at_most(100), "ns"),
    ratio("Request over the application socket, one at a time", "at most 1.15 times the echo", "application_us",
          "echo_us", at_most(1.15), "us"),
    ratio("The same over a message bus", "shown", "bus_us", "echo_us", at_least(0), "us"),
    ratio("64 requests under way", "at least 0.5 times the echo's rate", "application_rate", "echo_rate", at_least(0.5),
          "a second"),
    plain("Event to 1 application", "shown", lambda f: f["subscribers_1"], at_least(0), "us"),
    plain("Event to 10 applications, for each", "shown", lambda f: f["subscribers_10"] / 10, at_least(0), "us"),
    Row("Event to 100 applications, for each", "linear: no more than for one",
        lambda f: f["subscribers_100"] / 100 / f["subscribers_1"], at_most(1),
        lambda f, value: f"{value:.2f} times ({figure(f['subscribers_100'] / 100)} us)"),
    ratio("Event to 10 applications beside one that is stopped", "no delay: at most 1.25 times", "with_stopped",
          "subscribers_10", at_most(1.25), "us"),
    plain("Calls a second by text request", "at least 1,500", lambda f: f["request_calls"], at_least(1500), "a second"),
    ratio("Calls a second beside the SIP stack alone", "at least 0.5 times", "request_calls", "bare_calls",
          at_least(0.5), "a second"),
    plain("The same with a trace of everything", "at least 1,000", lambda f: f["traced_calls"], at_least(1000), "a second"),
    plain("Calls that failed meanwhile", "none", lambda f: f["failed_calls"], lambda value: value == 0, "calls"),
    ratio("200 calls with encrypted audio beside 200 without: processor time of both ends", "shown",
          "encrypted_calls_percent", "plain_calls_percent", at_least(0), "% of a core"),
    plain("200 calls with encrypted audio: packets lost", "none", lambda f: f["encrypted_calls_lost"],
          lambda value: value == 0, "packets"),
    ratio("An end of such a call beside one without encryption: memory", "shown", "encrypted_calls_kb",
          "plain_calls_kb", at_least(0), "kB"),
    plain("Library on disk, stripped", "at most 300 kB", lambda f: f["library_bytes"] / 1000, at_most(300), "kB"),
    plain("Library in memory, after load and init", "at most 1 MB", lambda f: f["library_kb"] / 1024, at_most(1), "MB"),
    plain("Telephone, start to ready", "under 100 ms", lambda f: f["start_ms"], lambda value: value < 100, "ms"),
    plain("Telephone, idle memory", "at most 20 MB", lambda f: f["idle_mb"], at_most(20), "MB"),
    ratio("The same with [http]", "shown", "http_idle_mb", "idle_mb", at_least(0), "MB"),
    ratio("Start to ready with [http]", "shown", "http_start_ms", "start_ms", at_least(0), "ms"),
    plain("Telephone, idle processor time", "under 0.2 %", lambda f: f["idle_percent"], lambda value: value < 0.2, "%"),
    flat("Line by its id", "lineById", 10, 250),
    flat("Party of a key by its number", "stationById", 10, 1000),
    flat("Line of a key", "lineOfKey", 10, 1000),
    flat("Key of a line", "keyOfLine", 10, 1000),
    flat("Key by its number", "keyByNumber", 10, 1000),
    flat("Appearance of a call", "appearanceOfCall", 10, 1000),
    flat("Free appearance of a line", "freeAppearance", 10, 1000),
    ratio("The telephone's clock beside the standard's", "at most 1.1 times", "telephoneClock", "standardClock",
          at_most(1.1)),
    ratio("Message to another thread and its reply, beside the standard's condition", "at most 1.1 times",
          "telephoneHandOver/process_time", "standardHandOver/process_time", at_most(1.1)),
    ratio("Poll beside the system's", "at most 1.1 times", "telephonePoll", "standardPoll", at_most(1.1)),
    plain("50 telephones in a call each: memory of one", "shown", lambda f: f["fleet_mb"], at_least(0), "MB"),
    plain("50 telephones in a call each: memory shared with none", "shown", lambda f: f["fleet_own_mb"], at_least(0),
          "MB"),
    plain("50 telephones in a call each: processor time of one", "shown", lambda f: f["fleet_percent"], at_least(0),
          "%"),
)
