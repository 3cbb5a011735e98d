// The settings of a call engine, fixed when it is made.
#pragma once

#include <chrono>
#include <string>

#include "telephone/media/AudioSources.h"
#include "telephone/sip/UserAgent.h"

namespace telephone {

struct Configuration;

struct EngineConfiguration
{
    sip::UserAgentConfig agent;
    sip::Permissions permissions;  // of all lines
    AudioSettings audio;
    std::string heardFile;  // WAV file for everything that is heard; empty: none
    int maximumCalls = 100;
    bool automaticRinging = true;
    int doNotDisturbStatus = 486;
    std::chrono::milliseconds reinviteTimeout{8000};   // until an unanswered re-INVITE ends the call
    int callBacks = 5;                                 // the most at once
    std::string groupPickup;                           // number; empty: none
    std::string directedPickup;                        // prefix of the number to pick up; empty: none
    std::string voiceMail;                             // number
    bool messageWaiting = true;                        // subscribe to message-summary
    std::chrono::milliseconds ringTime{5000};          // length of one ring, for forwarding on no reply
    std::chrono::milliseconds dialogAnswerTime{2000};  // longest wait for the dialogs of a far end
    std::chrono::milliseconds settlingTime{500};       // for which a party must be free before a call-back
    std::chrono::seconds callBackTime{1800};           // longest wait of a call-back for its party

    static EngineConfiguration from(Configuration const& configuration);
};

}  // namespace telephone
