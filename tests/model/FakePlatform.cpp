// The collaborators that the service finds by name, and the objects that it creates.
#include "FakePlatform.h"

#include <utility>

#include "platform/framework/Executable.h"
#include "platform/management/LocalMgmtIfc.h"
#include "platform/management/ManageableData.h"
#include "platform/management/MgmtAgentIfc.h"
#include "platform/management/SIPConfigManager.h"
#include "platform/physical/AuditoryDeviceIfc.h"
#include "platform/physical/PhysicalInterfaceServiceIfc.h"
#include "platform/recording/RecordingConfigManager.h"
#include "platform/services/CertificateMgmtSvcIfc.h"
#include "platform/services/DigitAnalysisServiceIfc.h"

using effect_text::of;

namespace {
World& world()
{
    return World::current();
}

class Found : public Executable
{
public:
    void init(Context& /*context*/) override {}
    void shutdown() override {}
};

class FakeAuditoryDevice final : public Found, public AuditoryDeviceIfc
{
public:
    void useHeadset(bool /*headset*/) override {}
    void setRinging(bool /*ringing*/) override {}
};

class FakeCertificates final : public Found, public CertificateMgmtSvcIfc
{
public:
    std::string trustedAuthoritiesFor(std::string const& /*address*/) override { return {}; }
};

class FakeDigitAnalysis final : public Found, public DigitAnalysisServiceIfc
{
public:
    bool isPermittedNumber(std::string const& number) override
    {
        world().effect(of("isPermitted", number));
        return world().yes;
    }
    bool isPermittedNumberInContext(std::string const& number, int context) override
    {
        world().effect(of("isPermittedInContext", number, context));
        return world().secondYes;
    }
    void queryNumberFlag(std::string const& number, std::string& answer) override
    {
        world().effect(of("queryNumberFlag", number, answer));
        answer = world().numberFlag;
    }
};

class FakePhysicalInterface final : public Found, public PhysicalInterfaceServiceIfc
{
public:
    bool subscribePhysicalEvents(physicalEventObserver* observer,
                                 std::vector<PhysDefs::SubscriptionGrp>& groups) override
    {
        subscribed("subscribePhysical", observer != nullptr, groups);
        return world().yes;
    }
    bool subscribeFunctionalEvents(functionalEventObserver* observer,
                                   std::vector<PhysDefs::SubscriptionGrp>& subscriptions) override
    {
        subscribed("subscribeFunctional", observer != nullptr, subscriptions);
        return world().yes;
    }
    void setLamp(int lamp, int mode, int colour, int option) override
    {
        world().effect(of("setLamp", lamp, mode, colour, option));
    }
    PhysDefs::plugStatus getHeadsetJackStatus() override { return world().jack; }
    void forwardingCleared() override { world().effect(of("forwardingCleared")); }

private:
    static void subscribed(char const* name, bool hasObserver, std::vector<PhysDefs::SubscriptionGrp> const& groups)
    {
        std::string list;
        for (auto const& group : groups) {
            list += of("", group.kind, group.identifier, group.action);
        }
        world().effect(of(name, hasObserver, list));
    }
};

class FakeLocalMgmt final : public Found, public LocalMgmtIfc
{
public:
    int setManageableData(ManageableData& data) override
    {
        DxlCollection ids;
        data.getRootIds(ids);
        for (std::size_t row = 0; row < ids.size(); ++row) {
            std::string value;
            auto const key = ids.value(row, ManageableData::kRootId);
            data.interogate(key, "", value);
            world().effect(of("store", key + "=" + value));
        }
        if (!world().publicationLockHeld) {
            world().violation("the store was written without the publication lock");
        }
        if (world().storeTellsService && world().service != nullptr) {
            world().service->setData(data);
        }
        return world().storeAnswer;
    }
    void registerForTag(MgmtAgentIfc* agent, char const* tag) override
    {
        world().effect(of("registerForTag", agent != nullptr, tag));
    }
};

template <class Fake>
Executable* one()
{
    static Fake instance;
    return &instance;
}
}  // namespace

Executable* FakeContext::findExecutable(std::string const& name)
{
    struct Row
    {
        char const* name;
        bool Registered::*present;
        Executable* (*instance)();
    };
    static constexpr Row kRows[] = {
        {"AuditoryDeviceIfc", &Registered::auditoryDevice, one<FakeAuditoryDevice>},
        {"PhysicalInterfaceServiceIfc", &Registered::physicalInterface, one<FakePhysicalInterface>},
        {"LocalMgmtIfc", &Registered::localMgmt, one<FakeLocalMgmt>},
        {"CertificateMgmtSvcIfc", &Registered::certificateMgmt, one<FakeCertificates>},
        {"DigitAnalysisServiceIfc", &Registered::digitAnalysis, one<FakeDigitAnalysis>},
    };
    for (auto const& row : kRows) {
        if (name == row.name && registered.*row.present) {
            bool const other = registered.wrongClass && row.present == &Registered::physicalInterface;
            return other ? one<FakeAuditoryDevice>() : row.instance();
        }
    }
    return nullptr;
}

class SIPConfigManager::State
{};

SIPConfigManager::SIPConfigManager(SvcRTEContext* /*context*/, MgmtAgentIfc* /*agent*/)
{
    world().effect(of("sipConfig.created"));
}

SIPConfigManager::~SIPConfigManager()
{
    world().effect(of("sipConfig.destroyed"));
}

void SIPConfigManager::initialise(bool apply)
{
    world().effect(of("sipConfig.initialise", apply));
}

void SIPConfigManager::switchOnLampsForForwarding()
{
    world().effect(of("sipConfig.lamps"));
}

void SIPConfigManager::checkDhcpProxyAddr()
{
    world().effect(of("sipConfig.dhcp"));
}

int SIPConfigManager::getData(ManageableData& /*data*/)
{
    world().effect(of("sipConfig.getData"));
    return world().number;
}

void SIPConfigManager::resetUserData()
{
    world().effect(of("sipConfig.resetUserData"));
}

class RecordingConfigManager::State
{};

RecordingConfigManager::RecordingConfigManager(SvcRTEContext* /*context*/)
{
    world().effect(of("recordingConfig.created"));
}

RecordingConfigManager::~RecordingConfigManager() = default;
