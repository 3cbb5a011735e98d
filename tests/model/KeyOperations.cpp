// Presses, plugs, line keys, direct-station keys and lamp fields.
#include <array>

#include "Step.h"

using effect_text::of;

namespace {
void press(Step& step)
{
    int const function = step.random.between(41, 65);
    int const key = step.key();
    int const action = step.random.between(1, 5);
    step.rules.keyPressed(function, key, action);
    auto const pressed = static_cast<PhysDefs::keyFunctionType>(function);
    auto const how = static_cast<PhysDefs::actionType>(action);
    bool const functional = step.flag();
    step.act([&] {
        if (functional) {
            step.service().functionPressedEvent(pressed, key, how, "text");
        } else {
            step.service().buttonPressedEvent(pressed, key, how, "text");
        }
    });
}

void jack(Step& step)
{
    static constexpr std::array kPlugs = {0, 1, 8, 9};
    int const plug = step.random.oneOf(kPlugs);
    int const status = step.random.between(-1, 2);
    if (status == 0 || status == 1) {
        if (plug == 0) {
            step.expect(of("SetHeadsetPlugged", status == 1));
        } else if (plug == 8) {
            step.expect("JackEvent()");
        }
    }
    step.act([&] {
        step.service().jackEvent(static_cast<PhysDefs::plugIdentifier>(plug),
                                 static_cast<PhysDefs::plugStatus>(status));
    });
}

void keysAvailable(Step& step)
{
    step.expect("NotifyFPKAvailable()");
    step.act([&] { step.service().fpkAvailableEvent(); });
}

FakeLine* lineOfKey(World& world, int key)
{
    auto const found = world.keyLines.find(key);
    return found == world.keyLines.end() ? nullptr : world.line(found->second);
}

// The look-up by key number finds some lines; the others are found by the key's line identifier.
void lineKeyByNumber(Step& step)
{
    int const key = step.key();
    step.expect("take(team)");
    step.rules.pressLine(lineOfKey(step.world, key));
    step.expect("give(team)");
    step.act([&] { step.service().lineKeyPressedFPK(key); });
}

void lineKey(Step& step)
{
    auto const line = step.line();
    step.expect("take(team)");
    step.rules.pressLine(step.world.line(line));
    step.expect("give(team)");
    step.act([&] { step.service().lineKeyPressed(line); });
}

// Whether the state of the key's own line ends the press before the key's line is looked up.
bool endsAtOwnLine(Step& step, int key, int context)
{
    if (step.world.dssKeys.count(key) == 0) {
        return false;
    }
    FakeLine* const own = lineOfKey(step.world, key);
    if (own == nullptr || !own->hasData || own->state != eLineStateDSSBusy) {
        return false;
    }
    if (context != 2) {
        return own->monitorOnly;
    }
    FakeLine* const held = step.world.line(step.world.localHeldLine);
    if (held != nullptr) {
        step.expect(of("FeatureFailure", held->number, 2, 3));
    } else {
        step.expect("failure: dssKeyPressedFPK - cannot find local held line; cannot send feature failure "
                    "notification for blind transfer");
    }
    return true;
}

void dssKeyByNumber(Step& step)
{
    int const key = step.random.oneIn(3) ? 2 : step.key();
    int const context = step.random.below(5);
    auto const digits = step.destination();
    auto const ringing = step.line();
    if (!endsAtOwnLine(step, key, context)) {
        step.expect("take(team)");
        if (FakeLine* const line = lineOfKey(step.world, key)) {
            step.expect(of("line.dssKeyPressed", line->uri, context, digits, ringing));
        }
        step.expect("give(team)");
    }
    step.act([&] { step.service().dssKeyPressedFPK(key, static_cast<EDSSContext>(context), digits, ringing); });
}

void dssKey(Step& step)
{
    auto const line = step.line();
    int const context = step.random.below(5);
    auto const digits = step.destination();
    step.expect("take(team)");
    if (step.world.line(line) != nullptr) {
        step.expect(of("line.dssKeyPressed", line, context, digits, ""));
    }
    step.expect("give(team)");
    step.act([&] { step.service().dssKeyPressed(line, static_cast<EDSSContext>(context), digits, ""); });
}

void lampField(Step& step)
{
    int const key = step.key();
    bool const flag = step.flag();
    auto const target = step.line();
    bool const pressed = step.flag();
    step.expect("take(team)");
    step.expect(pressed ? of("features.blfKey", key, flag) : of("features.setDNDForBLF", target, flag));
    step.expect("give(team)");
    step.act([&] {
        if (pressed) {
            step.service().blfKeyPressedFPK(key, flag);
        } else {
            step.service().setDNDStatusForBLF(target, flag);
        }
    });
}

void overview(Step& step)
{
    auto const line = step.line();
    step.expect("take(team)");
    if (!line.empty()) {
        step.expect(of("lines.requestOverviewData", line));
    }
    step.expect("give(team)");
    step.act([&] { step.service().requestOverviewData(line); });
}

void reserveLine(Step& step)
{
    auto const line = step.line();
    bool expected = step.world.yes;
    step.expect("take(team)");
    if (line == step.world.dummyLine) {
        step.expect("keyset.dummyLine_reserve()");
    } else {
        step.expect(of("keyset.makeCall", line));
        FakeLine* const found = step.world.line(line);
        expected = found != nullptr && (found->state == eLineStateReserved || found->state == eLineStateSelected);
        if (found != nullptr && !expected) {
            step.expect("failure: reserveLine(" + line + ") failed, line state: " + std::to_string(found->state));
        }
    }
    step.expect("give(team)");
    step.compare(expected, [&] { return step.service().reserveLine(line); });
}

void missedCall(Step& step)
{
    auto const line = step.line();
    bool const indicated = step.flag();
    auto const base = line.substr(0, line.find('#'));
    FakeLine* const found = step.world.line(base);
    bool const shown = step.rules.isKeyset() && found != nullptr && found->hasData && found->primary == 0 &&
                       (found->sharedLineType == 1 || base == "shared");
    if (shown) {
        step.expect(of("line.setMissedCall", base, indicated));
    }
    step.act([&] { step.service().setMissedCallIndication(line, indicated); });
}

void setLampMode(Step& step)
{
    static std::array<std::string, 4> const kLamps = {"Hold", "SecondAlert", "hold", "Mute"};
    auto const line = step.line();
    auto const lamp = step.random.oneOf(kLamps);
    int const mode = step.random.between(-1, 4);
    if (lamp == "Hold" || lamp == "SecondAlert") {
        if (step.rules.hasLamps()) {
            step.expect(lamp == "Hold" ? of("setLamp", 10, mode, 2, 0) : of("setLamp", 69, mode, 3, 0));
        }
    } else {
        step.expect("failure: setLampMode() LED setting for lampId " + lamp + " not implemented");
    }
    step.operation("setLampMode", {{"Line", line}, {"lampId", lamp}, {"lampMode", std::to_string(mode)}}, 5,
                   [&] { return step.service().setLampMode(line, lamp, mode); });
}
}  // namespace

std::vector<Operation> const& keyOperations()
{
    static std::vector<Operation> const kOperations = {
        {"key press", 6, press},
        {"jackEvent", 2, jack},
        {"fpkAvailableEvent", 1, keysAvailable},
        {"lineKeyPressedFPK", 4, lineKeyByNumber},
        {"lineKeyPressed", 3, lineKey},
        {"dssKeyPressedFPK", 6, dssKeyByNumber},
        {"dssKeyPressed", 2, dssKey},
        {"lamp field", 2, lampField},
        {"requestOverviewData", 2, overview},
        {"reserveLine", 4, reserveLine},
        {"setMissedCallIndication", 2, missedCall},
        {"setLampMode", 2, setLampMode},
    };
    return kOperations;
}
