#include "Rules.h"

#include <algorithm>
#include <array>

using effect_text::of;

namespace {
// The keys of the ten forwarding rules; the last one has none.
struct ForwardingKeys
{
    char const* activation;
    char const* address;
};
constexpr std::array<ForwardingKeys, 9> kForwardingKeys = {{
    {"cfu-activated", "cfu-address"},
    {"cfu-ext-activated", "cfu-ext-address"},
    {"cfu-int-activated", "cfu-int-address"},
    {"cfb-activated", "cfb-address"},
    {"cfb-ext-activated", "cfb-ext-address"},
    {"cfb-int-activated", "cfb-int-address"},
    {"cfnr-activated", "cfnr-address"},
    {"cfnr-ext-activated", "cfnr-ext-address"},
    {"cfnr-int-activated", "cfnr-int-address"},
}};
constexpr int kNoReply = 6;
constexpr int kAlternative = 9;

constexpr std::array kServerOwned = {"call-dnd-activated", "cfu-activated",  "cfu-address", "cfb-activated",
                                     "cfb-address",        "cfnr-activated", "cfnr-address"};

char const* word(bool value)
{
    return value ? "true" : "false";
}
}  // namespace

void Rules::take(sfiCallInfo& info, FakeLine& line, int virtualLine, int index, bool assign)
{
    if (assign && world_.hasMapper) {
        expect(of("assign", virtualLine, info.callID, index));
        index = world_.chosenAppearance(virtualLine, index);
    }
    info = {static_cast<std::uint8_t>(virtualLine), line.hasData ? line.primary : 1, info.callID,
            static_cast<std::uint8_t>(index)};
}

sfiCallInfo Rules::record(std::string lineURI, int callID, bool assign)
{
    sfiCallInfo info{0, 1, callID, 0};
    if (callID >= 10000 && callID <= 10500 && lineURI == "bluetoothDeviceID") {
        lineURI = world_.bluetoothLine;
    }
    auto const mark = lineURI.find('#');
    auto const base = lineURI.substr(0, mark);
    int const index = mark == std::string::npos ? 0 : lineURI.back() - '0';
    if (!isKeyset()) {
        return info;
    }
    FakeLine* const plain = world_.line(base);
    if (world_.multiAppearanceLines.count(base) == 0) {
        if (plain != nullptr) {
            info = {plain->number, plain->hasData ? plain->primary : 1, callID, 0};
        }
        return info;
    }
    auto const mapped = world_.mappings.find(callID);
    if (world_.hasMapper && mapped != world_.mappings.end()) {
        return {static_cast<std::uint8_t>(mapped->second.first), 0, callID,
                static_cast<std::uint8_t>(mapped->second.second)};
    }
    FakeLine* const named = index > 0 ? world_.line(lineURI) : nullptr;
    FakeLine* const selected = world_.lineInState(eLineStateSelected, base);
    FakeLine* const held = world_.lineInState(eLineStateHoldConsult, base);
    if (named != nullptr) {
        take(info, *named, named->number, index, assign);
    } else if (selected != nullptr) {
        take(info, *selected, selected->number, 0, assign);
    } else if (held != nullptr) {
        take(info, *held, held->number, 0, assign);
    } else if (plain != nullptr) {
        take(info, *plain, world_.hasMapper ? world_.freeVirtualLine : plain->number, 0, assign);
    }
    return info;
}

bool Rules::mayTakeAppearance(std::string const& lineURI)
{
    FakeLine* const line = world_.line(lineURI);
    if (world_.serverType != 7 || line == nullptr) {
        return true;
    }
    bool const busy = line->state == eLineStateActive || line->state == eLineStateHold;
    bool const consulting = line->state == eLineStateHoldConsult && line->reservedForConsultation == 0;
    if (!busy && !consulting) {
        return true;
    }
    expect(of("keyset.reserveNextSCA", lineURI));
    return world_.yes;
}

bool Rules::mayDial(char const* number)
{
    if (number == nullptr || world_.dialRestriction == 4) {
        return false;
    }
    if (!world_.phoneLocked) {
        return true;
    }
    if (!hasDigitAnalysis()) {
        return false;
    }
    expect(of("isPermitted", number));
    expect(of("isPermittedInContext", number, 0));
    if (!world_.yes && !world_.secondYes) {
        return false;
    }
    if (world_.dndActive) {
        expect(of("SetDoNotDisturb", 0, false));
    }
    return true;
}

bool Rules::numberFlag(std::string const& number)
{
    if (!hasDigitAnalysis()) {
        return false;
    }
    expect(of("queryNumberFlag", number, "false"));
    return world_.numberFlag == "true";
}

