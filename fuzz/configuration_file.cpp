// Reads any text as a configuration file: it is accepted, or refused with a reason that names the file.
#include "FuzzInput.h"
#include "telephone/configuration/ConfigurationFile.h"

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::string const text(reinterpret_cast<char const*>(data), size);
    auto const configuration = telephone::ConfigurationFile("telephone.toml").parse(text);
    require(configuration || configuration.error().reason.find("telephone.toml") != std::string::npos,
            "a refusal does not name the file");
    return 0;
}
