// The generated pages, as Markdown. Pure functions of the tables.
#pragma once

#include <optional>
#include <string>
#include <vector>

// A request with what it caused, as a telephone recorded it.
struct Exchange
{
    std::string name;
    std::string before;  // what there was, one sentence
    std::string request;
    std::optional<std::string> answer;  // nothing: the request is not answered
    std::vector<std::string> events;
};

// With one exchange for each request, in the order of the table.
std::string requestsPage(std::vector<Exchange> const& exchanges);
std::string eventsPage();
std::string enumerationsPage();
std::string commandsPage();
std::string faultsPage();
