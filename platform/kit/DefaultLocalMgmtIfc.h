/// @file
/// LocalMgmtIfc, answering "not there".
#pragma once

#include "platform/framework/Executable.h"
#include "platform/kit/Missing.h"
#include "platform/management/LocalMgmtIfc.h"
#include "platform/management/ManageableData.h"
#include "platform/management/MgmtAgentIfc.h"

namespace kit {

/// A configuration store that refuses to store.
///
/// It is an executable, because the service finds it by the name "LocalMgmtIfc"; give it to ServiceHost::provide.
class DefaultLocalMgmtIfc : public Executable, public LocalMgmtIfc
{
public:
    /// Deleted by whoever made it.
    ~DefaultLocalMgmtIfc() override = default;

    void init(Context& /*context*/) override {}
    void shutdown() override {}

    int setManageableData(ManageableData& /*data*/) override
    {
        kMissing.report("setManageableData", "write the items, all or none, and return 1");
        return 0;
    }
    void registerForTag(MgmtAgentIfc* /*agent*/, char const* /*tag*/) override
    {
        kMissing.report("registerForTag", "tell the agent each change under the tag");
    }

private:
    static constexpr Missing kMissing{"LocalMgmtIfc", "platform/management/LocalMgmtIfc.h"};
};

}  // namespace kit
