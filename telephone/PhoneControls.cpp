#include "telephone/PhoneControls.h"

#include "MediaRecordingServiceIfc.h"
#include "platform/framework/Executable.h"
#include "telephone/StateReader.h"
#include "telephone/exchange/Exchange.h"
#include "telephone/faults/Faults.h"
#include "telephone/framework/Refusals.h"
#include "telephone/management/LocalManagement.h"
#include "telephone/management/Settings.h"
#include "telephone/physical/PhysicalInterface.h"
#include "telephone/time/Gate.h"

namespace telephone {

namespace {

constexpr std::chrono::seconds kLongestStart{5};

TelephoneControls::Rows rowsOf(std::vector<Settings::Item> const& settings)
{
    TelephoneControls::Rows rows;
    for (auto const& [key, value] : settings) {
        rows.push_back(std::string(key).append(" = ").append(value));
    }
    return rows;
}

}  // namespace

PhysicalInterface& PhoneControls::usable()
{
    keysUsable_.waitFor(kLongestStart);
    return physical_;
}

TelephoneState PhoneControls::state()
{
    return reader_.read();
}

Outcome<> PhoneControls::press(std::string const& key)
{
    return usable().press(key);
}

Outcome<> PhoneControls::release(std::string const& key)
{
    return usable().release(key);
}

Outcome<> PhoneControls::hook(bool up)
{
    return usable().hook(up);
}

Outcome<> PhoneControls::plug(std::string const& plug, bool in)
{
    return usable().plug(plug, in);
}

Outcome<> PhoneControls::lock(bool locked)
{
    return management_.settings().set(SettingNames::kPhoneLocked, locked ? "true" : "false");
}

void PhoneControls::setService(Executable* service)
{
    recording_ = dynamic_cast<MediaRecordingServiceIfc*>(service);
}

Outcome<> PhoneControls::record(std::string const& line, bool on)
{
    if (recording_ == nullptr) {
        return refuse(RefusalKind::kNotSupported, "the service does not record calls");
    }
    RefusalCollector collector;
    bool const done = on ? recording_->activateRecording(line) : recording_->deactivateRecording(line);
    return done ? Outcome<>()
                : collector.first({RefusalKind::kWrongState, "the service refused to start or stop the recording"});
}

Outcome<exchange::Exchange*> PhoneControls::builtInExchange() const
{
    if (exchange_ == nullptr) {
        return refuse(RefusalKind::kNotSupported, "this telephone runs without the built-in exchange");
    }
    return exchange_;
}

Outcome<> PhoneControls::call(std::string const& to, std::string const& from, std::string const& name)
{
    return builtInExchange().and_then([&](exchange::Exchange* found) { return found->callNumber(from, to, name); });
}

Outcome<> PhoneControls::setMessages(std::string const& number, int fresh, int old)
{
    // A negative count becomes one that is too large.
    sip::MessageCounts const counts{static_cast<unsigned>(fresh), static_cast<unsigned>(old), 0, 0};
    // Unsolicited: for a telephone that is configured not to subscribe. One that has subscribed ignores the repetition.
    return builtInExchange().and_then(
        [&](exchange::Exchange* found) { return found->setMessages(number, counts, true); });
}

Outcome<> PhoneControls::setRegistrar(std::string const& conduct)
{
    return builtInExchange().and_then([&conduct](exchange::Exchange* found) {
        return exchange::RegistrarConduct::read(conduct).map(
            [found](exchange::RegistrarConduct const& read) { found->setRegistrar(read); });
    });
}

Outcome<> PhoneControls::defineNumber(std::string const& number, std::string const& steps)
{
    return builtInExchange().and_then([&](exchange::Exchange* found) { return found->define(number, steps); });
}

Outcome<> PhoneControls::playSteps(std::string const& number, std::string const& steps)
{
    return builtInExchange().and_then([&](exchange::Exchange* found) { return found->play(number, steps); });
}

Outcome<TelephoneControls::Rows> PhoneControls::exchangeNumbers()
{
    return builtInExchange().map([](exchange::Exchange* found) { return found->numbers(); });
}

Outcome<> PhoneControls::addFault(std::string const& order)
{
    return faults_.add(order);
}

Outcome<> PhoneControls::endFault(std::string const& name)
{
    return faults_.end(name);
}

TelephoneControls::Rows PhoneControls::faults()
{
    return faults_.rows();
}

void PhoneControls::watchLamps(std::function<void()> changed)
{
    physical_.watchLamps(std::move(changed));
}

std::optional<std::string> PhoneControls::lampMode(std::string const& lamp)
{
    return physical_.lampMode(lamp);
}

TelephoneControls::Rows PhoneControls::settings()
{
    return rowsOf(management_.settings().all());
}

Outcome<TelephoneControls::Rows> PhoneControls::missingSettings()
{
    return management_.settings().missingInStore().map(rowsOf);
}

std::optional<std::string> PhoneControls::setting(std::string const& key)
{
    if (findSettingRow(key) == nullptr) {
        return std::nullopt;
    }
    return management_.settings().text(key);
}

Outcome<> PhoneControls::set(std::string const& key, std::string const& value)
{
    return management_.offerManagementData({{key, value}});
}

}  // namespace telephone
