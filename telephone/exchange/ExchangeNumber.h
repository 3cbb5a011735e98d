// A number of the exchange as a plain value: its name, what it does with calls, and everything else that the
// configuration or a command can say of it.
#pragma once

#include <chrono>
#include <string>

#include "telephone/exchange/Steps.h"
#include "telephone/sip/DialogInfo.h"

namespace telephone::exchange {

// Where calls go instead; an empty number: nowhere.
struct NumberForwarding
{
    std::string always = {};
    std::string onBusy = {};     // instead of "busy"
    std::string onNoReply = {};  // when the call is not answered within noReplyAfter
    std::chrono::milliseconds noReplyAfter{10000};
};

// What watchers of a number see while it has no call.
enum class NumberLamp : int
{
    kFromSteps,  // busy for a number that begins with "busy", else idle
    kIdle,
    kRinging,
    kBusy,
    kHolding,
};

struct ExchangeNumber
{
    std::string number = {};
    std::string name = {};         // shown to the other party; may be empty
    std::string description = {};  // for people; empty: the steps
    Steps steps = {};              // of its calls; none: a telephone registers under the number
    NumberForwarding forwarding = {};
    sip::MessageCounts messages = {};  // that wait when the exchange starts
    std::string pickupGroup = {};      // *98 picks up calls of the caller's group; empty: any call
    int appearances = 0;               // of a line that it shares with telephones; 0: not shared
    NumberLamp lamp = NumberLamp::kFromSteps;
};

}  // namespace telephone::exchange
