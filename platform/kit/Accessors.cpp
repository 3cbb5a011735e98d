// The accessors of the platform's only objects. Each answers with the kit's default until the program defines it.
#include "platform/kit/DefaultCSfi.h"
#include "platform/kit/DefaultDirectedPickupHandler.h"
#include "platform/kit/DefaultFeatureToggle.h"
#include "platform/kit/DefaultLineManager.h"
#include "platform/kit/DefaultMediaRecordingService.h"
#include "platform/kit/DefaultTeamServiceFeatures.h"
#include "platform/kit/DefaultTeamServiceKeyset.h"
#include "platform/kit/Missing.h"
#include "platform/kit/Weak.h"

namespace {

template <class Default>
Default* only(kit::Missing const& missing, char const* accessor)
{
    missing.report(accessor, "define it in the program, and return your own object");
    static Default object;
    return &object;
}

}  // namespace

KIT_WEAK CSfi* CSfi::GetInstance()
{
    return only<kit::DefaultCSfi>({"CSfi", "platform/sfi/CSfi.h"}, "GetInstance");
}

KIT_WEAK LineManager* LineManager::Instance()
{
    return only<kit::DefaultLineManager>({"LineManager", "platform/lines/LineManager.h"}, "Instance");
}

KIT_WEAK TeamServiceKeyset* TeamServiceKeyset::Instance()
{
    return only<kit::DefaultTeamServiceKeyset>({"TeamServiceKeyset", "platform/team/TeamServiceKeyset.h"}, "Instance");
}

KIT_WEAK TeamServiceFeatures* TeamServiceFeatures::Instance()
{
    return only<kit::DefaultTeamServiceFeatures>({"TeamServiceFeatures", "platform/team/TeamServiceFeatures.h"},
                                                 "Instance");
}

KIT_WEAK DirectedPickupHandler* DirectedPickupHandler::Instance()
{
    return only<kit::DefaultDirectedPickupHandler>({"DirectedPickupHandler", "platform/team/DirectedPickupHandler.h"},
                                                   "Instance");
}

KIT_WEAK FeatureToggle* FeatureToggle::Instance()
{
    return only<kit::DefaultFeatureToggle>({"FeatureToggle", "platform/team/FeatureToggle.h"}, "Instance");
}

KIT_WEAK MediaRecordingService* MediaRecordingService::GetInstance()
{
    return only<kit::DefaultMediaRecordingService>(
        {"MediaRecordingService", "platform/recording/MediaRecordingService.h"}, "GetInstance");
}
