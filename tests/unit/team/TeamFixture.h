// Lines, keys and the whole team module, over a call engine and a service that a test plays.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>

#include "platform/physical/AuditoryDeviceIfc.h"
#include "telephone/team/FeatureToggles.h"
#include "telephone/team/Keyset.h"
#include "telephone/team/PickupHandler.h"
#include "telephone/team/Ringer.h"
#include "telephone/team/TeamFeatures.h"
#include "tests/unit/lines/ManualWatch.h"
#include "tests/unit/physical/KeysFixture.h"

namespace telephone {

class Bell final : public AuditoryDeviceIfc
{
public:
    void useHeadset(bool) override {}
    void setRinging(bool on) override
    {
        std::lock_guard const lock(mutex);
        ringing = on;
        changed.notify_all();
    }
    bool isRinging()
    {
        std::lock_guard const lock(mutex);
        return ringing;
    }
    bool waitForRinging()
    {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, std::chrono::seconds(10), [this] { return ringing; });
    }
    std::mutex mutex;
    std::condition_variable changed;
    bool ringing = false;
};

class TeamFixture : public KeysFixture
{
protected:
    ~TeamFixture() override
    {
        if (features_) {
            features_->stop();
        }
        if (ringer_) {
            ringer_->stop();
        }
    }

    void buildTeam(std::string const& pushAddress = {})
    {
        buildKeys();
        keyset_ = std::make_unique<Keyset>(*lines_, lines_->actions(), calls_, *settings_);
        ringer_ = std::make_unique<Ringer>(*lines_, calls_, timers_, *keyset_, bell_);
        ringer_->start();
        pickup_ = std::make_unique<PickupHandler>(*lines_, calls_);
        toggles_ = std::make_unique<FeatureToggles>(physical_->layout(), *settings_);
        features_ =
            std::make_unique<TeamFeatures>(TeamFeatures::Parts{*lines_, lines_->actions(), calls_, *keyset_, *toggles_,
                                                               *pickup_, *physical_, *settings_, watch_},
                                           pushAddress);
        features_->setCommsSrv(nullptr, &service_);
        features_->Activate();
    }

    ManualWatch watch_;
    Bell bell_;
    std::unique_ptr<Keyset> keyset_;
    std::unique_ptr<Ringer> ringer_;
    std::unique_ptr<PickupHandler> pickup_;
    std::unique_ptr<FeatureToggles> toggles_;
    std::unique_ptr<TeamFeatures> features_;
};

}  // namespace telephone
