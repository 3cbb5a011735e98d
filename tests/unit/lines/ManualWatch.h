// A watch over parties whose state a test sets.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "telephone/lines/Lines.h"

namespace telephone {

class ManualWatch final : public PartyWatch
{
public:
    void watch(std::string const& number, Listener changed) override
    {
        listeners[number].push_back(std::move(changed));
    }
    void tell(std::string const& number, WatchedParty const& party)
    {
        for (auto const& listener : listeners[number]) {
            listener(party);
        }
    }
    void tell(std::string const& number, PartyStatus status)
    {
        WatchedParty party;
        party.status = status;
        tell(number, party);
    }

    std::map<std::string, std::vector<Listener>> listeners;
};

}  // namespace telephone
