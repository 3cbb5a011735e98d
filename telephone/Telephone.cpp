#include "telephone/Telephone.h"

#include <future>
#include <set>
#include <stdexcept>

#include "CommunicationsServiceIfc.h"
#include "platform/framework/Invoker.h"
#include "platform/framework/Proxy.h"
#include "platform/framework/Service.h"
#include "telephone/CallServer.h"
#include "telephone/PhoneControls.h"
#include "telephone/RegistrationWait.h"
#include "telephone/calls/CallEngine.h"
#include "telephone/configuration/Configuration.h"
#include "telephone/exchange/Exchange.h"
#include "telephone/framework/EventDispatcher.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/RequestRunner.h"
#include "telephone/framework/ServiceLibrary.h"
#include "telephone/framework/TelephoneContext.h"
#include "telephone/framework/TimerService.h"
#include "telephone/lines/LineTable.h"
#include "telephone/lines/Lines.h"
#include "telephone/lines/WatchedParties.h"
#include "telephone/management/ConfigurationStore.h"
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

namespace telephone {

namespace {

constexpr char const* kComponent = "telephone";

// The service subscribes to the keys this long after its initialisation. Timers of the same duration expire in the
// order of their start.
constexpr std::chrono::milliseconds kSubscriptionTime{1000};

// The longest wait for registrations at the start.
constexpr std::chrono::milliseconds kRegistrationTime{5000};

EngineConfiguration engineOf(Configuration const& configuration)
{
    EngineConfiguration engine = EngineConfiguration::from(configuration);
    engine.agent.log = sipLogger("sip");
    engine.agent.traceMessages = [] { return logLevel() >= kLogDetail; };
    return engine;
}

int primaryLine(LineTable const& lines)
{
    LineTable::Row const* const primary = lines.primary();
    return primary == nullptr ? 0 : primary->address.lineNumber;
}

}  // namespace

// The parts in the order in which they are made: each may use those before it. They are destroyed in the opposite
// order, after `end` has stopped their threads and timers.
struct Telephone::Parts
{
    Parts(Configuration given, std::string const& libraryFile);
    ~Parts() { end(); }

    // Starts the service, then the parts that press keys and follow lines.
    void begin();
    void end();
    CommunicationsServiceIfc& calls();
    void registerExecutables();
    void observeCalls();
    void ignoreCalls();

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
    std::promise<void> keysUsable;  // set when the service has subscribed to the keys
    PhoneControls controls;

