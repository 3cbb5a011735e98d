// The service's life: init with the interfaces that can be found, timers, activation, and changes of the platform
// around it.
#include "Step.h"

using effect_text::of;

namespace {
void changeOfPlatform(Step& step)
{
    step.world.change(step.random);
    step.act([] {});
}

// The subscription timer expires once and does its work once; every other expiry is only offered.
void timer(Step& step)
{
    auto& kept = step.subject.kept;
    bool const subscription = step.subject.alone && kept.subscriptionTimer != 0 && step.random.oneIn(3);
    int const id = subscription ? kept.subscriptionTimer : step.random.between(1, 50);
    if (subscription) {
        if (step.rules.hasLamps()) {
            step.expect(of("subscribePhysical", true, "(8,6,1)(1,2,2)(0,1,4)(8,4,1)"));
            step.expect(of("subscribeFunctional", true, "(24,58,5)(24,63,5)(24,43,5)"));
        }
        if (step.rules.hasStore()) {
            step.expect(of("registerForTag", true, "interface-status"));
            step.expect(of("registerForTag", true, "wlan-link-status"));
        }
        if (step.rules.hasLamps()) {
            step.expect(of("SetHeadsetPlugged", step.world.jack == 1));
        }
        step.expect("features.Activate()");
        step.expect("sipConfig.lamps()");
        step.expect("sipConfig.dhcp()");
        kept.subscriptionTimer = 0;
    }
    for (auto const* const owner :
         {"TimerExpired", "keyset.timerExpired", "pickup.timerExpired", "features.timerExpired"}) {
        step.expect(of(owner, id));
    }
    step.act([&] { step.service().timerEvent(id); });
}

void activation(Step& step)
{
    bool const on = step.flag();
    bool const again = step.flag();
    step.expect("Lock()");
    step.expect(on ? std::string("Activate()") : of("Deactivate", false, again));
    step.expect("Unlock()");
    if (on) {
        step.operation("Activate", {}, step.world.answer, [&] { return step.service().activate(); });
    } else {
        step.operation("Deactivate", {{"AllowAutoActivate", again ? "1" : "0"}}, step.world.answer,
                       [&] { return step.service().deactivate(again); });
    }
}

void shutdown(Step& step)
{
    step.expect(of("Deactivate", true, true));
    step.act([&] { step.service().shutdown(); });
}

void subscription(Step& step)
{
    if (step.flag()) {
        step.expect("lines.observe()");
        step.compare(step.world.yes, [&] { return step.service().observe(&step.service()); });
        return;
    }
    if (step.flag()) {
        // This platform has no event proxy for the application.
        step.request("Subscribe", {}, "sfiFailure");
        return;
    }
    step.expect(of("Subscribe", true));
    step.compare(step.world.answer, [&] { return step.service().subscribe(&step.service()); });
}

void badRequest(Step& step)
{
    static char const* const kMethods[] = {"", "holdCall", "HoldCall ", "Hold", "SetAgentstate"};
    step.request(kMethods[step.random.below(5)], {{"Line", step.line()}}, "sfiFailure");
}

void signallingNotice(Step& step)
{
    step.act([&] {
        step.service().processSignallingComponentEvent("notice", 6);
        step.service().hookswitchEvent(PhysDefs::actionPressed);
        step.service().activateStoredFwd();
    });
}

void look(Step& step, char const* name, bool present)
{
    if (!present) {
        step.expect(std::string("failure: find \"") + name + "\" failed");
    }
}

void expectCallControl(Step& step, bool lamps)
{
    if (!step.world.callControl) {
        step.expect("failure: Failed to find Sfi");
        return;
    }
    step.expect(of("SetPhysicalInterface", lamps));
    step.expect(of("sipConfig.initialise", true));
    step.expect(of("Initialise", true));
    step.expect(of("SetCommsService", true));
    step.expect(of("SetAuditoryDevice", step.subject.context.registered.auditoryDevice));
    step.expect("Startup()");
}

void init(Step& step)
{
    auto& registered = step.subject.context.registered;
    registered = {!step.random.oneIn(4), !step.random.oneIn(4), !step.random.oneIn(4), !step.random.oneIn(4),
                  !step.random.oneIn(4), step.random.oneIn(6),  !step.random.oneIn(6)};
    step.world.callControl = registered.callControl;
    bool const lamps = registered.physicalInterface && !registered.wrongClass;
    auto& kept = step.subject.kept;

    step.expect("recordingConfig.created()");
    step.expect("recording.init()");
    if (!kept.sipConfig) {
        step.expect("sipConfig.created()");
    }
    look(step, "AuditoryDeviceIfc", registered.auditoryDevice);
    look(step, "PhysicalInterfaceServiceIfc", registered.physicalInterface);
    step.expect(of("pickup.setCommsSrv", true, true));
    step.expect("pickup.Initialise()");
    step.expect(of("lines.setPhysicalInterface", lamps));
    expectCallControl(step, lamps);
    step.expect("lines.initialise()");
    step.expect(of("keyset.setCommsSrv", true, true));
    step.expect("keyset.init()");
    look(step, "LocalMgmtIfc", registered.localMgmt);
    look(step, "CertificateMgmtSvcIfc", registered.certificateMgmt);
    step.expect(of("features.setLocalMgmt", registered.localMgmt));
    step.expect(of("features.setCertMgmt", registered.certificateMgmt));
    step.expect(of("features.setPhysicalInterface", lamps));
    step.expect(of("features.setCommsSrv", true, true));
    look(step, "DigitAnalysisServiceIfc", registered.digitAnalysis);
    step.expect(of("lines.setDigitAnalysis", registered.digitAnalysis));
    step.expect(of("toggle.ftInitialise", lamps, registered.localMgmt, true));
    if (step.world.callControl) {
        step.expect(of("StartTimer", 1000));
        step.expect("Start()");
        kept.subscriptionTimer = 4200 + step.world.number;
    }
    kept.found = registered;
    kept.sipConfig = true;
    step.act([&] { step.service().init(step.subject.context); });
    step.world.callControl = true;
}
}  // namespace

std::vector<Operation> const& lifeOperations()
{
    static std::vector<Operation> const kOperations = {
        {"a change of the platform", 40, changeOfPlatform},
        {"timerEvent", 4, timer},
        {"activate or deactivate", 3, activation},
        {"shutdown", 1, shutdown},
        {"subscribe", 2, subscription},
        {"a request that is none", 2, badRequest},
        {"a notice", 1, signallingNotice},
        {"init", 2, init, true},
    };
    return kOperations;
}
