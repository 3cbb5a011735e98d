// Writes the pages and the description that are generated from the tables.
//
//   generate_docs FOLDER          writes requests.md (with exchanges.json), events.md, enumerations.md, commands.md,
//   faults.md
//                                 and protocol.json
//   generate_docs --check FOLDER  compares them with the tables; exits with 1 when one differs
#include <algorithm>
#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include "CommunicationsServiceRequests.h"
#include "Pages.h"
#include "telephone/access/Commands.h"
#include "telephone/base/Version.h"
#include "telephone/protocol/MessageText.h"
#include "telephone/protocol/ProtocolDescription.h"

namespace {
std::string contentOf(std::string const& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

Exchange exchangeOf(nlohmann::json const& recorded)
{
    auto const& answer = recorded.at("answer");
    return {recorded.at("name"), recorded.at("before"), recorded.at("request"),
            answer.is_null() ? std::nullopt : std::optional(answer.get<std::string>()), recorded.at("events")};
}

// Whether an exchange is one of a request, and its row names every event that followed.
bool isOf(RequestDescription const& request, Exchange const& exchange)
{
    bool const areNamed = std::all_of(exchange.events.begin(), exchange.events.end(), [&request](auto const& text) {
        auto const event = telephone::readEvent(text);
        return event && std::find(request.events.begin(), request.events.end(), event->description->method) !=
                            request.events.end();
    });
    return exchange.name == request.name && areNamed;
}

// Those of exchanges.json. Throws if the file is damaged or does not fit the table of requests.
std::vector<Exchange> exchangesOf(std::string const& path)
{
    std::vector<Exchange> exchanges;
    for (auto const& recorded : nlohmann::json::parse(contentOf(path))) {
        exchanges.push_back(exchangeOf(recorded));
        auto const& exchange = exchanges.back();
        if (exchanges.size() > kRequestCount || !isOf(kRequestDescriptions[exchanges.size() - 1], exchange)) {
            throw std::runtime_error(path + ": " + exchange.name + " is not the next request of the table, or is " +
                                     "followed by an event that its row does not name");
        }
    }
    if (exchanges.size() != kRequestCount) {
        throw std::runtime_error(path + " lacks the last requests of the table");
    }
    return exchanges;
}

bool isUpToDate(std::string const& path, std::string const& page)
{
    if (contentOf(path) == page) {
        return true;
    }
    std::cerr << path << " differs from the tables: build the target write_docs\n";
    return false;
}

bool writePage(std::string const& path, std::string const& page)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << page;
    file.close();
    if (!file) {
        std::cerr << path << " cannot be written\n";
        return false;
    }
    return true;
}

bool handlePages(std::string const& folder, bool (*handle)(std::string const& path, std::string const& page))
{
    struct
    {
        char const* name;
        std::string text;
    } const files[] = {
        {"/requests.md", requestsPage(exchangesOf(folder + "/exchanges.json"))},
        {"/events.md", eventsPage()},
        {"/enumerations.md", enumerationsPage()},
        {"/commands.md", commandsPage()},
        {"/faults.md", faultsPage()},
        {"/protocol.json",
         telephone::ProtocolDescription(telephone::kTelephoneVersion, telephone::commandDescriptions()).json()},
    };
    bool good = true;
    for (auto const& file : files) {
        good = handle(folder + file.name, file.text) && good;
    }
    return good;
}
}  // namespace

int main(int argc, char** argv)
{
    bool const check = argc == 3 && std::string_view(argv[1]) == "--check";
    if (argc != 2 && !check) {
        std::cerr << "usage: generate_docs [--check] FOLDER\n";
        return 2;
    }
    try {
        return handlePages(argv[argc - 1], check ? isUpToDate : writePage) ? 0 : 1;
    } catch (std::exception const& error) {
        std::cerr << error.what() << "\n";
        return 1;
    }
}
