#include "telephone/management/LocalManagement.h"

#include <algorithm>
#include <utility>

#include "platform/management/ManageableData.h"
#include "platform/management/MgmtAgentIfc.h"
#include "telephone/framework/Log.h"
#include "telephone/management/ForwardingKeys.h"
#include "telephone/management/SettingCheck.h"

namespace telephone {

namespace {

constexpr std::string_view kComponent = "management";

void put(ManageableData& data, std::string const& key, std::string value)
{
    DataNode node;
    node.setValue(value);
    data.setRootId(key, nullptr);
    data.populate(key, node);
}

SettingOutcome checkOffered(Settings::Item const& item)
{
    std::string normal;
    auto checked = checkSetting(item.first, item.second, normal);
    if (checked && findSettingRow(item.first)->access == SettingAccess::kReadOnly) {
        return {SettingRefusal::kReadOnly, fmt::format("\"{}\" is read-only", item.first)};
    }
    return checked;
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
    std::unique_lock guard(mutex_);
    agent_ = nullptr;
    auto const lampListener = std::exchange(lampListener_, 0);
    guard.unlock();
    settings_.endListening(lampListener);
}

int LocalManagement::setManageableData(ManageableData& data)
{
    auto const items = itemsOf(data);
    if (items.empty()) {
        log(kLogWarning, kComponent, "refused: management data without items");
        return 0;
    }
    return settings_.setAll(items) ? 1 : 0;
}

void LocalManagement::registerForTag(MgmtAgentIfc* agent, char const* tag)
{
    if (agent == nullptr || tag == nullptr) {
        log(kLogFailure, kComponent, "registration for changes ignored: no agent or no tag");
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

SettingOutcome LocalManagement::offerManagementData(std::vector<Settings::Item> const& items)
{
    if (items.empty()) {
        return {SettingRefusal::kWrongValue, "management data without items"};
    }
    ManageableData data;
    for (auto const& item : items) {
        if (auto checked = checkOffered(item); !checked) {
            return checked;
        }
        put(data, item.first, item.second);
    }
    std::unique_lock guard(mutex_);
    auto* const agent = agent_;
    guard.unlock();
    if (agent == nullptr) {
        return {SettingRefusal::kStoreFailed, "no service takes management data: start the service first"};
    }
    if (agent->setData(data) == 0) {
        return {SettingRefusal::kReadOnly, "the service refused the data: the call server holds these settings, or the "
                                           "store refused them; the log says which"};
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

void LocalManagement::setForwardingLamps(ForwardingLamps lamps)
{
    std::lock_guard const guard(mutex_);
    lamps_ = std::move(lamps);
}

void LocalManagement::showForwarding()
{
    std::unique_lock guard(mutex_);
    auto const lamps = lamps_;
    if (!lamps) {
        return;
    }
    if (lampListener_ == 0) {
        lampListener_ = settings_.listenToTag(SettingTags::kForwarding, [this](auto const&) { showForwarding(); });
    }
    guard.unlock();
    lamps(isForwarding(settings_));
}

}  // namespace telephone
