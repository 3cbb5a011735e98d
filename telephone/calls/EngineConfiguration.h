// What the call engine is told once, when it is made.
#pragma once

#include <chrono>
#include <string>

#include "telephone/sip/UserAgent.h"

namespace telephone {

struct Configuration;

struct EngineConfiguration
{
    sip::UserAgentConfig agent;        // its log is the engine's too
    std::string audioSource = "tone";  // tone, silence, or a WAV file
    std::string heardFile;             // WAV file of all that is heard; empty: none
    int maximumCalls = 100;
    bool automaticRinging = true;
    int doNotDisturbStatus = 486;
    std::chrono::milliseconds reinviteTimeout{8000};   // until an unanswered re-INVITE ends the call
    int callBacks = 5;                                 // at most so many at once
    std::string groupPickup;                           // number; empty: none
    std::string directedPickup;                        // number that the number to pick up is appended to; empty: none
    std::string voiceMail;                             // number
    bool messageWaiting = true;                        // subscribe to message-summary
    std::chrono::milliseconds ringTime{5000};          // length of one ring, for forwarding on no reply
    std::chrono::milliseconds dialogAnswerTime{2000};  // how long a far end may take to tell its dialogs
    std::chrono::milliseconds settlingTime{500};       // how long a party must be free for a call-back
    std::chrono::seconds callBackTime{1800};           // how long a call-back waits for the party

    static EngineConfiguration from(Configuration const& configuration);
};

}  // namespace telephone
