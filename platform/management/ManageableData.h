// A set of settings, each a root id with a value. Values of the configuration store travel in it both ways. The order
// of the items is that in which they were set.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "platform/management/DataNode.h"
#include "platform/management/DxlCollection.h"

class LocalMgmtIfc;

class ManageableData
{
public:
    // The name under which a row of getRootIds holds the root id.
    static constexpr char const* kRootId = "rootId";

    void getRootIds(DxlCollection& ids) const
    {
        for (auto const& item : items_) {
            ids.append({{kRootId, item.rootId}});
        }
    }
    // Reads the value of an item; `path` names a part of it and is empty for the whole. False when there is none.
    bool interogate(std::string const& rootId, std::string const& /*path*/, std::string& value) const
    {
        auto const found = find(rootId);
        if (found == items_.end()) {
            return false;
        }
        value = found->value;
        return true;
    }
    // Gives an item its value; false when its root id was not set before.
    bool populate(std::string const& rootId, DataNode& node)
    {
        auto const found = find(rootId);
        if (found == items_.end()) {
            return false;
        }
        items_[static_cast<std::size_t>(found - items_.begin())].value = node.value();
        return true;
    }
    void removeRootId(std::string& rootId)
    {
        items_.erase(
            std::remove_if(items_.begin(), items_.end(), [&rootId](Item const& item) { return item.rootId == rootId; }),
            items_.end());
    }
    // Adds an item; `localMgmt` may be null. An item that exists is kept as it is.
    void setRootId(std::string const& rootId, LocalMgmtIfc* /*localMgmt*/)
    {
        if (find(rootId) == items_.end()) {
            items_.push_back({rootId, {}});
        }
    }

private:
    struct Item
    {
        std::string rootId;
        std::string value;
    };

    std::vector<Item>::const_iterator find(std::string const& rootId) const
    {
        return std::find_if(items_.begin(), items_.end(),
                            [&rootId](Item const& item) { return item.rootId == rootId; });
    }

    std::vector<Item> items_;
};
