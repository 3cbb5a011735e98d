// Forwarding and do-not-disturb of one line, as set by its user or the call server. The configuration store keeps them
// under "line/ID/": "do-not-disturb" is a flag, "forwarding-N" (N: sfiForwardingType) is "on|off;RINGS;DESTINATION".
// RINGS is -1 for a rule that was never given a number of rings.
// Writing waits for the disk: do not hold the phone lock.
#pragma once

#include <string>

#include "platform/lines/Line.h"
#include "telephone/base/Refusal.h"

namespace telephone {

class Settings;

class ServerFeatures
{
public:
    ServerFeatures(Settings& settings, std::string const& lineID);

    Line::serverFeaturesSettings read() const;
    [[nodiscard]] Outcome<> setDoNotDisturb(bool on);
    // A number of rings out of range leaves the rule's present one.
    [[nodiscard]] Outcome<> setForwarding(sfiForwardingType type, Line::singleCFSetting const& rule);

private:
    std::string forwardingKey(sfiForwardingType type) const;

    Settings& settings_;
    std::string prefix_;
};

}  // namespace telephone
