#include "telephone/configuration/ConfigurationFile.h"

#include <utility>

#include "telephone/configuration/ConfigurationFields.h"
#include "telephone/configuration/ConfigurationRules.h"
#include "telephone/configuration/FieldReader.h"

namespace telephone {

namespace {

std::vector<std::string_view> sectionNames()
{
    std::vector<std::string_view> names;
    forEachSection([&names](std::string_view name, auto, auto const&) { names.push_back(name); });
    return names;
}

// One reading of one file.
class Reading
{
public:
    explicit Reading(std::string const& path)
        : reader_(path, sectionNames())
    {
        places_.file = path;
    }

    Outcome<Configuration> read(toml::table const& file)
    {
        auto outcome = reader_.readTop(file, configuration_, fields::kPhone);
        forEachSection([&](std::string_view name, auto member, auto const& sectionFields) {
            auto const* node = file.at_path(name).node();
            if (outcome && node != nullptr) {
                outcome = reader_.readSection(name, *node, configuration_.*member, sectionFields);
            }
        });
        return outcome
            .and_then([&] {
                notePlaces(file);
                return completeConfiguration(configuration_, places_);
            })
            .map([this] { return std::move(configuration_); });
    }

private:
    void notePlaces(toml::table const& file)
    {
        places_.lines = placesOf(file.get("line"));
        places_.keys = placesOf(file.get("key"));
        places_.exchangeNumbers = placesOf(file.at_path("exchange.number").node());
        places_.faults = placesOf(file.get("fault"));
        places_.sip = placeOf(file.at_path("sip.address"));
        places_.dns = placeOf(file.at_path("dns.servers"));
        places_.server = placeOf(file.at_path("server.registrar"));
        places_.push = placeOf(file.at_path("push.address"));
        places_.tls = placeOf(file.at_path("sip"));
        places_.exchange = placeOf(file.at_path("exchange"));
        places_.http = placeOf(file.at_path("http"));
        places_.exchangePassword = placeOf(file.at_path("exchange.password"));
        places_.recording = placeOf(file.at_path("recording.folder"));
        places_.certificates = placeOf(file.at_path("certificates.folder"));
        places_.sessionExpires = placeOf(file.at_path("calls.session-expires"));
    }
    static int placeOf(toml::node_view<toml::node const> node)
    {
        return node.node() == nullptr ? 0 : fileLineOf(node.node()->source());
    }
    static std::vector<int> placesOf(toml::node const* node)
    {
        std::vector<int> places;
        if (node != nullptr) {
            for (auto const& table : *node->as_array()) {
                places.push_back(fileLineOf(table.source()));
            }
        }
        return places;
    }

    FieldReader const reader_;
    Configuration configuration_;
    ConfigurationPlaces places_;
};

}  // namespace

ConfigurationFile::ConfigurationFile(std::string path)
    : path_(std::move(path))
{}

Outcome<Configuration> ConfigurationFile::read() const
{
    return readFileText(path_, "configuration file").and_then([this](std::string const& text) { return parse(text); });
}

Outcome<Configuration> ConfigurationFile::parse(std::string_view text) const
{
    return parseToml(text, path_).and_then([this](toml::table const& file) { return Reading(path_).read(file); });
}

}  // namespace telephone
