/// @file
/// EACockpitHandler, answering "not there".
#pragma once

#include "platform/kit/Missing.h"
#include "platform/team/EACockpitHandler.h"

namespace kit {

/// An agent cockpit without items.
class DefaultEACockpitHandler : public EACockpitHandler
{
public:
    /// Deleted by whoever made it.
    virtual ~DefaultEACockpitHandler() = default;

    std::string getEACockpitData(std::string const& /*item*/) override
    {
        kMissing.report("getEACockpitData", "return the value of the item");
        return {};
    }
    bool setEACockpitData(std::string const& /*item*/, std::string const& /*value*/) override
    {
        kMissing.report("setEACockpitData", "set the item");
        return false;
    }

private:
    static constexpr Missing kMissing{"EACockpitHandler", "platform/team/EACockpitHandler.h"};
};

}  // namespace kit
