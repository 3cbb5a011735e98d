// Lets a person use the telephone (TelephoneControls) through its lines, calls, keys and settings. Telephone owns it;
// the console and scripts call it on their thread.
#pragma once

#include "telephone/access/TelephoneControls.h"

class Executable;
class MediaRecordingServiceIfc;

namespace telephone {

class Faults;
class LocalManagement;
class Gate;
class PhysicalInterface;
class StateReader;
namespace exchange {
class Exchange;
}

class PhoneControls : public TelephoneControls
{
public:
    // `exchange` is null in a telephone without one. `keysUsable` becomes ready when the service has subscribed to the
    // keys; operations on keys wait for it.
    PhoneControls(PhysicalInterface& physical, LocalManagement& management, StateReader const& reader,
                  exchange::Exchange* exchange, Faults& faults, Gate& keysUsable)
        : physical_(physical)
        , management_(management)
        , reader_(reader)
        , exchange_(exchange)
        , faults_(faults)
        , keysUsable_(keysUsable)
    {}

    // The service that records calls; set before anything is recorded.
    void setService(Executable* service);

    TelephoneState state() override;
    Outcome<> press(std::string const& key) override;
    Outcome<> release(std::string const& key) override;
    Outcome<> hook(bool up) override;
    Outcome<> plug(std::string const& plug, bool in) override;
    Outcome<> lock(bool locked) override;
    Outcome<> record(std::string const& line, bool on) override;
    Outcome<> call(std::string const& to, std::string const& from, std::string const& name) override;
    Outcome<> setMessages(std::string const& number, int fresh, int old) override;
    Outcome<> setRegistrar(std::string const& conduct) override;
    Outcome<> defineNumber(std::string const& number, std::string const& steps) override;
    Outcome<> playSteps(std::string const& number, std::string const& steps) override;
    Outcome<Rows> exchangeNumbers() override;
    Outcome<> addFault(std::string const& order) override;
    Outcome<> endFault(std::string const& name) override;
    Rows faults() override;
    void watchLamps(std::function<void()> changed) override;
    std::optional<std::string> lampMode(std::string const& lamp) override;
    Rows settings() override;
    std::optional<std::string> setting(std::string const& key) override;
    Outcome<> set(std::string const& key, std::string const& value) override;
    Outcome<Rows> missingSettings() override;

private:
    // The physical interface, once its keys are usable.
    PhysicalInterface& usable();
    Outcome<exchange::Exchange*> builtInExchange() const;

    PhysicalInterface& physical_;
    LocalManagement& management_;
    StateReader const& reader_;
    exchange::Exchange* exchange_;
    Faults& faults_;
    MediaRecordingServiceIfc* recording_ = nullptr;
    Gate& keysUsable_;
};

}  // namespace telephone