    ServiceLibrary library;
    std::unique_ptr<Service> service;
    std::unique_ptr<Invoker> invoker;
    RequestRunner requests;
    bool running = false;
};

Telephone::Parts::Parts(Configuration given, std::string const& libraryFile)
    : exchange(makeExchange(loop, given))
    , configuration(valueOrThrow(withServer(std::move(given), exchange.get())))
    , settings(valueOrThrow(ConfigurationStore::open(configuration.store.path)), configuration)
    , storeWatcher(configuration.store.path.empty() ? nullptr : std::make_unique<StoreWatcher>(settings))
    , management(settings)
    , certificates(configuration.certificates)
    , digitAnalysis(configuration.calls)
    , lineTable(configuration)
    , readers(settings, configuration, lineTable)
    , policy(settings, lineTable)
    , engine(loop, engineOf(configuration), lineTable, policy, [this](Event event) { events.post(std::move(event)); })
    , lines(lineTable, configuration, settings, engine, timers)
    , physical(configuration, settings)
    , lamps(physical, lines, engine, settings)
    , keys(physical, lamps, lines, engine, settings)
    , keyset(lines, engine, settings)
    , ringer(lines, engine, timers, keyset, auditoryDevice)
    , pickup(lines, engine)
    , toggles(physical.layout(), settings)
    , parties(engine, primaryLine(lineTable))
    , team({lines, engine, keyset, toggles, pickup, physical, settings, parties}, configuration.push.address)
    , recorder(configuration.recording, recordableCallsOf(engine.list()),
               [this](CallRecorder::Event event) { events.post(std::move(event)); })
    , sfi({engine, lines, policy, settings, events, timers, &lineTable.appearances()})
    , controls(engine, lines, physical, management, keysUsable.get_future())
    , library(libraryFile)
    , service(library.createService())
    , invoker(library.createInvoker())
    , requests(*service, *invoker)
{
    lineTable.setServer(serverAddressOf(configuration, exchange != nullptr, engine.userAgent().hostPort()));
    registerExecutables();
    observeCalls();
    context.setProxyFactory([this] { return library.createEventProxy(); });
}

void Telephone::Parts::registerExecutables()
{
    struct Row
    {
        char const* name;
        Executable* executable;
    };
    for (Row const& each : {Row{"LocalMgmtIfc", &management}, Row{"PhysicalInterfaceServiceIfc", &physical},
                            Row{"AuditoryDeviceIfc", &auditoryDevice}, Row{"CertificateMgmtSvcIfc", &certificates},
                            Row{"DigitAnalysisServiceIfc", &digitAnalysis}}) {
        each.executable->init(context);
        context.registerExecutable(each.name, each.executable);
    }
    context.registerExecutable("CommunicationsServiceIfc", service.get());
}

void Telephone::Parts::observeCalls()
{
    // The lines first: the others read their states.
    engine.addObserver(lines);
    engine.addObserver(lamps);
    engine.addObserver(parties);
    engine.addObserver(recorder);
    engine.addObserver(registrations);
}

void Telephone::Parts::ignoreCalls()
{
    engine.removeObserver(registrations);
    engine.removeObserver(recorder);
    engine.removeObserver(parties);
    engine.removeObserver(lamps);
    engine.removeObserver(lines);
}

void Telephone::Parts::begin()
{
    running = true;
    loop.start();
    service->init(context);
    timers.start(kSubscriptionTime, [this] { keysUsable.set_value(); });
    invoker->initInvoker(&context);
    keys.setService(service.get());
    controls.setService(service.get());
    lamps.start();
    ringer.start();
}

CommunicationsServiceIfc& Telephone::Parts::calls()
{
    auto* const found = dynamic_cast<CommunicationsServiceIfc*>(service.get());
    if (found == nullptr) {
        throw std::runtime_error(
            "the library's service has no CommunicationsServiceIfc: name the right library with --library");
    }
    return *found;
}

// First the parts that start work on their own, then the service, then the parts that it uses.
void Telephone::Parts::end()
{
    if (!running) {
        return;
    }
    running = false;
    keys.setService(nullptr);
    controls.setService(nullptr);
    physical.shutdown();
    timers.deliverTo(nullptr);
    team.stop();
    ringer.stop();
    parties.stop();
    calls().deactivate(false);
    service->shutdown();
    lamps.stop();
    lines.stop();
    ignoreCalls();
    timers.stop();
    events.stop();
    context.closeAllChannels();
    for (Executable* const each : {static_cast<Executable*>(&management), static_cast<Executable*>(&auditoryDevice),
                                   static_cast<Executable*>(&certificates), static_cast<Executable*>(&digitAnalysis)}) {
        each->shutdown();
    }
    log(kLogInfo, kComponent, "ended");
}

Telephone::Telephone(Configuration configuration, std::string const& library)
    : parts_(std::make_unique<Parts>(std::move(configuration), library))
{
    parts_->begin();
}

Telephone::~Telephone() = default;

Outcome<> Telephone::activate()
{
    std::set<int> registering;
    for (LineAccount const& each : parts_->lineTable.accounts()) {
        if (each.registers) {
            registering.insert(each.lineNumber);
        }
    }
    parts_->registrations.expect(registering);
    if (parts_->calls().activate() != sfiSuccess) {
        return refuse(RefusalKind::kWrongState, "the service cannot be activated; the log says why");
    }
    if (registering.empty()) {
        parts_->parties.start();  // otherwise the first registration starts them
    }
    if (!parts_->registrations.wait(kRegistrationTime)) {
        log(kLogWarning, kComponent, "the registrar does not answer; the lines keep trying to register");
    }
    return {};
}

void Telephone::stop()
{
    parts_->end();
}

TelephoneContext& Telephone::context()
{
    return parts_->context;
}

RequestRunner& Telephone::requests()
{
    return parts_->requests;
}

TelephoneControls& Telephone::controls()
{
    return parts_->controls;
}

}  // namespace telephone
