// What scripts have touched of all that a telephone can do: requests, events, values of enumerations, keys, lamps with
// their modes, timers, and rules for reasons. What there is comes from the tables that describe it, and nothing else.
//
// In the telephone that plays a script, the messages and Touched.h fill it in; the test runner adds those of all
// scripts. One thread.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "telephone/access/Message.h"

struct Enumeration;

namespace telephone {

class Coverage
{
public:
    // By kind: "requests" -> {"HoldCall", "RetrieveCall"}.
    using Names = std::map<std::string, std::set<std::string>>;

    Coverage();

    // A message of the conversation.
    void note(Message const& message);
    // What another telephone has touched.
    void add(Names const& touched);
    // With what Touched.h has kept. Only names that the tables have, too.
    [[nodiscard]] Names touched() const;

    // For each kind how many there are, how many were touched, and the names of the others; at most `width` columns.
    [[nodiscard]] std::string table(std::size_t width) const;
    // {"requests":{"touched":[...],"untouched":[...]},...}
    [[nodiscard]] std::string json() const;

private:
    void noteRequest(std::string_view text);
    void noteAnswer(std::string_view text);
    void noteEvent(std::string_view text);
    void noteValue(Enumeration const* values, std::string_view value);
    [[nodiscard]] std::set<std::string> untouched(std::string const& kind) const;

    Names const all_;
    Names touched_;
    std::string request_;  // method of the latest request
};

}  // namespace telephone
