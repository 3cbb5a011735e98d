#include "telephone/configuration/ConfigurationRules.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <map>

#include <arpa/inet.h>
#include <spdlog/fmt/fmt.h>

namespace telephone {

namespace {

class Rules
{
public:
    Rules(Configuration& configuration, ConfigurationPlaces const& places, ConfigurationRefusal const& refuse)
        : configuration_(configuration)
        , places_(places)
        , refuse_(refuse)
    {}

    void complete()
    {
        checkAddresses();
        completeLines();
        completeKeys();
    }

private:
    void checkAddresses() const
    {
        std::array<unsigned char, sizeof(in6_addr)> bytes{};
        auto const& address = configuration_.sip.address;
        if (inet_pton(AF_INET, address.c_str(), bytes.data()) != 1 &&
            inet_pton(AF_INET6, address.c_str(), bytes.data()) != 1) {
            refuse_(places_.sip, fmt::format("sip.address takes an IP address, not \"{}\"", address));
        }
        auto const& registrar = configuration_.server.registrar;
        if (!registrar.empty() && (!registrar.starts_with("sip:") || registrar.size() == 4)) {
            refuse_(places_.server, fmt::format("server.registrar takes sip:host:port, not \"{}\"", registrar));
        }
        auto const& push = configuration_.push.address;
        if (!push.empty() && (!push.starts_with("http://") || push.size() == 7)) {
            refuse_(places_.push, fmt::format("push.address takes http://host:port/path, not \"{}\"", push));
        }
    }

    void completeLines()
    {
        auto& lines = configuration_.lines;
        bool const standard = places_.lines.empty();
        if (standard) {
            lines = Configuration::standard().lines;
            lines.resize(configuration_.keyset ? lines.size() : 1);
        }
        if (!configuration_.keyset && lines.size() > 1) {
            refuse_(places_.lines[1], "a telephone with keyset = false has one line, not several");
        }
        for (std::size_t i = 0; i < lines.size(); ++i) {
            completeLine(lines[i], i);
        }
        if (std::none_of(lines.begin(), lines.end(), [](auto const& line) { return line.primary; })) {
            lines.front().primary = true;
        }
    }

    void completeLine(LineConfiguration& line, std::size_t index)
    {
        int const place = placeOf(places_.lines, index);
        int const counted = static_cast<int>(index) + 1;
        line.number = line.number == 0 ? counted : line.number;
        line.overviewPosition = line.overviewPosition == 0 ? counted : line.overviewPosition;
        if (line.id.empty()) {
            refuse_(place, "a line needs an id: id = \"4711\"");
        }
        if (line.id.find_first_of(" \t<>\"") != std::string::npos) {
            refuse_(place, fmt::format("a line's id holds no space, quote, < or >: \"{}\"", line.id));
        }
        once(lineIds_, line.id, place, fmt::format("the line id \"{}\"", line.id));
        once(lineNumbers_, std::to_string(line.number), place, fmt::format("the line number {}", line.number));
        if (line.primary) {
            once(primary_, {}, place, "primary = true");
        }
        if (line.hotWarmType != 0 && line.hotWarmDigits.empty()) {
            refuse_(place, fmt::format("line \"{}\" dials by itself but has no hot-warm-digits", line.id));
        }
    }

    void completeKeys()
    {
        auto& keys = configuration_.keys;
        if (places_.keys.empty()) {
            keys = places_.lines.empty() && configuration_.keyset ? Configuration::standard().keys : lineKeys();
        }
        for (std::size_t i = 0; i < keys.size(); ++i) {
            checkKey(keys[i], placeOf(places_.keys, i));
        }
    }

    std::vector<KeyConfiguration> lineKeys() const
    {
        std::vector<KeyConfiguration> keys;
        for (auto const& line : configuration_.lines) {
            keys.push_back({static_cast<int>(keys.size()) + 1, "line", line.id, line.description, false});
        }
        return keys;
    }

    void checkKey(KeyConfiguration const& key, int place)
    {
        if (key.number == 0) {
            refuse_(place, "a key needs a number: number = 1");
        }
        if (key.function.empty()) {
            refuse_(place, fmt::format("key {} needs a function: function = \"line\"", key.number));
        }
        once(keyNumbers_, std::to_string(key.number), place, fmt::format("the key number {}", key.number));
        bool const needsTarget =
            key.function == "line" || key.function == "dss" || key.function == "blf" || key.function == "toggle";
        if (needsTarget && key.target.empty()) {
            refuse_(place, fmt::format("key {} needs a target: the number or line of its function {}", key.number,
                                       key.function));
        }
        if (key.function == "line" && !hasLine(key.target)) {
            refuse_(place, fmt::format("key {} is for line \"{}\", which does not exist", key.number, key.target));
        }
        if (key.function == "toggle" && !isNumber(key.target)) {
            refuse_(place, fmt::format("key {} toggles a feature by its number, not \"{}\"", key.number, key.target));
        }
    }

    bool hasLine(std::string const& id) const
    {
        return std::any_of(configuration_.lines.begin(), configuration_.lines.end(),
                           [&id](auto const& line) { return line.id == id; });
    }
    static bool isNumber(std::string const& text)
    {
        return !text.empty() && std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c); });
    }
    static int placeOf(std::vector<int> const& places, std::size_t index)
    {
        return index < places.size() ? places[index] : 0;
    }

    using Taken = std::map<std::string, int>;
    void once(Taken& taken, std::string const& value, int place, std::string const& what)
    {
        auto const [found, isNew] = taken.emplace(value, place);
        if (!isNew) {
            refuse_(place, fmt::format("{} is taken already, on line {}", what, found->second));
        }
    }

    Configuration& configuration_;
    ConfigurationPlaces const& places_;
    ConfigurationRefusal const& refuse_;
    Taken lineIds_;
    Taken lineNumbers_;
    Taken primary_;
    Taken keyNumbers_;
};

}  // namespace

void completeConfiguration(Configuration& configuration, ConfigurationPlaces const& places,
                           ConfigurationRefusal const& refuse)
{
    Rules(configuration, places, refuse).complete();
}

}  // namespace telephone
