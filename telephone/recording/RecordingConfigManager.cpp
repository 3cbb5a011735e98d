#include "platform/recording/RecordingConfigManager.h"

#include "platform/framework/SvcRTEContext.h"
#include "telephone/management/LocalManagement.h"

class RecordingConfigManager::State
{
public:
    explicit State(SvcRTEContext* context)
        : management(context == nullptr
                         ? nullptr
                         : dynamic_cast<telephone::LocalManagement*>(context->findExecutable("LocalMgmtIfc")))
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
