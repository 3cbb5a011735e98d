// What stands around the store in tests: management data as others hand it over, and a framework that knows the local
// management alone.
#pragma once

#include <string>
#include <vector>

#include "platform/framework/SvcRTEContext.h"
#include "platform/management/ManageableData.h"
#include "telephone/management/Settings.h"

namespace telephone {

inline ManageableData dataOf(std::vector<Settings::Item> const& items)
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

class ContextWith : public SvcRTEContext
{
public:
    explicit ContextWith(Executable* management)
        : management_(management)
    {}
    Executable* findExecutable(std::string const& name) override
    {
        return name == "LocalMgmtIfc" ? management_ : nullptr;
    }

private:
    Executable* management_;
};

}  // namespace telephone
