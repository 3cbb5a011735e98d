/// @file
/// A set of settings, each a root id with a value.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "platform/management/DataNode.h"
#include "platform/management/DxlCollection.h"

class LocalMgmtIfc;

/// Carries values of the configuration store, both ways. The items keep the order in which they were set. Thread: one
/// at a time.
class ManageableData
{
public:
    static constexpr char const* kRootId = "rootId";  ///< the name under which a row of getRootIds holds the root id

    /// Appends a row for each item.
    void getRootIds(DxlCollection& ids) const
    {
        for (auto const& item : items_) {
            ids.append({{kRootId, item.rootId}});
        }
    }
    /// Reads the value of an item.
    /// - `rootId`: the item
    /// - `path`: names a part of the value and is empty for the whole; ignored
    /// - `value`: receives the value; left as it is when the item does not exist
    /// @return false when the item does not exist.
    bool interogate(std::string const& rootId, std::string const& /*path*/, std::string& value) const
    {
        auto const found = find(rootId);
        if (found == items_.end()) {
            return false;
        }
        value = found->value;
        return true;
    }
    /// Gives an item its value.
    /// @param rootId the item, which setRootId has added
    /// @param node the value
    /// @return false when the item does not exist.
    bool populate(std::string const& rootId, DataNode& node)
    {
        auto const found = find(rootId);
        if (found == items_.end()) {
            return false;
        }
        items_[static_cast<std::size_t>(found - items_.begin())].value = node.value();
        return true;
    }
    /// Removes an item; nothing when it does not exist.
    void removeRootId(std::string& rootId)
    {
        items_.erase(
            std::remove_if(items_.begin(), items_.end(), [&rootId](Item const& item) { return item.rootId == rootId; }),
            items_.end());
    }
    /// Adds an item with an empty value; an item that exists is kept as it is. `localMgmt` is ignored and may be null.
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
