// The parts of a telephone, in the order in which they are made: each may use those before it. Destroyed in the
// opposite order, after stop has ended what works by itself.
#pragma once

#include <future>
#include <memory>
#include <string>

#include "PhoneControls.h"
#include "RegistrationWait.h"
#include "configuration/Configuration.h"
#include "exchange/Exchange.h"
#include "framework/EventDispatcher.h"
#include "framework/Invoker.h"
#include "framework/Proxy.h"
#include "framework/RequestRunner.h"
#include "framework/Service.h"
#include "framework/ServiceLibrary.h"
#include "framework/TelephoneContext.h"
#include "framework/TimerService.h"
#include "lines/EngineCalls.h"
#include "lines/Lines.h"
#include "management/LocalManagement.h"
#include "management/Settings.h"
#include "management/SfiReaders.h"
#include "management/StoreWatcher.h"
#include "physical/KeyApplication.h"
#include "physical/KeyLamps.h"
#include "physical/PhysicalInterface.h"
#include "recording/CallRecorder.h"
#include "services/AuditoryDevice.h"
#include "services/CertificateManagement.h"
#include "services/DigitAnalysis.h"
#include "sfi/CallEngine.h"
#include "sfi/SettingsCallPolicy.h"
#include "sfi/Sfi.h"
#include "sip/EventLoop.h"
#include "team/DialogWatch.h"
#include "team/FeatureToggles.h"
#include "team/Keyset.h"
#include "team/PickupHandler.h"
#include "team/Ringer.h"
#include "team/TeamFeatures.h"

class CommunicationsServiceIfc;

namespace telephone {

struct TelephoneParts
{
    TelephoneParts(Configuration given, std::string const& libraryFile);
    ~TelephoneParts();

    // Starts the service's life, then what presses keys and follows lines.
    void begin();
    void end();
    CommunicationsServiceIfc& calls();

    EventDispatcher events;
    TimerService timers;
    TelephoneContext context{events};
    sip::EventLoop loop;
    std::unique_ptr<exchange::Exchange> exchange;  // null: another call server, or none
    Configuration const configuration;             // with the exchange's addresses

    Settings settings;
    SfiReaders readers;
    std::unique_ptr<StoreWatcher> storeWatcher;  // null: the store is in memory
    LocalManagement management;
    AuditoryDevice auditoryDevice;
    CertificateManagement certificates;
    DigitAnalysis digitAnalysis;

    Lines lines;
    SettingsCallPolicy policy;
    CallEngine engine;
    EngineCalls engineCalls;
    RegistrationWait registrations;
    PhysicalInterface physical;
    KeyLamps lamps;
    KeyApplication keys;
    Keyset keyset;
    Ringer ringer;
    PickupHandler pickup;
    FeatureToggles toggles;
    DialogWatch dialogs;
    TeamFeatures team;
    CallRecorder recorder;
    Sfi sfi;
    std::promise<void> keysUsable;  // the service hears of the keys
    PhoneControls controls;

    ServiceLibrary library;
    std::unique_ptr<Service> service;
    std::unique_ptr<Invoker> invoker;
    RequestRunner requests;

private:
    void registerExecutables();
    void observeCalls();
    void ignoreCalls();

    bool running_ = false;
};

}  // namespace telephone
