#include "platform/recording/RecordingConfigManager.h"

#include "telephone/management/LocalManagement.h"

class RecordingConfigManager::State
{
public:
    explicit State(SvcRTEContext* context)
        : management(telephone::LocalManagement::find(context))
    {}

    telephone::LocalManagement* const management;  // null without a store; recording is then enabled
};

RecordingConfigManager::RecordingConfigManager(SvcRTEContext* context)
    : state_(std::make_unique<State>(context))
{}

RecordingConfigManager::~RecordingConfigManager() = default;

bool RecordingConfigManager::isRecordingEnabled() const
{
    return state_->management == nullptr ||
           state_->management->settings().flag(telephone::SettingNames::kRecordingEnabled);
}
