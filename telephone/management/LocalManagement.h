// The way to the configuration store for everything that the framework runs: registered as "LocalMgmtIfc". The
// composition root owns it; it must outlive the agents that register.
//
// Any thread may call. No lock is held while an agent is told of a change; the thread that set a value tells.
#pragma once

#include <functional>
#include <mutex>
#include <vector>

#include "platform/framework/Executable.h"
#include "platform/management/LocalMgmtIfc.h"
#include "telephone/management/Settings.h"

namespace telephone {

class LocalManagement : public Executable, public LocalMgmtIfc
{
public:
    // Shows whether any forwarding rule is on.
    using ForwardingLamps = std::function<void(bool forwarding)>;

    explicit LocalManagement(Settings& settings);
    ~LocalManagement() override;

    // Executable
    void init(Context& context) override;
    // Agents are told nothing from now on.
    void shutdown() override;

    // LocalMgmtIfc. Writes all items or none; 0 also for data without items.
    int setManageableData(ManageableData& data) override;
    // A null agent or tag is ignored with a log line.
    void registerForTag(MgmtAgentIfc* agent, char const* tag) override;

    // Settings from a person or from management: they go through the agent, who takes out what may not be set now, and
    // come back by CSfi::ApplyManageableData. Refused when nothing was applied, with the reason.
    SettingOutcome offerManagementData(std::vector<Settings::Item> const& items);

    // The agent that is offered management data; null: none. SIPConfigManager tells it.
    void bindAgent(MgmtAgentIfc* agent);
    // The agent is going away: it is told and offered nothing any more.
    void forgetAgent(MgmtAgentIfc* agent);

    // The lamps follow the forwarding settings from the first call of `showForwarding` on.
    void setForwardingLamps(ForwardingLamps lamps);
    void showForwarding();

    Settings& settings() { return settings_; }

private:
    struct Registration
    {
        MgmtAgentIfc* agent;
        Settings::ListenerId listener;
    };

    void tell(MgmtAgentIfc& agent, std::vector<std::string> const& keys);
    void endListening(MgmtAgentIfc const* agent);  // null: of every agent

    Settings& settings_;
    std::mutex mutex_;
    std::vector<Registration> registrations_;
    MgmtAgentIfc* agent_ = nullptr;
    ForwardingLamps lamps_;
    Settings::ListenerId lampListener_ = 0;
};

}  // namespace telephone
