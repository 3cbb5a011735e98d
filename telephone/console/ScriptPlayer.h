// Plays a script: lines of the console, and steps that wait for results.
//
//     OutgoingCallMakeRequest Line=4711 CallID=1 Destination=100
//     expect answer sfiSuccess                      the answer to the last request, or its first part
//     wait CallStateChangeEvent CallState=connected within 5
//     HoldCall Line=4711 CallID={CallID}            {Tag}: its value in the events that waits took
//     wait CallHeldEvent                            at most 10 seconds by default
//     never CallRetrievedEvent within 1
//     expect lamp 1 flashing within 2
//     pause 0.5
//
// A step that fails ends the script. A request is sent once the telephone is at rest, a tenth of a second after the
// last request and event: a person would be no faster.
#pragma once

#include <istream>
#include <map>
#include <optional>
#include <string>

#include "telephone/console/Conversation.h"
#include "telephone/console/EventJournal.h"

namespace telephone {

class ScriptPlayer
{
public:
    explicit ScriptPlayer(Conversation& conversation);
    ~ScriptPlayer();

    // True if every step succeeded. The first failure is written to the transcript, with the script's name and the
    // line.
    bool play(std::istream& script, std::string const& name);

private:
    using Step = Outcome<> (ScriptPlayer::*)(Words const&);

    static Step findStep(Words const& words);

    Outcome<> playLine(std::string const& line);
    Outcome<> run(std::string const& request);
    Outcome<> run(Words const& words);
    Outcome<> expectAnswer(Words const& words);
    Outcome<> expectLamp(Words const& words);
    Outcome<> expect(Words const& words);
    Outcome<> wait(Words const& words);
    Outcome<> never(Words const& words);
    Outcome<> pause(Words const& words);

    Outcome<> beforeRequest();
    void noteResult(Conversation::Result const& result);
    Outcome<> waitForLamp(std::string const& lamp, std::string_view mode, Conversation::Clock::time_point deadline);
    Outcome<> waitForEvent(EventPattern const& pattern, Conversation::Clock::time_point deadline);
    Outcome<> waitForNone(EventPattern const& pattern, Conversation::Clock::time_point deadline);
    void remember(std::string const& event, std::string_view method);
    [[nodiscard]] Outcome<std::string> replaced(std::string text) const;
    [[nodiscard]] Outcome<Words> replaced(Words words) const;
    [[nodiscard]] std::optional<std::string> rememberedValue(std::string_view tag) const;
    [[nodiscard]] std::string cameInstead() const;
    [[nodiscard]] Outcome<> checkStop() const;

    Conversation& conversation_;
    EventJournal journal_;
    std::map<std::string, std::string> values_;  // of elements, from the events that waits took
    bool hasRequest_ = false;
    std::optional<std::string> answer_;
    bool quit_ = false;
};

}  // namespace telephone
