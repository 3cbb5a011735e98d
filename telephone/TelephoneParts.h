// The parts of a telephone, in the order in which they are made: each may use those before it. Destroyed in the
// opposite order, after stop has ended what works by itself.
#pragma once

#include <future>
#include <memory>
#include <string>

#include "platform/framework/Invoker.h"
#include "platform/framework/Proxy.h"
#include "platform/framework/Service.h"
#include "telephone/PhoneControls.h"
#include "telephone/RegistrationWait.h"
#include "telephone/calls/CallEngine.h"
#include "telephone/configuration/Configuration.h"
#include "telephone/exchange/Exchange.h"
#include "telephone/framework/EventDispatcher.h"
#include "telephone/framework/RequestRunner.h"
#include "telephone/framework/ServiceLibrary.h"
#include "telephone/framework/TelephoneContext.h"
#include "telephone/framework/TimerService.h"
#include "telephone/lines/Lines.h"
#include "telephone/lines/WatchedParties.h"
#include "telephone/management/LocalManagement.h"
#include "telephone/management/Settings.h"
#include "telephone/management/StoreWatcher.h"
#include "telephone/physical/KeyApplication.h"
#include "telephone/physical/KeyLamps.h"
#include "telephone/physical/PhysicalInterface.h"
#include "telephone/recording/CallRecorder.h"
#include "telephone/services/AuditoryDevice.h"
#include "telephone/services/CertificateManagement.h"
#include "telephone/services/DigitAnalysis.h"
#include "telephone/sfi/SettingsCallPolicy.h"
#include "telephone/sfi/Sfi.h"
#include "telephone/sfi/SfiReaders.h"
#include "telephone/sip/EventLoop.h"
#include "telephone/team/FeatureToggles.h"
#include "telephone/team/Keyset.h"
#include "telephone/team/PickupHandler.h"
#include "telephone/team/Ringer.h"
#include "telephone/team/TeamFeatures.h"

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
    std::unique_ptr<StoreWatcher> storeWatcher;  // null: the store is in memory
    LocalManagement management;
    AuditoryDevice auditoryDevice;
    CertificateManagement certificates;
    DigitAnalysis digitAnalysis;

    LineTable lineTable;
    SfiReaders readers;
    SettingsCallPolicy policy;
    CallEngine engine;
    Lines lines;
    RegistrationWait registrations;
    PhysicalInterface physical;
    KeyLamps lamps;
    KeyApplication keys;
    Keyset keyset;
    Ringer ringer;
    PickupHandler pickup;
    FeatureToggles toggles;
    WatchedParties parties;
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
