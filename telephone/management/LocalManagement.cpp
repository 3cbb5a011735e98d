#include "telephone/management/LocalManagement.h"

#include <algorithm>
#include <utility>

#include "platform/management/ManageableData.h"
#include "platform/management/MgmtAgentIfc.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/Refusals.h"
#include "telephone/management/LogComponent.h"
#include "telephone/management/SettingCheck.h"

namespace telephone {

namespace {

constexpr char const* kNoItems = "the management data contain no items";

void put(ManageableData& data, std::string const& key, std::string value)
{
    DataNode node;
    node.setValue(value);
    data.setRootId(key, nullptr);
    data.populate(key, node);
}

Outcome<> setAll(Settings& settings, std::vector<Settings::Item> const& items)
{
    return items.empty() ? refuse(RefusalKind::kBadInput, kNoItems) : settings.setAll(items);
}

}  // namespace

LocalManagement::LocalManagement(Settings& settings)
    : settings_(settings)
{}

LocalManagement::~LocalManagement()
{
    shutdown();
}

void LocalManagement::init(Context& /*context*/) {}

void LocalManagement::shutdown()
{
    endListening(nullptr);
    std::lock_guard const guard(mutex_);
    agent_ = nullptr;
}

int LocalManagement::setManageableData(ManageableData& data)
{
    auto const outcome = setAll(settings_, itemsOf(data));
    if (!outcome) {
        reportRefusal(kComponent, outcome.error());
    }
    return outcome ? 1 : 0;
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
        put(data, key, settings_.text(key));
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
        put(data, key, value);
    }
    std::unique_lock guard(mutex_);
    auto* const agent = agent_;
    guard.unlock();
    if (agent == nullptr) {
        return refuse(RefusalKind::kWrongState, "no service takes management data: start the service first");
    }
    if (agent->setData(data) == 0) {
        return refuse(RefusalKind::kNotPermitted,
                      "the service refused the data: the call server controls these settings, or the store refused "
                      "them; the log says which");
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
