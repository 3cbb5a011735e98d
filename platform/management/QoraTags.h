// Groups of items in the configuration store whose changes can be heard.
#pragma once

class QoraTags
{
public:
    static constexpr char const* INTERFACE_STATUS = "interface-status";
    static constexpr char const* WLAN_LINK_STATUS = "wlan-link-status";
};
