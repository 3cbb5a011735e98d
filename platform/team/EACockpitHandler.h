// The agent cockpit: named items of a call-centre agent's view.
#pragma once

#include <string>

class EACockpitHandler
{
public:
    // Empty when there is no such item.
    virtual std::string getEACockpitData(std::string const& item) = 0;
    virtual bool setEACockpitData(std::string const& item, std::string const& value) = 0;

protected:
    ~EACockpitHandler() = default;
};
