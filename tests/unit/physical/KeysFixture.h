// Lines with keys, lamps and a service that passes line keys on as the loaded service does.
#pragma once

#include <memory>
#include <string>

#include "MockTeamService.h"
#include "telephone/physical/KeyApplication.h"
#include "telephone/physical/KeyLamps.h"
#include "telephone/physical/PhysicalInterface.h"
#include "tests/unit/lines/LinesFixture.h"

namespace telephone {

class KeysFixture : public LinesFixture
{
protected:
    // Keys 1 to 3 are line keys, 4 is a direct-station key, 5 a busy-lamp field, then one key for each other function.
    KeysFixture()
    {
        configuration_.keys = {
            {1, "line", "4711", "", false},   {2, "line", "4712", "", false},  {3, "line", "4713", "", false},
            {4, "dss", "102", "", false},     {5, "blf", "103", "", false},    {6, "dnd", "", "", false},
            {7, "forwarding", "", "", false}, {8, "messages", "", "", false},  {9, "mute", "", "", false},
            {10, "headset", "", "", false},   {11, "toggle", "1", "", false},  {12, "release", "", "", false},
            {13, "hold", "", "", false},      {14, "transfer", "", "", false},
        };
    }
    ~KeysFixture() override
    {
        if (physical_) {
            application_->setService(nullptr);
            physical_->shutdown();
            lamps_->stop();
        }
    }

    void buildKeys()
    {
        build();
        physical_ = std::make_unique<PhysicalInterface>(configuration_);
        lamps_ = std::make_unique<KeyLamps>(*physical_, *lines_, calls_, *settings_);
        application_ = std::make_unique<KeyApplication>(*physical_, *lamps_, *lines_, calls_, *settings_);
        playService();
        application_->setService(&service_);
        lamps_->start();
    }

    void press(int key)
    {
        EXPECT_TRUE(physical_->press(std::to_string(key)));
        physical_->flush();
    }
    void hook(bool up)
    {
        EXPECT_TRUE(physical_->hook(up));
        physical_->flush();
    }
    std::string lamp(std::string const& key) { return physical_->lampMode(key).value_or("no lamp"); }

    // As the engine does: tells the lines of a call first, then the lamps.
    void changeCall(CallSnapshot const& call)
    {
        calls_.change(*lines_, call);
        std::lock_guard const lock(calls_);
        lamps_->callChanged(call, nullptr);
    }
    void changeCall(int recordLine, int callID, sfiCallState state) { changeCall(callOn(recordLine, callID, state)); }

    testing::NiceMock<MockTeamService> service_{calls_};
    std::unique_ptr<PhysicalInterface> physical_;
    std::unique_ptr<KeyLamps> lamps_;
    std::unique_ptr<KeyApplication> application_;

private:
    void playService()
    {
        using testing::_;
        ON_CALL(service_, lineKeyPressedFPK(_)).WillByDefault([this](int key) {
            service_.note("line key " + std::to_string(key));
            if (auto* const line = lines_->getLineForFPK(key)) {
                line->keyPressed();
            }
        });
        ON_CALL(service_, lineKeyPressed(_)).WillByDefault([this](std::string const& lineURI) {
            service_.note("line " + lineURI);
            lines_->getLine(lineURI)->keyPressed();
        });
        ON_CALL(service_, dssKeyPressedFPK(_, _, _, _))
            .WillByDefault([this](int key, EDSSContext context, std::string const&, std::string const& ringing) {
                service_.note("dss " + std::to_string(key) + " context " + std::to_string(context) + " " + ringing);
            });
        ON_CALL(service_, blfKeyPressedFPK(_, _)).WillByDefault([this](int key, bool transfer) {
            service_.note("blf " + std::to_string(key) + (transfer ? " transfer" : ""));
        });
        ON_CALL(service_, ftToggleKeyPressed(_)).WillByDefault([this](int key) {
            service_.note("toggle " + std::to_string(key));
        });
        ON_CALL(service_, answerCall(_, _)).WillByDefault([this](std::string const& lineURI, int callID) {
            service_.note("answer " + lineURI + " " + std::to_string(callID));
            return sfiSuccess;
        });
        ON_CALL(service_, callClear(_, _, _))
            .WillByDefault([this](std::string const& lineURI, int callID, CSTAEventCause cause) {
                service_.note("clear " + lineURI + " " + std::to_string(callID) + " " + std::to_string(cause));
                return sfiSuccess;
            });
        ON_CALL(service_, setMicrophoneMute(_)).WillByDefault([this](bool mute) {
            service_.note(mute ? "mute" : "unmute");
            muted_ = mute;
            std::lock_guard const lock(calls_);
            lamps_->microphoneMuteChanged(mute);
            return sfiSuccess;
        });
        ON_CALL(service_, getMicrophoneMute(_)).WillByDefault([this](bool& mute) {
            mute = muted_;
            return sfiSuccess;
        });
    }

    bool muted_ = false;
};

}  // namespace telephone
