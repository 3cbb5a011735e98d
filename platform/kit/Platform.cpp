#include "platform/kit/Platform.h"

#include <string>
#include <vector>

#include "platform/framework/Logging.h"
#include "platform/framework/Semaphore.h"
#include "platform/framework/Serializer.h"
#include "platform/lines/ClientUtils.h"
#include "platform/lines/LineManager.h"
#include "platform/lines/Utility.h"
#include "platform/management/SIPConfigManager.h"
#include "platform/recording/MediaRecordingService.h"
#include "platform/recording/RecordingConfigManager.h"
#include "platform/sfi/CSfi.h"
#include "platform/sfi/SfiConfiguration.h"
#include "platform/team/DirectedPickupHandler.h"
#include "platform/team/FeatureToggle.h"
#include "platform/team/TeamServiceFeatures.h"
#include "platform/team/TeamServiceKeyset.h"

namespace {

// Names one function of each object file of the kit. It is never called; the linker only has to see the references.
[[gnu::used]] void referToAll()
{
    logAppUni("", "", kLogDetail, 0, "%p", static_cast<void*>(CSfi::GetInstance()));
    Semaphore semaphore(1, 1, false);
    SIPConfigManager settings(nullptr, nullptr);
    RecordingConfigManager recordings(nullptr);
    std::string text = Serializer::serialize(std::vector<int>());
    int index = 0;
    ClientUtils::splitMCADeviceIndex(text, text, index);
    Utility::bridgeCall(nullptr);
    sfiGetCPUAddr(text);
}

}  // namespace

void kit::completePlatform() {}
