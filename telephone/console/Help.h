// The texts of the console's help, made from the tables of requests, events and commands. Pure functions.
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
