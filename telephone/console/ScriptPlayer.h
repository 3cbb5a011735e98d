// Plays a script: lines of the console, and steps that wait for results.
//
//     OutgoingCallMakeRequest Line=4711 CallID=1 Destination=100
//     expect answer sfiSuccess                      the answer to the last request, or its first part
//     wait CallStateChangeEvent CallState=connected within 5
//     HoldCall Line=4711 CallID={CallID}            {Tag}: its value in the events that waits took
//     wait CallHeldEvent                            at most 10 seconds by default
//     never CallRetrievedEvent within 1
//     expect lamp 1 flashing within 2
//     expect panel held.txt                         what the command panel draws is what the file has
//     pause 0.5
//     try press 9                                   may be refused
//
// Options (ScriptOptions.h) may stand before the first step. The whole script is checked before its first step. A step
// that fails ends the script. A request is sent once the telephone is at rest, a tenth of a second after the last
// request and event: a person would be no faster. After the last step, too, the player waits for the telephone to be at
// rest, so that the transcript has the events that follow closely.
#pragma once

#include <functional>
#include <istream>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "telephone/console/Conversation.h"
#include "telephone/console/EventJournal.h"

namespace telephone {

// A mistake that the check found, or the step that failed.
struct ScriptFailure
{
    int line = 0;
    std::string step;    // as it stands in the script
    std::string reason;  // a sentence
};

// "a.script:3: wait CallHeldEvent: it did not come; nothing else came"
[[nodiscard]] std::string failureText(std::string const& script, ScriptFailure const& failure);

// How a script went.
struct ScriptResult
{
    int steps = 0;                        // that succeeded
    double seconds = 0;                   // from the first step to the last
    std::vector<ScriptFailure> failures;  // every mistake, or the step that failed; empty: the script passed

    [[nodiscard]] bool passed() const { return failures.empty(); }
};

class ScriptPlayer
{
public:
    explicit ScriptPlayer(Conversation& conversation);
    ~ScriptPlayer();

    // What went wrong is written to the transcript, too.
    ScriptResult play(std::istream& script, std::string const& name);

private:
    struct Line
    {
        int number;
        std::string text;
    };
    using Action = std::function<Outcome<>()>;
    // Reads the words of a step. Refused if they are wrong.
    using Step = Outcome<Action> (ScriptPlayer::*)(Words const&);

    static Step findStep(Words const& words);

    // --- before the first step
    [[nodiscard]] static std::vector<Line> linesOf(std::istream& script);
    std::vector<ScriptFailure> check(std::vector<Line> const& lines);
    [[nodiscard]] Outcome<> checkLine(std::string const& line, bool& isStrict);
    [[nodiscard]] Outcome<> checkRequestText(std::string const& request, bool isStrict) const;
    [[nodiscard]] Outcome<> checkCommand(Words const& words, bool& isStrict) const;

    Outcome<> playLine(std::string const& line);
    Outcome<> play(Step step, Words const& words, std::string const& line);
    Outcome<> run(std::string const& request);
    Outcome<> run(Words const& words);
    Outcome<Action> expect(Words const& words);
    Outcome<Action> expectLamp(Words const& words);
    Outcome<Action> expectPanel(Words const& words);
    Outcome<Action> wait(Words const& words);
    Outcome<Action> never(Words const& words);
    Outcome<Action> pause(Words const& words);
    Outcome<Action> attempt(Words const& words);
    Outcome<Action> option(Words const& words);

    Outcome<> beforeRequest();
    void noteResult(Conversation::Result const& result);
    Outcome<> compareAnswer(std::string const& expected) const;
    Outcome<> waitForLamp(std::string const& lamp, std::string_view mode, Conversation::Clock::time_point deadline);
    // Until there is no difference between the panel and the rows.
    Outcome<> waitForPanel(std::vector<std::string> const& rows, Conversation::Clock::time_point deadline);
    Outcome<> waitForEvent(EventPattern const& pattern, Conversation::Clock::time_point deadline);
    Outcome<> waitForNone(EventPattern const& pattern, Conversation::Clock::time_point deadline);
    Outcome<> rest(Conversation::Clock::time_point deadline);
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
