#include "telephone/sip/Servers.h"

#include <algorithm>
#include <cctype>
#include <tuple>
#include <utility>

#include "telephone/sip/Stack.h"

namespace telephone::sip {

namespace {

// An ACK must find the server of its INVITE, even if DNS sets no time.
constexpr std::chrono::seconds kShortestTtl{5};
// For so long DNS is not asked again for a name that it did not know or that nobody answered for.
constexpr std::chrono::seconds kFailureKept{10};
// When DNS falls silent, the servers that it named before are used for so long until it is asked again (RFC 8767).
constexpr std::chrono::seconds kStaleKept{30};
// Far ends can make a telephone look names up, but not remember them all.
constexpr std::size_t kMostNames = 256;

std::string textOf(std::vector<RankedPlace> const& places)
{
    std::string text;
    for (auto const& each : places) {
        text += (text.empty() ? "" : ", ") + placeText(each.place);
    }
    return text;
}

}  // namespace

std::optional<Destination> namedDestination(std::string_view host, std::uint16_t port,
                                            std::optional<std::string_view> transport)
{
    pl const written = slice(host);
    sa address{};
    Destination destination{std::string(host), port, transport ? transportNamed(*transport) : std::nullopt};
    if (sa_set(&address, &written, 0) == 0 || destination.transport.has_value() != transport.has_value()) {
        return std::nullopt;
    }
    std::ranges::transform(destination.host, destination.host.begin(),
                           [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return destination;
}

Servers::Servers(EventLoop& loop, std::shared_ptr<Dns> dns, ServerSearch::Settings settings, Logger log)
    : loop_(loop)
    , dns_(std::move(dns))
    , settings_(std::move(settings))
    , log_(std::move(log))
{}

void Servers::find(Destination const& destination, Use use, std::weak_ptr<void> const& token, Found found)
{
    if (!entries_.contains(destination)) {
        makeRoom();
    }
    Entry& entry = entries_[destination];
    entry.registers = entry.registers || use == Use::kRegistration;
    if (SteadyClock::now() < entry.until) {
        return found(placesFor(entry, use));
    }
    entry.waiting.push_back({use, token, std::move(found)});
    if (entry.search) {
        return;
    }
    auto const search = std::make_shared<ServerSearch>(
        loop_, *dns_, destination, settings_,
        [this, destination](Outcome<ServerSearch::Result> result) { onSearched(destination, std::move(result)); });
    entry.search = search;
    search->start();
}

Outcome<> Servers::check(Destination const& destination) const
{
    auto const entry = entries_.find(destination);
    bool const isKnown = entry != entries_.end() && SteadyClock::now() < entry->second.until;
    return isKnown && entry->second.places.empty() ? entry->second.outcome : Outcome<>();
}

std::optional<Place> Servers::known(Destination const& destination) const
{
    auto const entry = entries_.find(destination);
    bool const isKnown = entry != entries_.end() && SteadyClock::now() < entry->second.until;
    auto const places = isKnown ? placesFor(entry->second, Use::kOther) : Outcome<Places>(Places());
    return places && !places->empty() ? std::optional(places->front()) : std::nullopt;
}

void Servers::onSearched(Destination const& destination, Outcome<ServerSearch::Result> result)
{
    Entry& entry = entries_[destination];
    entry.search.reset();
    bool const isSilent = !result && result.error().kind == RefusalKind::kUnavailable;
    if (result) {
        if (!std::ranges::is_permutation(entry.places, result->places)) {
            log(LogLevel::kInfo, destination.host + " has the servers " + textOf(result->places));
        }
        entry.places = std::move(result->places);
        entry.outcome = {};
        entry.until = SteadyClock::now() + std::max(result->ttl, kShortestTtl);
        std::erase_if(entry.failed, [&entry](auto const& failed) {
            return std::ranges::find(entry.places, failed.first, &RankedPlace::place) == entry.places.end();
        });
    } else {
        log(LogLevel::kWarning, result.error().reason);
        entry.outcome = tl::unexpected(result.error());
        entry.places = isSilent ? std::move(entry.places) : std::vector<RankedPlace>();
        entry.until = SteadyClock::now() + (entry.places.empty() ? kFailureKept : kStaleKept);
    }
    for (auto const& each : std::exchange(entry.waiting, {})) {
        if (!each.token.expired()) {
            each.found(placesFor(entries_[destination], each.use));
        }
    }
}

// Those that answer before those that failed, by rank, and of one rank the one that answered last before the others.
Outcome<Servers::Places> Servers::placesFor(Entry const& entry, Use use)
{
    if (entry.places.empty()) {
        return tl::unexpected(entry.outcome.error());
    }
    bool const mayReturn = use == Use::kRegistration || !entry.registers;
    auto const rests = [&](Place const& place) {
        auto const failed = entry.failed.find(place);
        return failed != entry.failed.end() && (!mayReturn || SteadyClock::now() < failed->second + kFailedServerRests);
    };
    auto order = entry.places;
    std::ranges::stable_sort(order, {}, [&](RankedPlace const& each) {
        return std::tuple(rests(each.place), each.rank, each.place != entry.answered);
    });
    Places places;
    std::ranges::transform(order, std::back_inserter(places), &RankedPlace::place);
    return places;
}

void Servers::noteAnswer(Destination const& destination, Place const& place)
{
    auto const entry = entries_.find(destination);
    if (entry != entries_.end()) {
        entry->second.failed.erase(place);
        entry->second.answered = place;
    }
}

void Servers::noteFailure(Destination const& destination, Place const& place)
{
    auto const entry = entries_.find(destination);
    if (entry != entries_.end()) {
        entry->second.failed[place] = SteadyClock::now();
    }
}

// The names give way of which no line needs to know who answers.
void Servers::makeRoom()
{
    if (entries_.size() >= kMostNames) {
        std::erase_if(entries_, [](auto const& each) { return !each.second.search && !each.second.registers; });
    }
}

void Servers::log(LogLevel level, std::string const& line) const
{
    if (log_) {
        log_(level, line);
    }
}

}  // namespace telephone::sip
