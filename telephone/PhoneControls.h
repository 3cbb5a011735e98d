// What a person does to the telephone and sees of it (TelephoneControls), by its lines, calls, keys and settings. The
// Telephone owns it; the console and scripts call it on their thread.
#pragma once

#include <future>

#include "telephone/console/TelephoneControls.h"

class Executable;
class MediaRecordingServiceIfc;

namespace telephone {

class CallEngine;
class Lines;
class LocalManagement;
class PhysicalInterface;

class PhoneControls : public TelephoneControls
{
public:
    // `keysUsable` is ready once the service hears of the keys: what a person does to them waits for it.
    PhoneControls(CallEngine& engine, Lines& lines, PhysicalInterface& physical, LocalManagement& management,
                  std::shared_future<void> keysUsable)
        : engine_(engine)
        , lines_(lines)
        , physical_(physical)
        , management_(management)
        , keysUsable_(std::move(keysUsable))
    {}

    // The service that records; called once, before anything is recorded.
    void setService(Executable* service);

    Rows lines() override;
    Rows calls() override;
    Rows keys() override;
    Rows lamps() override;
    Refusal press(std::string const& key) override;
    Refusal release(std::string const& key) override;
    Refusal hook(bool up) override;
    Refusal plug(std::string const& plug, bool in) override;
    Refusal lock(bool locked) override;
    Refusal record(std::string const& line, bool on) override;
    std::optional<std::string> lampMode(std::string const& lamp) override;
    Rows settings() override;
    std::optional<std::string> setting(std::string const& key) override;
    Refusal set(std::string const& key, std::string const& value) override;

private:
    // The physical interface, when a person can use it.
    PhysicalInterface& usable();

    CallEngine& engine_;
    Lines& lines_;
    PhysicalInterface& physical_;
    LocalManagement& management_;
    MediaRecordingServiceIfc* recording_ = nullptr;
    std::shared_future<void> const keysUsable_;
};

}  // namespace telephone
