#include "World.h"

#include <array>

namespace {
thread_local World* currentWorld = nullptr;

// A "#" and an index mark an appearance.
std::string baseOf(std::string const& uri)
{
    return uri.substr(0, uri.find('#'));
}

constexpr std::array kStates = {eLineStateIdle,     eLineStateActive,      eLineStateDSSBusy,
                                eLineStateHold,     eLineStateHoldConsult, eLineStateHoldElsewhere,
                                eLineStateSelected, eLineStateReserved,    eLineStateConferenceHoldElsewhere};
}  // namespace

std::string effect_text::shown(sfiCallInfo const& call)
{
    return std::to_string(call.lineID) + "/" + std::to_string(call.primary) + "/" + std::to_string(call.callID) + "/" +
           std::to_string(call.appearanceIndex);
}

void FakeLine::keyPressed()
{
    World::current().effect(effect_text::of("line.keyPressed", uri));
}

void FakeLine::dssKeyPressed(EDSSContext context, std::string const& digits, std::string const& ringingLineURI)
{
    World::current().effect(effect_text::of("line.dssKeyPressed", uri, context, digits, ringingLineURI));
}

sfiResult FakeLine::retrieve()
{
    World::current().effect(effect_text::of("line.retrieve", uri));
    return World::current().answer;
}

void FakeLine::setDNDConfiguration(bool on)
{
    World::current().effect(effect_text::of("line.setDND", uri, on));
}

void FakeLine::setForwardingConfiguration(sfiForwardingType type, bool on, std::string const& destination,
                                          int ringCount)
{
    World::current().effect(effect_text::of("line.setForwarding", uri, type, on, destination, ringCount));
}

void FakeLine::setMissedCallIndicated(bool indicated)
{
    World::current().effect(effect_text::of("line.setMissedCall", uri, indicated));
}

void FakeLine::setHotWarmLineManual(bool manual)
{
    World::current().effect(effect_text::of("line.setHotWarmManual", uri, manual));
}

World::World()
{
    unsigned char lineNumber = 0;
    for (auto const* const uri : {"4711", "4712", "bare", "shared", "shared#1", "shared#2"}) {
        lines.emplace_back(uri, ++lineNumber);
    }
    line("bare")->hasData = false;
    keyLines = {{1, "4711"}, {2, "4712"}, {3, "shared"}, {4, "bare"}, {5, "unknown"}};
    directLineKeys = {1, 3};
    dssKeys = {2, 4};
}

World& World::current()
{
    return *currentWorld;
}

void World::enter()
{
    currentWorld = this;
}

FakeLine* World::line(std::string const& uri)
{
    for (auto& each : lines) {
        if (each.uri == uri) {
            return &each;
        }
    }
    return nullptr;
}

FakeLine* World::lineInState(ELineState state, std::string const& baseURI)
{
    for (auto& each : lines) {
        if (each.state == state && baseOf(each.uri) == baseURI) {
            return &each;
        }
    }
    return nullptr;
}

int World::chosenAppearance(int lineNumber, int index) const
{
    return index == 0 && number % 2 == 0 ? (lineNumber & 3) + 1 : index;
}

void World::drawAnswers(Random& random)
{
    static constexpr std::array kResults = {sfiSuccess, sfiSuccess, sfiFailure, sfiFailureCallBackToMany};
    static std::array<std::string, 3> const kFlags = {"true", "false", "TRUE"};

    answer = random.oneOf(kResults);
    yes = random.coin();
    secondYes = random.coin();
    number = random.between(-2, 12);
    storeAnswer = random.oneIn(3) ? 0 : random.between(1, 2);
    applyAnswer = random.between(0, 2);
    freeVirtualLine = random.between(0, 40);
    numberFlag = random.oneOf(kFlags);
    storeTellsService = random.oneIn(4);
}

void World::change(Random& random)
{
    switch (random.below(4)) {
    case 0:
        changeForwarding(random);
        break;
    case 1:
        changeSetting(random);
        break;
    default:
        changeLine(random);
    }
}

void World::changeLine(Random& random)
{
    static std::array<std::string, 2> const kDigits = {"", "112"};

    auto& changed = lines[static_cast<std::size_t>(random.below(static_cast<int>(lines.size())))];
    changed.state = random.oneOf(kStates);
    changed.primary = random.below(3);
    changed.reservedForConsultation = random.below(2);
    changed.sharedLineType = random.below(3);
    changed.hotWarmType = random.below(3);
    changed.hotWarmDigits = random.oneOf(kDigits);
    changed.monitorOnly = random.coin();
    changed.serverSettings.dnd = random.coin();
    changed.serverSettings.forwarding.clear();
    for (int type = 0; type < 10; ++type) {
        if (random.oneIn(3)) {
            changed.serverSettings.forwarding[static_cast<sfiForwardingType>(type)] = {random.coin(), "900",
                                                                                       random.below(6)};
        }
    }
}

void World::changeForwarding(Random& random)
{
    static std::array<std::string, 3> const kTargets = {"", "900", "901"};

    auto const type = static_cast<std::size_t>(random.below(9));
    forwardingOn[type] = random.below(3);
    forwardingURI[type] = random.oneOf(kTargets);
    noReplyTime = random.below(4);
}

void World::changeSetting(Random& random)
{
    static std::array<std::string, 3> const kUsers = {"4711", "shared", ""};
    static std::array<std::string, 3> const kLines = {"4712", "shared#1", "nowhere"};
    static constexpr std::array kServers = {0, 1, 2, 7};

    switch (random.below(16)) {
    case 0:
        keysetType = random.oneIn(4) ? "" : "keyset";
        break;
    case 1:
        keysetActive = random.coin();
        break;
    case 2:
        currentMultiUser = random.oneOf(kUsers);
        break;
    case 3:
        serverType = random.oneOf(kServers);
        break;
    case 4:
        dialRestriction = random.oneIn(4) ? 4 : random.below(4);
        break;
    case 5:
        phoneLocked = random.oneIn(3);
        break;
    case 6:
        serverFeatures = random.coin();
        break;
    case 7:
        privacyMode = random.below(3);
        break;
    case 8:
        dndEnabled = random.coin();
        dndEnabledAnswered = random.coin();
        break;
    case 9:
        agentEnabled = random.coin();
        break;
    case 10:
        dndActive = random.coin();
        break;
    case 11:
        jack = static_cast<PhysDefs::plugStatus>(random.below(3));
        break;
    case 12:
        bluetoothLine = random.oneOf(kLines);
        localHeldLine = random.coin() ? "" : random.oneOf(kLines);
        break;
    case 13:
        pickupURI = random.oneIn(3) ? "" : "**";
        cpuAddress = random.oneIn(3) ? "" : "10.0.0.1";
        registrationId = random.oneIn(3) ? "" : "4711@example.com";
        break;
    case 14:
        hasCockpit = random.coin();
        hasMapper = !random.oneIn(4);
        deviceList.assign(static_cast<std::size_t>(random.below(3)), "<device>");
        break;
    default:
        logging = random.coin();
    }
}
