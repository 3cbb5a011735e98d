/// @file
/// SfiMCAMapper, answering "not there".
#pragma once

#include "platform/kit/Missing.h"
#include "platform/sfi/SfiMCAMapper.h"

namespace kit {

/// The appearances of a telephone whose lines have none.
class DefaultSfiMCAMapper : public SfiMCAMapper
{
public:
    /// Deleted by whoever made it.
    virtual ~DefaultSfiMCAMapper() = default;

    void assignCallToLine(int /*lineID*/, int /*callID*/, int& /*appearanceIndex*/) override
    {
        kMissing.report("assignCallToLine", "record the call on the virtual line");
    }
    int findFirstFreeVirtualLine(int /*lineID*/) const override
    {
        kMissing.report("findFirstFreeVirtualLine", "find an appearance without a call");
        return 0;
    }
    bool findVirtualLineforCallID(int /*callID*/, int& /*lineID*/, int& /*appearanceIndex*/) const override
    {
        kMissing.report("findVirtualLineforCallID", "look the call up");
        return false;
    }

private:
    static constexpr Missing kMissing{"SfiMCAMapper", "platform/sfi/SfiMCAMapper.h"};
};

}  // namespace kit
