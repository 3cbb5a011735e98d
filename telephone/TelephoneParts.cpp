#include "telephone/TelephoneParts.h"

#include <stdexcept>

#include "CommunicationsServiceIfc.h"
#include "telephone/framework/Log.h"
#include "telephone/management/ConfigurationStore.h"
#include "telephone/sip/Uri.h"

namespace telephone {

namespace {

constexpr char const* kComponent = "telephone";

// So long after its initialisation the service subscribes to the keys: on the timer thread, where timers of the same
// duration expire in the order in which they were started.
constexpr std::chrono::milliseconds kSubscriptionTime{1000};

// What the parts of the SIP adapter and the exchange have to say, in the telephone's log.
sip::Logger loggerFor(char const* component)
{
    return [component](sip::LogLevel level, std::string const& text) {
        constexpr std::array<int, 4> kLevels{kLogTrace, kLogInfo, kLogWarning, kLogFailure};
        logLine(kLevels.at(static_cast<std::size_t>(level)), component, text);
    };
}

std::unique_ptr<exchange::Exchange> makeExchange(sip::EventLoop& loop, Configuration const& configuration)
{
    if (!configuration.exchange.enabled || !configuration.server.registrar.empty()) {
        return nullptr;
    }
    exchange::ExchangeConfig config;
    config.port = static_cast<std::uint16_t>(configuration.exchange.port);
    config.realm = configuration.exchange.realm;
    config.anyPassword = configuration.exchange.password;
    config.log = loggerFor("exchange");
    return std::make_unique<exchange::Exchange>(loop, std::move(config));
}

// Where the registrar is, with its port: its domain when none is named.
std::string hostPortOf(std::string const& registrar)
{
    auto uri = sip::Uri::parse(registrar);
    if (!uri) {
        throw std::runtime_error("server.registrar: \"" + registrar + "\" is no sip: address");
    }
    uri->user.clear();
    std::string const scheme = uri->scheme + ":";
    return uri->formatAddressOfRecord().substr(scheme.size());
}

void useExchange(ServerConfiguration& server, exchange::Exchange const& exchange)
{
    server.registrar = "sip:" + exchange.hostPort();
    if (server.directedPickup.empty()) {
        server.directedPickup = exchange::kDirectedPickup;
    }
    if (server.groupPickup.empty()) {
        server.groupPickup = exchange::kGroupPickup;
    }
}

Configuration withServer(Configuration configuration, exchange::Exchange const* exchange)
{
    ServerConfiguration& server = configuration.server;
    if (exchange != nullptr) {
        useExchange(server, *exchange);
    }
    if (server.domain.empty() && !server.registrar.empty()) {
        server.domain = hostPortOf(server.registrar);
    }
    return configuration;
}

// Without a call server the lines' addresses are the telephone's own.
ServerAddress serverOf(Configuration const& configuration, CallEngine& engine, bool hasExchange)
{
    std::string const& domain = configuration.server.domain;
    return {configuration.server.registrar, domain.empty() ? engine.userAgent().hostPort() : domain,
            hasExchange ? configuration.exchange.password : std::string()};
}

EngineConfiguration engineOf(Configuration const& configuration)
{
    EngineConfiguration engine = EngineConfiguration::from(configuration);
    engine.agent.log = loggerFor("sip");
    engine.agent.traceMessages = configuration.log.level >= kLogDetail;
    return engine;
}

std::unique_ptr<ConfigurationStore> openStore(std::string const& path)
{
    auto store = ConfigurationStore::open(path);
    if (!store) {
        throw std::runtime_error(store.error().reason);
    }
    return std::move(*store);
}

int primaryLine(LineTable const& lines)
{
    LineTable::Row const* const primary = lines.primary();
    return primary == nullptr ? 0 : primary->address.lineNumber;
}

}  // namespace

TelephoneParts::TelephoneParts(Configuration given, std::string const& libraryFile)
    : exchange(makeExchange(loop, given))
    , configuration(withServer(std::move(given), exchange.get()))
    , settings(openStore(configuration.store.path), configuration)
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
    lineTable.setServer(serverOf(configuration, engine, exchange != nullptr));
    registerExecutables();
    observeCalls();
    context.setProxyFactory([this] { return library.createEventProxy(); });
}

TelephoneParts::~TelephoneParts()
{
    end();
}

void TelephoneParts::registerExecutables()
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

void TelephoneParts::observeCalls()
{
    // The lines first: the others look at them.
    engine.addObserver(lines);
    engine.addObserver(lamps);
    engine.addObserver(parties);
    engine.addObserver(recorder);
    engine.addObserver(registrations);
}

void TelephoneParts::ignoreCalls()
{
    engine.removeObserver(registrations);
    engine.removeObserver(recorder);
    engine.removeObserver(parties);
    engine.removeObserver(lamps);
    engine.removeObserver(lines);
}

void TelephoneParts::begin()
{
    running_ = true;
    loop.start();
    service->init(context);
    timers.start(kSubscriptionTime, [this] { keysUsable.set_value(); });
    invoker->initInvoker(&context);
    keys.setService(service.get());
    controls.setService(service.get());
    lamps.start();
    ringer.start();
}

CommunicationsServiceIfc& TelephoneParts::calls()
{
    auto* const found = dynamic_cast<CommunicationsServiceIfc*>(service.get());
    if (found == nullptr) {
        throw std::runtime_error("the library's service has no CommunicationsServiceIfc: it is not the right library");
    }
    return *found;
}

// First what starts work by itself, then the service, then what carried its work out.
void TelephoneParts::end()
{
    if (!running_) {
        return;
    }
    running_ = false;
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

}  // namespace telephone
