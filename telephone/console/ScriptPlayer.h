// Plays a script: the lines of the console, and steps that wait for what the telephone does.
//
//     OutgoingCallMakeRequest Line=4711 CallID=1 Destination=100
//     expect answer sfiSuccess                      the answer of the last request, or its first part
//     wait CallStateChangeEvent CallState=connected within 5
//     HoldCall Line=4711 CallID={CallID}            {Tag}: its value in the event that a wait took last
//     wait CallHeldEvent                            at most 10 seconds, where nothing else is said
//     never CallRetrievedEvent within 1
//     expect lamp 1 flashing within 2
//     pause 0.5
//
// A step that does not hold ends the script. A request goes out once the telephone has come to rest, a tenth of a
// second after the last request and event: a person would be no faster.
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

    // True when all held. Otherwise what did not is written to the transcript, with the script's name and the line.
    bool play(std::istream& script, std::string const& name);

private:
    using Seconds = std::chrono::duration<double>;
    using Step = void (ScriptPlayer::*)(Words const&);

    static Step findStep(Words const& words);

    void playLine(std::string const& line);
    void send(std::string const& request);
    void run(Words const& words);
    void expectAnswer(Words const& words);
    void expectLamp(Words const& words);
    void expect(Words const& words);
    void wait(Words const& words);
    void never(Words const& words);
    void pause(Words const& words);

    void beforeRequest();
    void afterRequest(CommandInterpreter::Result const& result);
    void remember(std::string const& event, std::string_view method);
    [[nodiscard]] std::string replaced(std::string text) const;
    [[nodiscard]] std::optional<std::string> rememberedValue(std::string_view tag) const;
    [[nodiscard]] std::string cameInstead() const;
    void checkStop() const;

    Conversation& conversation_;
    EventJournal journal_;
    std::map<std::string, std::string> values_;  // of the elements of the events that waits took
    bool hasRequest_ = false;
    std::optional<std::string> answer_;
    bool quit_ = false;
};

}  // namespace telephone
