// Runs a fuzz target on files and folders of inputs, without a fuzzer: every build plays the corpus with it.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

#include "FuzzInput.h"

namespace {
void play(std::filesystem::path const& file)
{
    std::ifstream in(file, std::ios::binary);
    // Of the exact size, so that reading beyond its end is seen.
    std::vector<std::uint8_t> const bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    std::cout << file.filename().string() << std::endl;
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}
}  // namespace

int main(int count, char** arguments)
{
    int played = 0;
    for (int i = 1; i < count; ++i) {
        for (auto const& entry : std::filesystem::directory_iterator(arguments[i])) {
            if (entry.is_regular_file()) {
                play(entry.path());
                ++played;
            }
        }
    }
    std::cout << played << " inputs\n";
    return played > 0 ? 0 : 1;
}
