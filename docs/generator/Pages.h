// The generated pages, as Markdown. Pure functions of the tables.
#pragma once

#include <string>

std::string requestsPage();
std::string eventsPage();
std::string enumerationsPage();
