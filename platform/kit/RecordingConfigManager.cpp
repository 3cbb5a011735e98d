// Settings of call recording without a store.
#include "platform/recording/RecordingConfigManager.h"

#include "platform/kit/Missing.h"

namespace {

constexpr kit::Missing kMissing{"RecordingConfigManager", "platform/recording/RecordingConfigManager.h"};

}  // namespace

class RecordingConfigManager::State
{};

RecordingConfigManager::RecordingConfigManager(SvcRTEContext* /*context*/)
{
    kMissing.report("RecordingConfigManager", "find the store in the context");
}

RecordingConfigManager::~RecordingConfigManager() = default;

bool RecordingConfigManager::isRecordingEnabled() const
{
    kMissing.report("isRecordingEnabled", "tell whether calls may be recorded");
    return true;
}
