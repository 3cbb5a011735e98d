/// @file
/// Groups of items in the configuration store whose changes can be heard.
#pragma once

/// The tags that the service registers for with LocalMgmtIfc::registerForTag.
class QoraTags
{
public:
    static constexpr char const* INTERFACE_STATUS = "interface-status";  ///< state of the wired network
    static constexpr char const* WLAN_LINK_STATUS = "wlan-link-status";  ///< state of the wireless network
};
