// Gives everything that the framework runs access to the configuration store: registered as "LocalMgmtIfc". Telephone
// owns it; it must outlive the agents that register.
//
// Any thread may call. The thread that set a value notifies the agents, with no lock held.
#pragma once

#include <mutex>
#include <vector>

#include "platform/framework/Executable.h"
#include "platform/management/LocalMgmtIfc.h"
#include "telephone/management/Settings.h"

namespace telephone {

// The items of management data, in their order.
std::vector<Settings::Item> itemsOf(ManageableData const& data);
void putItem(ManageableData& data, std::string const& key, std::string value);

class LocalManagement : public Executable, public LocalMgmtIfc
{
public:
    // The one registered with the framework; null without a store.
    static LocalManagement* find(SvcRTEContext* context);

    explicit LocalManagement(Settings& settings);
    ~LocalManagement() override;

    // Executable
    void init(Context& /*context*/) override {}
    // No agent is notified from now on.
    void shutdown() override;

    // LocalMgmtIfc. Writes all items or none. 0: refused, as are data without items; the refusal is reported.
    int setManageableData(ManageableData& data) override;
    // A null agent or tag is logged and ignored.
    void registerForTag(MgmtAgentIfc* agent, char const* tag) override;

    // Settings from a person or from management. They pass through the agent, which removes items that may not be set
    // now, and return through CSfi::ApplyManageableData. Refused if nothing was applied.
    [[nodiscard]] Outcome<> offerManagementData(std::vector<Settings::Item> const& items);

    // Sets the agent that receives management data; null: none. Called by SIPConfigManager.
    void bindAgent(MgmtAgentIfc* agent);
    // The agent is going away: it receives nothing more.
    void forgetAgent(MgmtAgentIfc* agent);

    Settings& settings() { return settings_; }

private:
    struct Registration
    {
        MgmtAgentIfc* agent;
        Settings::ListenerId listener;
    };

    void tell(MgmtAgentIfc& agent, std::vector<std::string> const& keys);
    void endListening(MgmtAgentIfc const* agent);  // null: all agents

    Settings& settings_;
    std::mutex mutex_;
    std::vector<Registration> registrations_;
    MgmtAgentIfc* agent_ = nullptr;
};

}  // namespace telephone
