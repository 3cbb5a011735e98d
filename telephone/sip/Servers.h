// Where requests to a name go: the servers of each name, found by DNS and kept for their time to live, which of them
// answered last and which did not answer. The one that answers is kept, until it fails or a preferred one is due to be
// tried again. One per element; used under the loop's lock.
//
//     servers.find(destination, use, found) -> request to the first place -> noteAnswer
//                                           or -> noteFailure -> request to the next place -> ...
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "telephone/base/Refusal.h"
#include "telephone/sip/Dns.h"
#include "telephone/sip/Log.h"
#include "telephone/sip/ServerSearch.h"
#include "telephone/time/SteadyClock.h"

namespace telephone::sip {

class EventLoop;

// A server that has failed comes last for so long. Then it is tried again, which costs whoever does it up to four
// seconds: often enough that a repaired server is not idle for an hour, and seldom enough that nobody notices.
constexpr std::chrono::minutes kFailedServerRests{10};

// The destination of a URI whose host is a name. Nothing for an IP address, which needs no server to be found, and for
// a transport that this end has not. transport: the URI's parameter, if it has one.
std::optional<Destination> namedDestination(std::string_view host, std::uint16_t port,
                                            std::optional<std::string_view> transport);

class Servers
{
public:
    using Places = std::vector<Place>;  // in the order in which they should be tried; never empty
    using Found = std::function<void(Outcome<Places> const&)>;

    // What a request is for. Where lines register, a registration is the first to try a server again: nobody waits for
    // it, and a server needs it before it takes calls.
    enum class Use : int
    {
        kRegistration,
        kOther,
    };

    Servers(EventLoop& loop, std::shared_ptr<Dns> dns, ServerSearch::Settings settings, Logger log);

    // Finds the servers of a destination, and calls back: from within if they are known, else when DNS has answered.
    // Nobody is called after the token has ended, or after the destructor.
    void find(Destination const& destination, Use use, std::weak_ptr<void> const& token, Found found);
    // Why a destination cannot be found, as far as that is known: a name that DNS did not know a moment ago.
    [[nodiscard]] Outcome<> check(Destination const& destination) const;

    // The place to which a request would go now; nothing if DNS has to be asked.
    [[nodiscard]] std::optional<Place> known(Destination const& destination) const;

    void noteAnswer(Destination const& destination, Place const& place);
    void noteFailure(Destination const& destination, Place const& place);

    EventLoop& loop() const { return loop_; }
    void log(LogLevel level, std::string const& line) const;

private:
    struct Waiting
    {
        Use use = Use::kOther;
        std::weak_ptr<void> token;
        Found found;
    };
    struct Entry
    {
        std::vector<RankedPlace> places;                  // the last that DNS named; empty: none yet
        Outcome<> outcome;                                // of the last search
        SteadyClock::time_point until;                    // then DNS is asked again
        std::map<Place, SteadyClock::time_point> failed;  // when
        std::optional<Place> answered;                    // last
        bool registers = false;
        std::shared_ptr<ServerSearch> search;  // under way
        std::vector<Waiting> waiting;          // for it
    };

    void onSearched(Destination const& destination, Outcome<ServerSearch::Result> result);
    [[nodiscard]] static Outcome<Places> placesFor(Entry const& entry, Use use);
    void makeRoom();

    EventLoop& loop_;
    std::shared_ptr<Dns> const dns_;
    ServerSearch::Settings const settings_;
    Logger const log_;
    std::map<Destination, Entry> entries_;
};

}  // namespace telephone::sip
