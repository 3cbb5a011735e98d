/// @file
/// What may be null, and which of it is.
///
/// - The **collaborators** of the table below: what an accessor returns, and what the context finds by name.
/// - **Results** of these operations may be null, and their contracts say when: LineManager::getLine, getLineForFPK,
///   getDSSLineForFPK and getLineInState, Line::getLineData, CSfi::GetMCAMapper,
///   TeamServiceFeatures::getEACockpitHandler, FrameworkContext::findProxy and findExecutable. The service then does
///   without.
/// - **Arguments** that a framework may pass as null: the context of Invoker::initInvoker (Subscribe then fails), the
///   service of Invoker::handleMessage (every request fails) and its response (nothing is answered).
/// - **Everything else must not be null**: the message of Invoker::handleMessage, and the record of
///   CommunicationsServiceEventIfc::callStateChange. A proxy gets no event before Proxy::initProxy.
#pragma once

#include <array>
#include <string>
#include <vector>

class FrameworkContext;

namespace kit {

/// What follows from a collaborator that is null.
enum class WhenNull
{
    initCrashes,      ///< the service's init uses it without a test
    requestsCrash,    ///< init leaves it out, and nearly everything later uses it without a test
    lacksItsFeature,  ///< the service does without it
};

/// Something outside the service that it works with.
struct Collaborator
{
    char const* name;         ///< its class; that of a named service is also its name in the context
    char const* accessor;     ///< what returns it: an accessor, or FrameworkContext::findExecutable
    char const* header;       ///< its contract
    WhenNull whenNull;        ///< what follows when it is null
    char const* consequence;  ///< what does not work then
};

/// The accessor of what is found by name.
inline constexpr char const* kByName = "FrameworkContext::findExecutable";

/// All of them, and the truth about each: a test sets each to null in turn.
inline constexpr std::array<Collaborator, 12> kCollaborators{{
    {"MediaRecordingService", "MediaRecordingService::GetInstance", "platform/recording/MediaRecordingService.h",
     WhenNull::initCrashes, "init crashes: it hands the recorder its settings first"},
    {"DirectedPickupHandler", "DirectedPickupHandler::Instance", "platform/team/DirectedPickupHandler.h",
     WhenNull::initCrashes, "init crashes: it binds directed pickup to the service"},
    {"LineManager", "LineManager::Instance", "platform/lines/LineManager.h", WhenNull::initCrashes,
     "init crashes: it hands the lines their keys"},
    {"CSfi", "CSfi::GetInstance", "platform/sfi/CSfi.h", WhenNull::requestsCrash,
     "init logs it and leaves the call control out; timer expiries, key presses, shutdown and requests crash, apart "
     "from "
     "GetDevices, callbackDOFeatureCallID, getForwardingConfiguration, setIsInServiceInitiatedState and setLampMode"},
    {"TeamServiceKeyset", "TeamServiceKeyset::Instance", "platform/team/TeamServiceKeyset.h", WhenNull::initCrashes,
     "init crashes: it binds the keyset to the service"},
    {"TeamServiceFeatures", "TeamServiceFeatures::Instance", "platform/team/TeamServiceFeatures.h",
     WhenNull::initCrashes, "init crashes: it hands the team features keys, store and certificates"},
    {"FeatureToggle", "FeatureToggle::Instance", "platform/team/FeatureToggle.h", WhenNull::initCrashes,
     "init crashes: it binds the feature toggles to the service"},
    {"AuditoryDeviceIfc", kByName, "platform/physical/AuditoryDeviceIfc.h", WhenNull::lacksItsFeature,
     "the call control is given no sound device"},
    {"PhysicalInterfaceServiceIfc", kByName, "platform/physical/PhysicalInterfaceServiceIfc.h",
     WhenNull::lacksItsFeature, "no key press arrives, no lamp is set, and the headset's jack is not read"},
    {"DigitAnalysisServiceIfc", kByName, "platform/services/DigitAnalysisServiceIfc.h", WhenNull::lacksItsFeature,
     "a locked phone dials nothing, and no number is an emergency number"},
    {"LocalMgmtIfc", kByName, "platform/management/LocalMgmtIfc.h", WhenNull::lacksItsFeature,
     "nothing is stored: forwarding is refused, do-not-disturb and the agent state are answered with success and "
     "have no effect, and changes of the network are not heard"},
    {"CertificateMgmtSvcIfc", kByName, "platform/services/CertificateMgmtSvcIfc.h", WhenNull::lacksItsFeature,
     "the team features are given no certificates"},
}};

/// A collaborator that the service would take for null.
struct Finding
{
    Collaborator collaborator;  ///< which
    bool isOfAnotherClass;      ///< the context finds an executable of that name, but not of that class
};

/// Asks each accessor, and the context for each name, as init does. Call it before init. Thread: that of init.
/// @param context the one that init will be given
/// @return What is null, in the order of the table; empty when nothing is.
std::vector<Finding> check(FrameworkContext& context);

/// Writes a finding as a sentence.
/// @return For example "LineManager::Instance returns null: init crashes: ...".
std::string describe(Finding const& finding);

}  // namespace kit
