// Forwarding, do-not-disturb, agent state, the change of the user, and management data.
#include <array>

#include "Step.h"
#include "platform/management/ManageableData.h"

using effect_text::of;

namespace {
std::string text(int number)
{
    return std::to_string(number);
}

std::string forwardTarget(Step& step)
{
    static std::array<std::string, 3> const kTargets = {"", "900", "901"};
    return step.random.oneOf(kTargets);
}

int expectSetForwarding(Step& step, std::string const& line, int type, bool on, std::string target, int rings,
                        bool force)
{
    if (!step.rules.hasStore()) {
        return 0;
    }
    if (!on && step.world.privacyMode != 0) {
        target.clear();
    }
    if (step.world.keysetActive) {
        if (step.world.line(line) != nullptr) {
            step.expect(of("line.setForwarding", line, type, on, target, rings));
        }
        if (!step.rules.isCurrentUser(line)) {
            return 5;
        }
    }
    step.rules.publishForwarding(type, on, target, rings, force);
    return 5;
}

void setForwarding(Step& step)
{
    auto const line = step.line();
    int const type = step.random.between(-1, 10);
    bool const on = step.flag();
    auto const target = forwardTarget(step);
    int const rings = step.random.between(-1, 4);
    bool const force = step.flag();
    int const expected = expectSetForwarding(step, line, type, on, target, rings, force);
    step.operation("setForwardingConfiguration",
                   {{"Line", line},
                    {"fwType", text(type)},
                    {"status", text(on)},
                    {"uri", target},
                    {"cfnrRingCount", text(rings)},
                    {"forceQORAUpdate", text(force)}},
                   expected, [&] {
                       return step.service().setForwardingConfiguration(line, static_cast<sfiForwardingType>(type), on,
                                                                        target, rings, force);
                   });
}

void getForwarding(Step& step)
{
    int const type = step.random.between(-1, 10);
    bool on = false;
    std::string target;
    int rings = 0;
    if (type >= 0 && type < 9) {
        on = step.world.forwardingOn[type] != 0;
        target = step.world.forwardingURI[type];
        rings = type == 6 ? step.world.noReplyTime : 0;
    } else {
        step.expect("failure: getForwardingConfiguration - unhandled forwarding type (" + text(type) + ")");
    }
    auto const word = resultWord(type >= 0 && type < 9 ? 5 : 0);
    step.request("getForwardingConfiguration", {{"fwType", text(type)}},
                 "<sfiResult>" + word + "</sfiResult><status>" + text(on) + "</status><uri>" + target +
                     "</uri><cfnrRingCount>" + text(rings) + "</cfnrRingCount>");
}

void removeForwarding(Step& step)
{
    step.rules.removeForwarding();
    step.act([&] { step.service().removeForwardingIfSet(); });
}

int expectSetDoNotDisturb(Step& step, std::string const& line, bool on)
{
    bool const enabled = step.world.dndEnabled || !step.world.dndEnabledAnswered;
    if (on && !enabled) {
        return 0;
    }
    if (step.world.keysetActive) {
        if (step.world.line(line) != nullptr) {
            step.expect(of("line.setDND", line, on));
        }
        if (!step.rules.isCurrentUser(line)) {
            return 5;
        }
    }
    step.rules.publishDoNotDisturb(line, on);
    return 5;
}

void setDoNotDisturb(Step& step)
{
    auto const line = step.line();
    bool const on = step.flag();
    int const expected = expectSetDoNotDisturb(step, line, on);
    step.operation("SetDoNotDisturb", {{"Line", line}, {"doNotDisturbOn", text(on)}}, expected,
                   [&] { return step.service().setDoNotDisturb(line, on); });
}

void setAgentState(Step& step)
{
    static std::array<std::string, 8> const kStates = {"loggedOn",         "loggedOff", "notReady", "ready",
                                                       "workingAfterCall", "LoggedOff", "",         "busy"};
    auto const line = step.line();
    auto const place = static_cast<std::size_t>(step.random.below(8));
    auto const& state = kStates[place];
    int expected = 0;
    if ((step.world.agentEnabled || state == "loggedOff") && place < 5) {
        step.rules.publishAgentState(line, state);
        expected = 5;
    }
    step.operation("SetAgentState", {{"Line", line}, {"agentState", state}}, expected,
                   [&] { return step.service().setAgentState(line, state); });
}

void changeMultiUser(Step& step)
{
    auto const line = step.line();
    step.expect(of("keyset.changeMultiUser", line));
    auto const base = line.substr(0, line.find('#'));
    FakeLine* const found = step.world.line(base);
    if (step.world.yes && found != nullptr && step.world.serverFeatures) {
        for (int type = 0; type < 10; ++type) {
            auto const rule = found->serverSettings.forwarding.find(static_cast<sfiForwardingType>(type));
            if (rule == found->serverSettings.forwarding.end()) {
                step.rules.publishForwarding(type, false, "", 0, false);
            } else {
                step.rules.publishForwarding(type, rule->second.status, rule->second.destination,
                                             rule->second.ringCount, false);
            }
        }
        step.rules.publishDoNotDisturb(base, found->serverSettings.dnd);
    }
    step.act([&] { step.service().changeMultiUser(line); });
}

Rules::Items drawItems(Step& step)
{
    static std::array<std::string, 13> const kKeys = {
        "call-dnd-activated", "cfu-activated", "cfu-address",          "cfb-activated",   "cfb-address",
        "cfnr-activated",     "cfnr-address",  "cfnr-delay",           "cfu-ext-address", "agent-state",
        "server-type",        "ring-melody",   "server-based-features"};
    static std::array<std::string, 3> const kValues = {"true", "false", "3"};
    // Another thread may be publishing: only data that passes in either case.
    int const first = step.subject.alone ? 0 : 8;
    int const count = step.subject.alone ? step.random.below(5) : 1;
    Rules::Items items;
    for (int i = 0; i < count; ++i) {
        auto const& key = kKeys[static_cast<std::size_t>(step.random.between(first, 12))];
        bool present = false;
        for (auto const& item : items) {
            present = present || item.first == key;
        }
        if (!present) {
            items.emplace_back(key, step.random.oneOf(kValues));
        }
    }
    return items;
}

ManageableData dataOf(Rules::Items const& items)
{
    ManageableData data;
    for (auto const& [key, value] : items) {
        DataNode node;
        node.setValue(value.c_str());
        data.setRootId(key, nullptr);
        data.populate(key, node);
    }
    return data;
}

void setData(Step& step)
{
    auto const items = drawItems(step);
    bool refused = false;
    auto const left = step.rules.filtered(items, refused);
    if (!refused) {
        step.rules.apply(left, false);
    }
    step.compare(refused ? 0 : step.world.applyAnswer, [&] {
        auto data = dataOf(items);
        return step.service().setData(data);
    });
}

void manageableDataChanged(Step& step)
{
    auto const items = drawItems(step);
    if (step.rules.kept().sipConfig) {
        step.rules.apply(items, true);
    }
    step.expect("recording.dataChanged()");
    step.act([&] {
        auto data = dataOf(items);
        step.service().manageableDataChanged(data);
    });
}

void getData(Step& step)
{
    step.expect("sipConfig.getData()");
    step.compare(step.world.number, [&] {
        ManageableData data;
        return step.service().getData(data);
    });
}

void resetUserData(Step& step)
{
    step.expect("sipConfig.resetUserData()");
    step.act([&] { step.service().resetUserData(); });
}

void cockpit(Step& step)
{
    auto const item = step.word();
    if (step.flag()) {
        auto const expected = step.world.hasCockpit && step.world.yes ? "value of " + item : "??";
        step.compare(expected, [&] { return step.service().getEACockpitData(item); });
        return;
    }
    auto const value = step.word();
    if (step.world.hasCockpit) {
        step.expect(of("cockpit.set", item, value));
    }
    step.compare(step.world.hasCockpit && step.world.yes, [&] { return step.service().setEACockpitData(item, value); });
}
}  // namespace

std::vector<Operation> const& settingOperations()
{
    static std::vector<Operation> const kOperations = {
        {"setForwardingConfiguration", 8, setForwarding},
        {"getForwardingConfiguration", 2, getForwarding},
        {"removeForwardingIfSet", 2, removeForwarding},
        {"setDoNotDisturb", 4, setDoNotDisturb},
        {"setAgentState", 4, setAgentState},
        {"changeMultiUser", 3, changeMultiUser},
        {"setData", 8, setData},
        {"manageableDataChanged", 3, manageableDataChanged},
        {"getData", 1, getData},
        {"resetUserData", 1, resetUserData},
        {"EACockpitData", 2, cockpit},
    };
    return kOperations;
}
