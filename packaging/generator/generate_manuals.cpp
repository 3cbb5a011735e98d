// Writes the manual pages and the completions for shells.
//
//   generate_manuals BASH FOLDER   BASH: telephone.bash.in
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "CommandLineDescription.h"
#include "ManualPages.h"
#include "ShellCompletions.h"

namespace {

std::string contentOf(std::string const& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error(path + " cannot be read");
    }
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void write(std::filesystem::path const& path, std::string const& content)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << content;
    file.close();
    if (!file) {
        throw std::runtime_error(path.string() + " cannot be written");
    }
}

void writeAll(std::string const& bash, std::filesystem::path const& folder)
{
    std::filesystem::create_directories(folder);
    auto const line = describeCommandLine();
    write(folder / "telephone.1", telephonePage(line));
    write(folder / "telephone-check.1", checkPage());
    write(folder / "telephone.toml.5", configurationManual());
    write(folder / "telephone-protocol.7", protocolPage());
    write(folder / "telephone.bash", contentOf(bash) + bashTables(line));
    write(folder / "_telephone", zshCompletion(line));
}

}  // namespace

int main(int count, char** arguments)
{
    constexpr int kArguments = 3;
    if (count != kArguments) {
        std::cerr << "usage: generate_manuals BASH FOLDER\n";
        return 2;
    }
    try {
        writeAll(arguments[1], arguments[2]);
        return 0;
    } catch (std::exception const& error) {
        std::cerr << error.what() << "\n";
        return 1;
    }
}
