#include "telephone/Telephone.h"

#include <array>
#include <atomic>
#include <set>
#include <stdexcept>

#include "CommunicationsServiceIfc.h"
#include "platform/framework/Invoker.h"
#include "platform/framework/Proxy.h"
#include "platform/framework/Service.h"
#include "telephone/CallServer.h"
#include "telephone/PhoneControls.h"
#include "telephone/RegistrationWait.h"
#include "telephone/StateReader.h"
#include "telephone/access/Commands.h"
#include "telephone/base/Version.h"
#include "telephone/calls/CallEngine.h"
#include "telephone/configuration/Configuration.h"
#include "telephone/exchange/Exchange.h"
#include "telephone/faults/Faults.h"
#include "telephone/framework/EventDispatcher.h"
#include "telephone/framework/EventHistory.h"
#include "telephone/framework/Log.h"
#include "telephone/framework/Refusals.h"
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
#include "telephone/replay/TrafficRecording.h"
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
#include "telephone/time/Gate.h"
#include "telephone/time/VirtualTime.h"

namespace telephone {

namespace {

constexpr char const* kComponent = "telephone";

// The service subscribes to the keys this long after its initialisation. Timers of the same duration expire in the
// order of their start.
constexpr std::chrono::milliseconds kSubscriptionTime{1000};

// The longest wait for registrations at the start.
constexpr std::chrono::milliseconds kRegistrationTime{5000};

EngineConfiguration engineOf(Configuration const& configuration, Settings& settings)
{
    EngineConfiguration engine = EngineConfiguration::from(configuration);
    engine.agent.log = sipLogger("sip");
    engine.agent.tls->authoritiesFor = trustedAuthorities(configuration);
    if (auto const uuid = settings.deviceUuid(); !reportIfRefused(kComponent, uuid)) {
        engine.agent.instance = "urn:uuid:" + *uuid;
    }
    engine.agent.isTraced = true;
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

    EventDispatcher events;
    TimerService timers;
    TelephoneContext context{events};
    sip::EventLoop loop;
    std::unique_ptr<exchange::Exchange> exchange;  // null: another call server, or none
    Configuration const configuration;             // with the exchange's addresses

    Settings settings{valueOrThrow(ConfigurationStore::open(configuration.store.path)), configuration};
    // Null: the store is in memory, or time is virtual, in which nothing comes from other programs by itself.
    std::unique_ptr<StoreWatcher> storeWatcher =
        configuration.store.path.empty() || isVirtual() ? nullptr : std::make_unique<StoreWatcher>(settings);
    LocalManagement management{settings};
    AuditoryDevice auditoryDevice;
    CertificateManagement certificates{configuration.certificates};
    DigitAnalysis digitAnalysis{configuration.calls};

    LineTable lineTable{configuration};
    SfiReaders readers{settings, configuration, lineTable};
    SettingsCallPolicy policy{settings, lineTable};
    CallEngine engine{loop, engineOf(configuration, settings), lineTable, policy,
                      [this](Event event) { events.post(std::move(event)); }};
    ServerAddress const server = serverAddressOf(configuration, exchange != nullptr, engine.userAgent().hostPort());
    Lines lines{lineTable, configuration, settings, engine, timers};
    RegistrationWait registrations;
    PhysicalInterface physical{configuration};
    KeyLamps lamps{physical, lines, engine, settings};
    KeyApplication keys{physical, lamps, lines, engine, settings};
    Keyset keyset{lines, lines.actions(), engine, settings};
    Ringer ringer{lines, engine, timers, keyset, auditoryDevice};
    PickupHandler pickup{lines, engine};
    FeatureToggles toggles{physical.layout(), settings};
    WatchedParties parties{engine, primaryLine(lineTable)};
    TeamFeatures team{{lines, lines.actions(), engine, keyset, toggles, pickup, physical, settings, parties},
                      configuration.push.address};
    CallRecorder recorder{configuration.recording, recordableCallsOf(engine.list()),
                          [this](Event event) { events.post(std::move(event)); }};
    Sfi sfi{{engine, lines, policy, settings, events, timers, &lineTable.appearances()}};
    // The lines first: the others read their states.
    std::array<CallObserver*, 5> const observers{&lines, &lamps, &parties, &recorder, &registrations};
    Gate keysUsable{"the service to subscribe to the keys"};  // opened when the service has subscribed to the keys
    std::atomic<bool> ready{false};
    StateReader const reader{{engine, lines, policy, recorder, physical, settings},
                             {events.start(), server.domain, configuration.store.path,
                              [this] { return events.posted(); }, [this] { return ready.load(); }}};
    std::atomic<int> readingRate{0};  // of applications; a fault sets it
    Faults faults{{loop, exchange.get(), settings, physical, readingRate}, timers};
    PhoneControls controls{physical, management, reader, exchange.get(), faults, keysUsable};

    ServiceLibrary library;
    std::unique_ptr<Service> service = library.createService();
    std::unique_ptr<Invoker> invoker = library.createInvoker();
    RequestRunner requests{*service, *invoker};
    std::unique_ptr<EventHistory> history;  // from the service's initialisation on
    std::unique_ptr<TrafficRecording> recording;
    ProtocolDescription const description{kTelephoneVersion, commandDescriptions()};
    bool running = false;
};

Telephone::Parts::Parts(Configuration given, std::string const& libraryFile)
    : exchange(makeExchange(loop, given))
    , configuration(valueOrThrow(withServer(std::move(given), exchange.get())))
    , library(libraryFile)
{
    lineTable.setServer(server);
    registerExecutables();
    for (CallObserver* const each : observers) {
        engine.addObserver(*each);
    }
    context.setProxyFactory([this] { return library.createEventProxy(); });
}

void Telephone::Parts::registerExecutables()
{
    auto const offer = [this](char const* name, Executable& executable) {
        executable.init(context);
        context.registerExecutable(name, &executable);
    };
    offer("LocalMgmtIfc", management);
    offer("PhysicalInterfaceServiceIfc", physical);
    offer("AuditoryDeviceIfc", auditoryDevice);
    offer("CertificateMgmtSvcIfc", certificates);
    offer("DigitAnalysisServiceIfc", digitAnalysis);
    context.registerExecutable("CommunicationsServiceIfc", service.get());
}

void Telephone::Parts::begin()
{
    running = true;
    loop.start();
    service->init(context);
    timers.start(kSubscriptionTime, [this] { keysUsable.open(); });
    invoker->initInvoker(&context);
    auto const kept = static_cast<std::size_t>(configuration.applications.keptEvents);
    history = std::make_unique<EventHistory>(context, requests, events, kept);
    if (auto const started = faults.start(*history, configuration.faults); !started) {
        throw std::runtime_error(started.error().reason);
    }
    requests.whenDone([this] { faults.noteActivity(); });
    recording = std::make_unique<TrafficRecording>(*history, controls);
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
    recording.reset();
    ready = false;
    faults.stop();
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
    for (CallObserver* const each : observers) {
        engine.removeObserver(*each);
    }
    timers.stop();
    events.stop();
    context.closeAllChannels();
    management.shutdown();
    auditoryDevice.shutdown();
    certificates.shutdown();
    digitAnalysis.shutdown();
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
    parts_->ready = true;
    return {};
}

void Telephone::stop()
{
    parts_->end();
}

SessionServices Telephone::sessions(std::function<void()> end)
{
    return {parts_->context,     parts_->requests, *parts_->history,        parts_->controls,
            parts_->description, std::move(end),   parts_->recording.get(), &parts_->readingRate};
}

}  // namespace telephone
