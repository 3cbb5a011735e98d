#include "telephone/configuration/ConfigurationRules.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <map>
#include <system_error>
#include <tuple>

#include <net/if.h>
#include <spdlog/fmt/fmt.h>
#include <unistd.h>

#include "telephone/configuration/FilePlace.h"
#include "telephone/configuration/HostPort.h"

namespace telephone {

namespace {

class Rules
{
public:
    Rules(Configuration& configuration, ConfigurationPlaces const& places)
        : configuration_(configuration)
        , places_(places)
    {}

    Outcome<> complete()
    {
        return checkAddresses()
            .and_then([this] { return checkTls(); })
            .and_then([this] { return checkHttp(); })
            .and_then([this] { return checkCalls(); })
            .and_then([this] { return checkExchange(); })
            .and_then([this] { return checkFolders(); })
            .and_then([this] { return completeLines(); })
            .and_then([this] { return completeKeys(); })
            .and_then([this] { return checkExchangeNumbers(); })
            .and_then([this] { return checkFaults(); });
    }

private:
    Outcome<> checkAddresses() const
    {
        auto const& address = configuration_.sip.address;
        if (!isIpAddress(address) && if_nametoindex(address.c_str()) == 0) {
            return places_.refusal(places_.sip, fmt::format("sip.address takes an IP address or a network interface of "
                                                            "this machine, not \"{}\"",
                                                            address));
        }
        for (auto const& server : configuration_.dns.servers) {
            auto const place = hostPortOf(server);
            if (!isIpAddress(server) && !(place && place->port != 0 && isIpAddress(place->host))) {
                return places_.refusal(
                    places_.dns,
                    fmt::format("dns.servers takes IP addresses with or without a port, not \"{}\"", server));
            }
        }
        auto const& registrar = configuration_.server.registrar;
        bool const isAddress = registrar.starts_with("sip:") || registrar.starts_with("sips:");
        if (!registrar.empty() && (!isAddress || registrar.ends_with(":"))) {
            return places_.refusal(
                places_.server,
                fmt::format("server.registrar takes sip:host:port or sips:host:port, not \"{}\"", registrar));
        }
        auto const& push = configuration_.push.address;
        if (!push.empty() && (!push.starts_with("http://") || push.size() == 7)) {
            return places_.refusal(places_.push,
                                   fmt::format("push.address takes http://host:port/path, not \"{}\"", push));
        }
        return {};
    }

    Outcome<> checkTls() const
    {
        auto const& [sip, exchange] = std::tie(configuration_.sip, configuration_.exchange);
        if (sip.certificate.empty() != sip.key.empty()) {
            return places_.refusal(places_.tls, fmt::format("sip.{} is missing: TLS takes a certificate and its key",
                                                            sip.key.empty() ? "key" : "certificate"));
        }
        if (exchange.certificate.empty() != exchange.key.empty()) {
            return places_.refusal(places_.exchange,
                                   fmt::format("exchange.{} is missing: TLS takes a certificate and its key",
                                               exchange.key.empty() ? "key" : "certificate"));
        }
        bool const usesExchange = exchange.enabled && configuration_.server.registrar.empty();
        if (sip.transport == Transport::kTls && usesExchange && exchange.certificate.empty()) {
            return places_.refusal(places_.tls, "sip.transport = \"tls\" needs exchange.certificate and exchange.key, "
                                                "because the lines register at the built-in exchange");
        }
        return {};
    }

    Outcome<> checkHttp() const
    {
        auto const& [address, certificate, key] = configuration_.http;
        auto const place = hostPortOf(address);
        if (!address.empty() && !place) {
            return places_.refusal(places_.http, fmt::format("http.address takes host:port, not \"{}\"", address));
        }
        if (certificate.empty() != key.empty()) {
            return places_.refusal(places_.http,
                                   fmt::format("http.{} is missing: HTTPS needs a certificate and its key",
                                               key.empty() ? "key" : "certificate"));
        }
        if (place && certificate.empty() && !isLoopback(place->host)) {
            return places_.refusal(places_.http,
                                   fmt::format("http.address \"{}\" can be reached from other machines, so it needs "
                                               "http.certificate and http.key; without them use 127.0.0.1",
                                               address));
        }
        return {};
    }

    // RFC 4028 section 4: an interval below 90 seconds is refused by everybody.
    Outcome<> checkCalls() const
    {
        int const seconds = configuration_.calls.sessionExpires;
        if (seconds > 0 && seconds < 90) {
            return places_.refusal(places_.sessionExpires,
                                   fmt::format("calls.session-expires takes 0, or 90 or more, not {}", seconds));
        }
        return {};
    }

