// What local feature keys report about themselves.
#pragma once

namespace ZEBLocalFeaturesDefs {

enum LF_NOTIFICATION_ID : int
{
    LF_NOTIFICATION_NONE = 0,
    LF_NOTIFICATION_STATE_CHANGED = 1,
    LF_NOTIFICATION_FAILED = 2,
};

enum eActionType : int
{
    eActionNone = 0,
    eActionOn = 1,
    eActionOff = 2,
    eActionToggle = 3,
};

}  // namespace ZEBLocalFeaturesDefs
