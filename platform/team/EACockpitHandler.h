/// @file
/// The agent cockpit.
#pragma once

#include <string>

/// Named items of a call-centre agent's view. The team features own it. Thread: any.
class EACockpitHandler
{
public:
    /// Reads an item.
    /// @return Its value; empty when it does not exist.
    virtual std::string getEACockpitData(std::string const& item) = 0;
    /// Sets an item.
    /// @return false when the item or the value is refused.
    virtual bool setEACockpitData(std::string const& item, std::string const& value) = 0;

protected:
    /// Never deleted through this interface.
    ~EACockpitHandler() = default;
};
