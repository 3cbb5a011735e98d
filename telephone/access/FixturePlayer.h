// The command `fixture`: plays the plan of a fixture (FixturePlan.h) through a session, and lets time move until each
// step shows in the state. Virtual time only; made for one fixture, on the session's thread.
#pragma once

#include <functional>
#include <string>

#include "telephone/base/Refusal.h"
#include "telephone/fixtures/Fixture.h"
#include "telephone/fixtures/FixtureCheck.h"
#include "telephone/fixtures/FixturePlan.h"
#include "telephone/protocol/TelephoneState.h"

namespace telephone {

class Session;

class FixturePlayer
{
public:
    FixturePlayer(Session& session, Fixture const& fixture);

    // Returns when the telephone is as the fixture says. Refused in real time, for a line that the telephone does not
    // have, while it has calls, if a step is refused or does not come about in 30 seconds, and if anything differs in
    // the end.
    [[nodiscard]] Outcome<> play();

private:
    using Condition = std::function<bool(TelephoneState const&)>;

    [[nodiscard]] Outcome<> checkStart(TelephoneState const& state) const;
    [[nodiscard]] Outcome<> playStep(FixtureStep const& step);
    [[nodiscard]] Outcome<> run(std::string const& line);
    [[nodiscard]] Outcome<> runRequest(std::string const& request);
    // Whether the condition came true within the longest time.
    [[nodiscard]] Outcome<bool> await(Condition const& condition);
    [[nodiscard]] Outcome<> compare();
    // Finds the id of an incoming call that has come.
    void noteId(std::size_t number, TelephoneState const& state);

    Session& session_;
    Fixture const& fixture_;
    FixtureCallIds ids_;  // 0: a call that has not come yet
};

// Reads the fixture and plays it.
[[nodiscard]] Outcome<> setUpFixture(Session& session, std::string const& file);

}  // namespace telephone
