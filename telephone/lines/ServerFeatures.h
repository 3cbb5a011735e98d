// Forwarding and do-not-disturb of one line as its user or the call server set them, kept in the configuration store
// under "line/ID/": "do-not-disturb" holds a flag, "forwarding-N" (N: sfiForwardingType) holds "on|off;RINGS;TO".
// Reading is quick; writing waits for the disk, so not with the phone lock held.
#pragma once

#include <string>

#include "platform/lines/Line.h"

namespace telephone {

class Settings;

class ServerFeatures
{
public:
    ServerFeatures(Settings& settings, std::string const& lineID);

    Line::serverFeaturesSettings read() const;
    void setDoNotDisturb(bool on);
    void setForwarding(sfiForwardingType type, Line::singleCFSetting const& rule);

private:
    void write(std::string const& name, std::string const& value);

    Settings& settings_;
    std::string prefix_;
};

}  // namespace telephone
