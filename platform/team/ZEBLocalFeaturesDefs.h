/// @file
/// What local feature keys report about themselves.
#pragma once

/// Numbers of the local features.
namespace ZEBLocalFeaturesDefs {

/// What is reported.
enum LF_NOTIFICATION_ID : int
{
    LF_NOTIFICATION_NONE = 0,           ///< nothing
    LF_NOTIFICATION_STATE_CHANGED = 1,  ///< the feature was switched
    LF_NOTIFICATION_FAILED = 2,         ///< it could not be switched
};

/// What to do with the feature.
enum eActionType : int
{
    eActionNone = 0,    ///< nothing: a report only
    eActionOn = 1,      ///< switch it on
    eActionOff = 2,     ///< switch it off
    eActionToggle = 3,  ///< switch it to its other state
};

}  // namespace ZEBLocalFeaturesDefs