// While the service publishes, data from the store passes unfiltered.
void Rules::write(std::string const& key, std::string const& value)
{
    expect(of("store", key + "=" + value));
    if (world_.storeTellsService) {
        apply({{key, value}}, false);
    }
}

void Rules::writeForwarding(int type, bool on, std::string const& destination, int ringCount, bool force)
{
    auto const row = static_cast<std::size_t>(type);
    if (force || destination != world_.forwardingURI[row]) {
        write(kForwardingKeys[row].address, destination);
    }
    if (force || on != (world_.forwardingOn[row] != 0)) {
        write(kForwardingKeys[row].activation, word(on));
    }
    if (type == kNoReply && (force || ringCount != world_.noReplyTime)) {
        write("cfnr-delay", std::to_string(ringCount));
    }
}

void Rules::publishForwarding(int type, bool on, std::string const& destination, int ringCount, bool force)
{
    expect("pending(1)");
    if (hasStore()) {
        expect("take(publication)");
        if (type == kAlternative) {
            expect(of("features.alternative", destination));
        } else if (type < 0 || type > kAlternative) {
            expect("failure: publishForwardingConfigurationViaQORA - unhandled forwarding type (" +
                   std::to_string(type) + ")");
        } else {
            writeForwarding(type, on, destination, ringCount, force);
        }
        expect("give(publication)");
    }
    expect("pending(0)");
}

int Rules::lineNumber(std::string const& lineURI) const
{
    FakeLine* const line = world_.line(lineURI);
    return line == nullptr ? 0 : line->number;
}

void Rules::publishDoNotDisturb(std::string const& lineURI, bool on)
{
    if (!hasStore()) {
        return;
    }
    expect("take(publication)");
    write("call-dnd-activated", word(on));
    if (world_.storeAnswer != 0) {
        expect(of("SetDoNotDisturb", lineNumber(lineURI), on));
    }
    expect("give(publication)");
}

void Rules::publishAgentState(std::string const& lineURI, std::string const& state)
{
    if (!hasStore()) {
        return;
    }
    expect("take(publication)");
    write("agent-state", state);
    if (world_.storeAnswer != 0) {
        expect(of("SetAgentState", lineNumber(lineURI), state));
    }
    expect("give(publication)");
}

void Rules::removeForwarding()
{
    if (!hasStore()) {
        return;
    }
    expect("pending(1)");
    expect("take(publication)");
    for (std::size_t const type : {0U, 3U, 6U}) {
        if (world_.forwardingOn[type] == 1) {
            write(kForwardingKeys[type].activation, "false");
        }
    }
    expect("give(publication)");
    if (hasLamps()) {
        expect("forwardingCleared()");
    }
    expect("pending(0)");
}

bool Rules::isCurrentUser(std::string const& lineURI) const
{
    return lineURI.substr(0, lineURI.find('#')) == world_.currentMultiUser;
}

Rules::Items Rules::filtered(Items const& items, bool& refused)
{
    bool serverFeatures = world_.serverFeatures;
    for (auto const& [key, value] : items) {
        serverFeatures = serverFeatures || (key == "server-based-features" && value != "false");
    }
    refused = false;
    if (!serverFeatures) {
        return items;
    }
    Items left;
    for (auto const& item : items) {
        bool const owned = std::find(kServerOwned.begin(), kServerOwned.end(), item.first) != kServerOwned.end();
        if (owned || (item.first == "cfnr-delay" && world_.serverType != 2)) {
            expect("failure: failed to set data due to server based features being enabled " + item.first);
        } else {
            left.push_back(item);
        }
    }
    refused = left.empty();
    return left;
}

void Rules::apply(Items const& items, bool changed)
{
    std::string list;
    for (auto const& item : items) {
        list += item.first + " ";
    }
    expect(of("apply", list, changed));
}

void Rules::keyPressed(int function, int key, int action)
{
    if (world_.phoneLocked) {
        return;
    }
    switch (function) {
    case 43:
    case 58:
    case 63:
        expect(of("features.button", key, function, action));
        break;
    case 54:
    case 55:
        expect(of("keyset.button", function));
        break;
    case 57:
        expect(of("HandleKeyFunction", 57));
        break;
    default:
        break;
    }
}

void Rules::pressLine(FakeLine* line)
{
    if (line == nullptr) {
        return;
    }
    if (line->hasData) {
        expect(of("line.setHotWarmManual", line->uri, true));
    }
    expect(of("line.keyPressed", line->uri));
}
