#include "platform/kit/Check.h"

#include <string_view>

#include "platform/framework/Executable.h"
#include "platform/framework/FrameworkContext.h"
#include "platform/lines/LineManager.h"
#include "platform/management/LocalMgmtIfc.h"
#include "platform/physical/AuditoryDeviceIfc.h"
#include "platform/physical/PhysicalInterfaceServiceIfc.h"
#include "platform/recording/MediaRecordingService.h"
#include "platform/services/CertificateMgmtSvcIfc.h"
#include "platform/services/DigitAnalysisServiceIfc.h"
#include "platform/sfi/CSfi.h"
#include "platform/team/DirectedPickupHandler.h"
#include "platform/team/FeatureToggle.h"
#include "platform/team/TeamServiceFeatures.h"
#include "platform/team/TeamServiceKeyset.h"

namespace {

enum class Presence
{
    there,
    null,
    ofAnotherClass,
};

template <class Class, Class* (*accessor)()>
Presence asked(FrameworkContext& /*context*/, char const* /*name*/)
{
    return accessor() == nullptr ? Presence::null : Presence::there;
}

template <class Class>
Presence found(FrameworkContext& context, char const* name)
{
    Executable* const executable = context.findExecutable(name);
    if (executable == nullptr) {
        return Presence::null;
    }
    return dynamic_cast<Class*>(executable) == nullptr ? Presence::ofAnotherClass : Presence::there;
}

// How each row of kCollaborators is asked for, in the same order.
constexpr std::array<Presence (*)(FrameworkContext&, char const*), kit::kCollaborators.size()> kQuestions{
    asked<MediaRecordingService, MediaRecordingService::GetInstance>,
    asked<DirectedPickupHandler, DirectedPickupHandler::Instance>,
    asked<LineManager, LineManager::Instance>,
    asked<CSfi, CSfi::GetInstance>,
    asked<TeamServiceKeyset, TeamServiceKeyset::Instance>,
    asked<TeamServiceFeatures, TeamServiceFeatures::Instance>,
    asked<FeatureToggle, FeatureToggle::Instance>,
    found<AuditoryDeviceIfc>,
    found<PhysicalInterfaceServiceIfc>,
    found<DigitAnalysisServiceIfc>,
    found<LocalMgmtIfc>,
    found<CertificateMgmtSvcIfc>,
};

}  // namespace

std::vector<kit::Finding> kit::check(FrameworkContext& context)
{
    std::vector<Finding> findings;
    for (std::size_t i = 0; i < kCollaborators.size(); ++i) {
        Presence const presence = kQuestions[i](context, kCollaborators[i].name);
        if (presence != Presence::there) {
            findings.push_back({kCollaborators[i], presence == Presence::ofAnotherClass});
        }
    }
    return findings;
}

std::string kit::describe(Finding const& finding)
{
    Collaborator const& missing = finding.collaborator;
    std::string text;
    if (finding.isOfAnotherClass) {
        text = "the executable \"" + std::string(missing.name) + "\" is not a " + missing.name;
    } else if (std::string_view(missing.accessor) == kByName) {
        text = "the context finds no \"" + std::string(missing.name) + "\"";
    } else {
        text = std::string(missing.accessor) + " returns null";
    }
    return text + ": " + missing.consequence;
}
