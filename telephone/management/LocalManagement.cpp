#include "telephone/management/LocalManagement.h"

#include <algorithm>
#include <utility>

#include "platform/framework/SvcRTEContext.h"
#include "platform/management/DxlCollection.h"
#include "platform/management/ManageableData.h"
#include "platform/management/MgmtAgentIfc.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/Refusals.h"
#include "telephone/management/LogComponent.h"
#include "telephone/management/SettingCheck.h"

namespace telephone {

namespace {

constexpr char const* kNoItems = "the management data contain no items";

}  // namespace

std::vector<Settings::Item> itemsOf(ManageableData const& data)
{
    DxlCollection ids;
    data.getRootIds(ids);
    std::vector<Settings::Item> items;
    for (std::size_t row = 0; row < ids.size(); ++row) {
        auto key = ids.value(row, ManageableData::kRootId);
        std::string value;
        data.interogate(key, "", value);
        items.emplace_back(std::move(key), std::move(value));
    }
    return items;
}

void putItem(ManageableData& data, std::string const& key, std::string value)
{
    DataNode node;
    node.setValue(value);
    data.setRootId(key, nullptr);
    data.populate(key, node);
}

LocalManagement* LocalManagement::find(SvcRTEContext* context)
{
    return context == nullptr ? nullptr : dynamic_cast<LocalManagement*>(context->findExecutable("LocalMgmtIfc"));
}

LocalManagement::LocalManagement(Settings& settings)
    : settings_(settings)
{}

LocalManagement::~LocalManagement()
{
    shutdown();
}

void LocalManagement::shutdown()
{
    endListening(nullptr);
    std::lock_guard const guard(mutex_);
    agent_ = nullptr;
}

int LocalManagement::setManageableData(ManageableData& data)
{
    auto const items = itemsOf(data);
    auto const outcome = items.empty() ? refuse(RefusalKind::kBadInput, kNoItems) : settings_.setAll(items);
    return reportIfRefused(kComponent, outcome) ? 0 : 1;
}

void LocalManagement::registerForTag(MgmtAgentIfc* agent, char const* tag)
{
    if (agent == nullptr || tag == nullptr) {
        log(kLogFailure, kComponent, "a registration for changes has no agent or no tag");
        return;
    }
    auto const listener =
        settings_.listenToTag(tag, [this, agent](std::vector<std::string> const& keys) { tell(*agent, keys); });
    std::lock_guard const guard(mutex_);
    registrations_.push_back({agent, listener});
}

void LocalManagement::tell(MgmtAgentIfc& agent, std::vector<std::string> const& keys)
{
    ManageableData data;
    for (auto const& key : keys) {
        putItem(data, key, settings_.text(key));
    }
    agent.manageableDataChanged(data);
}

Outcome<> LocalManagement::offerManagementData(std::vector<Settings::Item> const& items)
{
    if (items.empty()) {
        return refuse(RefusalKind::kBadInput, kNoItems);
    }
    ManageableData data;
    for (auto const& [key, value] : items) {
        if (auto checked = checkChange(key, value); !checked) {
            return tl::unexpected(std::move(checked.error()));
        }
        putItem(data, key, value);
    }
    std::unique_lock guard(mutex_);
    auto* const agent = agent_;
    guard.unlock();
    if (agent == nullptr) {
        return refuse(RefusalKind::kWrongState, "no service takes management data: start the service first");
    }
    RefusalCollector collector;
    if (agent->setData(data) == 0) {
        return collector.first(
            {RefusalKind::kNotPermitted, "the service refused the data: the call server controls these settings"});
    }
    return {};
}

void LocalManagement::bindAgent(MgmtAgentIfc* agent)
{
    std::lock_guard const guard(mutex_);
    agent_ = agent;
}

void LocalManagement::forgetAgent(MgmtAgentIfc* agent)
{
    endListening(agent);
    std::lock_guard const guard(mutex_);
    if (agent_ == agent) {
        agent_ = nullptr;
    }
}

void LocalManagement::endListening(MgmtAgentIfc const* agent)
{
    std::vector<Registration> ended;
    {
        std::lock_guard const guard(mutex_);
        auto const kept =
            std::stable_partition(registrations_.begin(), registrations_.end(),
                                  [agent](Registration const& one) { return agent != nullptr && one.agent != agent; });
        ended.assign(kept, registrations_.end());
        registrations_.erase(kept, registrations_.end());
    }
    for (auto const& registration : ended) {
        settings_.endListening(registration.listener);
    }
}

}  // namespace telephone