    // Nobody can register with an empty password.
    Outcome<> checkExchange() const
    {
        if (configuration_.exchange.enabled && configuration_.exchange.password.empty()) {
            return places_.refusal(places_.exchangePassword,
                                   "exchange.password is empty: the lines need one to register");
        }
        return {};
    }

    Outcome<> checkFolders() const
    {
        auto const& recording = configuration_.recording.folder;
        auto const& certificates = configuration_.certificates.folder;
        if (!recording.empty() && !isFolder(recording, R_OK | W_OK | X_OK)) {
            return places_.refusal(
                places_.recording,
                fmt::format("recording.folder \"{}\" is not a folder that can be written", recording));
        }
        if (!certificates.empty() && !isFolder(certificates, R_OK | X_OK)) {
            return places_.refusal(
                places_.certificates,
                fmt::format("certificates.folder \"{}\" is not a folder that can be read", certificates));
        }
        return {};
    }

    Outcome<> completeLines()
    {
        auto& lines = configuration_.lines;
        bool const standard = places_.lines.empty();
        if (standard) {
            lines = Configuration::standard().lines;
            lines.resize(configuration_.keyset ? lines.size() : 1);
        }
        if (!configuration_.keyset && lines.size() > 1) {
            return places_.refusal(places_.lines[1], "a telephone with keyset = false has one line, not several");
        }
        for (std::size_t i = 0; i < lines.size(); ++i) {
            if (auto completed = completeLine(lines[i], i); !completed) {
                return completed;
            }
        }
        if (std::none_of(lines.begin(), lines.end(), [](auto const& line) { return line.primary; })) {
            lines.front().primary = true;
        }
        return {};
    }

    Outcome<> completeLine(LineConfiguration& line, std::size_t index)
    {
        int const place = placeOf(places_.lines, index);
        int const counted = static_cast<int>(index) + 1;
        line.number = line.number == 0 ? counted : line.number;
        line.overviewPosition = line.overviewPosition == 0 ? counted : line.overviewPosition;
        if (line.id.empty()) {
            return places_.refusal(place, "a line needs an id: id = \"4711\"");
        }
        if (line.id.find_first_of(" \t<>\"") != std::string::npos) {
            return places_.refusal(place,
                                   fmt::format("a line's id must not contain spaces, quotes, < or >: \"{}\"", line.id));
        }
        if (line.hotWarmType != 0 && line.hotWarmDigits.empty()) {
            return places_.refusal(place,
                                   fmt::format("line \"{}\" dials by itself but has no hot-warm-digits", line.id));
        }
        return once(lineIds_, line.id, place, fmt::format("the line id \"{}\"", line.id))
            .and_then([&] {
                auto const number = std::to_string(line.number);
                return once(lineNumbers_, number, place, "the line number " + number);
            })
            .and_then([&] { return line.primary ? once(primary_, {}, place, "primary = true") : Outcome<>(); });
    }

    Outcome<> completeKeys()
    {
        auto& keys = configuration_.keys;
        if (places_.keys.empty()) {
            keys = places_.lines.empty() && configuration_.keyset ? Configuration::standard().keys : lineKeys();
        }
        for (std::size_t i = 0; i < keys.size(); ++i) {
            if (auto checked = checkKey(keys[i], placeOf(places_.keys, i)); !checked) {
                return checked;
            }
        }
        return {};
    }

    std::vector<KeyConfiguration> lineKeys() const
    {
        std::vector<KeyConfiguration> keys;
        for (auto const& line : configuration_.lines) {
            keys.push_back({static_cast<int>(keys.size()) + 1, "line", line.id, line.description, false});
        }
        return keys;
    }

    Outcome<> checkKey(KeyConfiguration const& key, int place)
    {
        if (key.number == 0) {
            return places_.refusal(place, "a key needs a number: number = 1");
        }
        if (key.function.empty()) {
            return places_.refusal(place, fmt::format("key {} needs a function: function = \"line\"", key.number));
        }
        auto const number = std::to_string(key.number);
        return once(keyNumbers_, number, place, "the key number " + number).and_then([&] {
            return checkTarget(key, place);
        });
    }

