// A call at another telephone that can be taken over, as that telephone's dialogs describe it (RFC 4235).
#pragma once

#include <string>

#include "telephone/sip/Message.h"

namespace telephone {

struct PickupTarget
{
    std::string targetURI;   // the far end of the ringing telephone: the party to call
    sip::Replaces replaces;  // the dialog there
    std::string callingURI;  // for the display
    std::string callingName;
    std::string calledURI;
    std::string calledName;
};

}  // namespace telephone
