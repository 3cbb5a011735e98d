// The surroundings of the store in tests: management data, and a framework that knows the local management alone.
#pragma once

#include <string>
#include <vector>

#include "platform/framework/SvcRTEContext.h"
#include "platform/management/ManageableData.h"
#include "telephone/management/LocalManagement.h"

namespace telephone {

inline ManageableData dataOf(std::vector<Settings::Item> const& items)
{
    ManageableData data;
    for (auto const& [key, value] : items) {
        putItem(data, key, value);
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