    Outcome<> checkTarget(KeyConfiguration const& key, int place) const
    {
        bool const needsTarget =
            key.function == "line" || key.function == "dss" || key.function == "blf" || key.function == "toggle";
        if (needsTarget && key.target.empty()) {
            return places_.refusal(place, fmt::format("key {} needs a target: the number or line of its function {}",
                                                      key.number, key.function));
        }
        if (key.function == "line" && !hasLine(key.target)) {
            return places_.refusal(
                place, fmt::format("key {} is for line \"{}\", which does not exist", key.number, key.target));
        }
        if (key.function == "toggle" && !isNumber(key.target)) {
            return places_.refusal(
                place, fmt::format("key {} toggles a feature by its number, not \"{}\"", key.number, key.target));
        }
        return {};
    }

    Outcome<> checkExchangeNumbers()
    {
        auto const& numbers = configuration_.exchangeNumbers;
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            if (auto checked = checkExchangeNumber(numbers[i], placeOf(places_.exchangeNumbers, i)); !checked) {
                return checked;
            }
        }
        return {};
    }

    Outcome<> checkExchangeNumber(ExchangeNumberConfiguration const& number, int place)
    {
        auto const wrong = [&](std::string_view key, std::string_view why) {
            return places_.refusal(place, fmt::format("exchange.number \"{}\": {} {}", number.number, key, why));
        };
        if (number.number.empty()) {
            return places_.refusal(place, "exchange.number needs a number: number = \"110\"");
        }
        if (!configuration_.exchange.enabled) {
            return wrong("number", "is in vain: exchange.enabled is false");
        }
        if (!configuration_.server.registrar.empty()) {
            return wrong("number", "is in vain: server.registrar names another call server");
        }
        if (number.does.list.empty() && !number.forwardOnBusy.empty()) {
            return wrong("forward-on-busy", "needs does: without steps the number is never busy");
        }
        if (number.does.list.empty() && !number.forwardOnNoReply.empty()) {
            return wrong("forward-on-no-reply", "needs does: without steps the number is not called here");
        }
        for (auto const& line : configuration_.lines) {
            bool const isItsLine = (line.user.empty() ? line.id : line.user) == number.number;
            if (isItsLine && number.appearances != 0 && number.appearances != line.appearances) {
                return wrong("appearances",
                             fmt::format("differs from line \"{}\", which has {}", line.id, line.appearances));
            }
        }
        for (auto const& target : {number.forwardAlways, number.forwardOnBusy, number.forwardOnNoReply}) {
            if (target == number.number) {
                return wrong("forwarding", "leads to the number itself");
            }
        }
        return once(exchangeNumbers_, number.number, place,
                    fmt::format("exchange.number \"{}\": number", number.number));
    }

    Outcome<> checkFaults() const
    {
        for (std::size_t i = 0; i < configuration_.faults.size(); ++i) {
            auto const& fault = configuration_.faults[i];
            int const moments = (fault.at.empty() ? 0 : 1) + (fault.on.empty() ? 0 : 1) + (fault.after == 0 ? 0 : 1);
            if (fault.what.empty()) {
                return places_.refusal(placeOf(places_.faults, i), "a fault needs what: what = \"store full\"");
            }
            if (moments > 1) {
                return places_.refusal(placeOf(places_.faults, i),
                                       "a fault begins at one moment: only one of at, on and after can be given");
            }
        }
        return {};
    }

    bool hasLine(std::string const& id) const
    {
        return std::any_of(configuration_.lines.begin(), configuration_.lines.end(),
                           [&id](auto const& line) { return line.id == id; });
    }
    static bool isFolder(std::string const& path, int access)
    {
        std::error_code unknown;
        return std::filesystem::is_directory(path, unknown) && ::access(path.c_str(), access) == 0;
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
    Outcome<> once(Taken& taken, std::string const& value, int place, std::string const& what) const
    {
        auto const [found, isNew] = taken.emplace(value, place);
        if (!isNew) {
            return places_.refusal(place, fmt::format("{} is already used on line {}", what, found->second));
        }
        return {};
    }

    Configuration& configuration_;
    ConfigurationPlaces const& places_;
    Taken lineIds_;
    Taken lineNumbers_;
    Taken primary_;
    Taken keyNumbers_;
    Taken exchangeNumbers_;
};

}  // namespace

tl::unexpected<Refusal> ConfigurationPlaces::refusal(int line, std::string_view what) const
{
    return refuseAt(file, line, what);
}

Outcome<> completeConfiguration(Configuration& configuration, ConfigurationPlaces const& places)
{
    return Rules(configuration, places).complete();
}

}  // namespace telephone
