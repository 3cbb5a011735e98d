// telephone-check LIBRARY PROGRAM [MORE...]: what the service's library needs and the program does not export, each
// with its header and purpose. MORE are shared libraries of the program that define parts of the platform. The exit
// status is 0 when nothing is missing, 1 when something is, and 2 when a file cannot be read or the command line is
// wrong.
#include <algorithm>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <cxxabi.h>

#include "platform/kit/check/ElfFile.h"

namespace {

struct Purpose
{
    std::string_view function;
    std::string_view header;
    std::string_view text;
};

// The functions of platform/ with the first sentence of their documentation, written by write_purposes.py.
constexpr Purpose kPurposes[] = {
#include "Purposes.inc"
};

constexpr int kComplete = 0;
constexpr int kIncomplete = 1;
constexpr int kUnusable = 2;

void replaceAll(std::string& text, std::string_view what, std::string_view with)
{
    for (auto found = text.find(what); found != std::string::npos; found = text.find(what, found + with.size())) {
        text.replace(found, what.size(), with);
    }
}

std::string demangled(std::string const& symbol)
{
    int status = 0;
    std::unique_ptr<char, void (*)(void*)> const name(abi::__cxa_demangle(symbol.c_str(), nullptr, nullptr, &status),
                                                      std::free);
    std::string text = name == nullptr ? symbol : name.get();
    replaceAll(text, "std::__cxx11::basic_string<char, std::char_traits<char>, std::allocator<char> >", "std::string");
    replaceAll(text, "std::vector<std::string, std::allocator<std::string > >", "std::vector<std::string>");
    replaceAll(text, "std::vector<int, std::allocator<int> >", "std::vector<int>");
    replaceAll(text, "[abi:cxx11]", "");
    return text;
}

std::string_view nameOf(std::string_view signature)
{
    return signature.substr(0, signature.find('('));
}

Purpose const* purposeOf(std::string_view function)
{
    auto const* const found = std::find_if(std::begin(kPurposes), std::end(kPurposes),
                                           [&](Purpose const& each) { return each.function == function; });
    return found == std::end(kPurposes) ? nullptr : found;
}

// The symbol of a function of the same name with other parameters; empty when there is none. Compiled with another
// standard library or its former ABI, a program exports each function with texts so. Overloads that the library needs,
// too, are none.
std::string namesake(std::string_view signature, std::set<std::string> const& exported,
                     std::vector<std::string> const& needed)
{
    std::string_view const name = nameOf(signature);
    std::string_view const word = name.substr(std::min(name.size(), name.rfind(':') + 1));
    for (auto const& symbol : exported) {
        // Most symbols are told apart without the cost of demangling.
        bool const isCandidate =
            symbol.find(word) != std::string::npos && std::find(needed.begin(), needed.end(), symbol) == needed.end();
        if (isCandidate && nameOf(demangled(symbol)) == name) {
            return symbol;
        }
    }
    return {};
}

void printMissing(std::string const& symbol, std::set<std::string> const& exported,
                  std::vector<std::string> const& needed)
{
    std::string const signature = demangled(symbol);
    std::cout << '\n' << signature << '\n';
    if (Purpose const* const purpose = purposeOf(nameOf(signature))) {
        std::cout << "    " << purpose->header << ": " << purpose->text << '\n';
    } else {
        std::cout << "    not declared in platform/\n";
    }
    if (std::string const other = namesake(signature, exported, needed); !other.empty()) {
        std::cout << "    exported is " << other << " instead of " << symbol
                  << ": compile the program with libstdc++ and _GLIBCXX_USE_CXX11_ABI=1\n";
    }
}

int check(std::string const& library, std::vector<std::string> const& programs)
{
    ElfFile const needing = ElfFile::read(library);
    std::set<std::string> exported;
    bool exportsFunctions = false;
    for (auto const& program : programs) {
        ElfFile file = ElfFile::read(program);
        exported.merge(file.exported);
        exportsFunctions = exportsFunctions || file.exportsFunctions;
    }
    std::vector<std::string> missing;
    std::copy_if(needing.needed.begin(), needing.needed.end(), std::back_inserter(missing),
                 [&](std::string const& symbol) { return exported.count(symbol) == 0; });

    std::cout << library << ": version " << needing.version.value_or("unknown: it has no note of it") << '\n';
    if (missing.empty()) {
        std::cout << programs.front() << ": exports all " << needing.needed.size() << " functions that it needs\n";
        return kComplete;
    }
    std::cout << programs.front() << ": " << missing.size() << " of the " << needing.needed.size()
              << " functions that it needs are missing\n";
    if (!exportsFunctions) {
        std::cout << "The program exports no function at all. Link it with -rdynamic (CMake: ENABLE_EXPORTS ON).\n";
    }
    for (auto const& symbol : missing) {
        printMissing(symbol, exported, needing.needed);
    }
    return kIncomplete;
}

}  // namespace

int main(int count, char** arguments)
{
    if (count < 3) {
        std::cerr << "Usage: telephone-check LIBRARY PROGRAM [SHARED_LIBRARY_OF_THE_PROGRAM...]\n";
        return kUnusable;
    }
    try {
        return check(arguments[1], {arguments + 2, arguments + count});
    } catch (std::exception const& error) {
        std::cerr << "telephone-check: " << error.what() << '\n';
        return kUnusable;
    }
}
