// The texts of the console's help, from the tables of requests and events. Pure functions.
#pragma once

#include <string>
#include <vector>

#include "CommunicationsServiceEvents.h"
#include "CommunicationsServiceRequests.h"

namespace telephone {

std::vector<std::string> requestRows();
std::vector<std::string> eventRows();
std::vector<std::string> helpForRequest(RequestDescription const& request);
std::vector<std::string> helpForEvent(EventDescription const& event);

}  // namespace telephone
