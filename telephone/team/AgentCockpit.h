// The items of a call-centre agent's view, kept in the configuration store under "agent-cockpit/". TeamFeatures owns
// it. Any thread, without the phone lock, because writing waits for the disk.
#pragma once

#include "platform/team/EACockpitHandler.h"

namespace telephone {

class Settings;

class AgentCockpit final : public EACockpitHandler
{
public:
    explicit AgentCockpit(Settings& settings)
        : settings_(settings)
    {}

    std::string getEACockpitData(std::string const& item) override;
    // Refused for an item without a name, and when the store refuses.
    bool setEACockpitData(std::string const& item, std::string const& value) override;

private:
    Settings& settings_;
};

}  // namespace telephone
