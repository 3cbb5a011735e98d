// Any text as a configuration file: it is read, or refused with a reason that names the file.
#include "FuzzInput.h"
#include "telephone/configuration/ConfigurationFile.h"

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string const text(reinterpret_cast<char const*>(data), size);
    try {
        (void)telephone::ConfigurationFile("telephone.toml").parse(text);
    } catch (telephone::ConfigurationError const& refusal) {
        require(std::string(refusal.what()).find("telephone.toml") != std::string::npos,
                "a refusal does not name the file");
    }
    return 0;
}
