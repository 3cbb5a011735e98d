#include "platform/management/SIPConfigManager.h"

#include "telephone/framework/Log.h"
#include "telephone/framework/Refusals.h"
#include "telephone/management/LocalManagement.h"
#include "telephone/management/LogComponent.h"

namespace {

telephone::LocalManagement* findManagement(SvcRTEContext* context)
{
    auto* const management = telephone::LocalManagement::find(context);
    if (management == nullptr) {
        telephone::log(kLogFailure, telephone::kComponent,
                       "no configuration store is registered as LocalMgmtIfc: SIP settings are not managed");
    }
    return management;
}

}  // namespace

// The store is looked up once: the framework keeps its executables for as long as services run.
class SIPConfigManager::State
{
public:
    State(SvcRTEContext* context, MgmtAgentIfc* agent)
        : management(findManagement(context))
        , agent_(agent)
    {
        if (management != nullptr) {
            management->bindAgent(agent);
        }
    }
    ~State()
    {
        if (management != nullptr) {
            management->forgetAgent(agent_);
        }
    }
    State(State const&) = delete;
    State& operator=(State const&) = delete;

    telephone::LocalManagement* const management;

private:
    MgmtAgentIfc* const agent_;
};

SIPConfigManager::SIPConfigManager(SvcRTEContext* context, MgmtAgentIfc* agent)
    : state_(std::make_unique<State>(context, agent))
{}

SIPConfigManager::~SIPConfigManager() = default;

// Settings are in force as soon as they are stored; only another program's changes have to be put into force.
void SIPConfigManager::initialise(bool apply)
{
    if (state_->management != nullptr && apply) {
        state_->management->settings().refresh();
    }
}

// Nothing to do: the forwarding lamp follows the settings from the start.
void SIPConfigManager::switchOnLampsForForwarding() {}

void SIPConfigManager::checkDhcpProxyAddr()
{
    telephone::log(telephone::kLogInfo, telephone::kComponent,
                   "no proxy address from DHCP: this telephone does not use DHCP, its registrar is the configured one");
}

int SIPConfigManager::getData(ManageableData& data)
{
    if (state_->management == nullptr) {
        return 0;
    }
    auto const& settings = state_->management->settings();
    auto const asked = telephone::itemsOf(data);
    int known = 0;
    for (auto const& [key, value] : asked.empty() ? settings.all() : asked) {
        if (telephone::findSettingRow(key) == nullptr) {
            continue;
        }
        telephone::putItem(data, key, settings.text(key));
        ++known;
    }
    return known == 0 ? 0 : 1;
}

void SIPConfigManager::resetUserData()
{
    if (state_->management == nullptr) {
        return;
    }
    if (!telephone::reportIfRefused(telephone::kComponent, state_->management->settings().resetUserSettings())) {
        telephone::log(telephone::kLogInfo, telephone::kComponent,
                       "the user settings have their standard values again");
    }
}
