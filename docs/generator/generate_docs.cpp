// Writes the pages and the description that are generated from the tables.
//
//   generate_docs FOLDER          writes requests.md, events.md, enumerations.md and protocol.json
//   generate_docs --check FOLDER  compares them with the tables; exits with 1 when one differs
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <string_view>

#include "Pages.h"
#include "telephone/protocol/ProtocolDescription.h"

namespace {
std::string contentOf(std::string const& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

bool isUpToDate(std::string const& path, std::string const& page)
{
    if (contentOf(path) == page) {
        return true;
    }
    std::cerr << path << " differs from the tables: build the target write_docs\n";
    return false;
}

bool write(std::string const& path, std::string const& page)
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
}  // namespace

int main(int argc, char** argv)
{
    bool const check = argc == 3 && std::string_view(argv[1]) == "--check";
    if (argc != 2 && !check) {
        std::cerr << "usage: generate_docs [--check] FOLDER\n";
        return 2;
    }
    std::string const folder = argv[argc - 1];
    auto const handle = check ? isUpToDate : write;
    struct
    {
        char const* name;
        std::string text;
    } const files[] = {
        {"/requests.md", requestsPage()},
        {"/events.md", eventsPage()},
        {"/enumerations.md", enumerationsPage()},
        {"/protocol.json", telephone::ProtocolDescription(TELEPHONE_VERSION).json()},
    };
    bool good = true;
    for (auto const& file : files) {
        good = handle(folder + file.name, file.text) && good;
    }
    return good ? 0 : 1;
}
