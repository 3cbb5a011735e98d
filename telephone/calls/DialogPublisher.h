// Tells those who watch a line of this telephone which calls it has (event package "dialog", RFC 4235): busy-lamp
// fields, pick-ups and call-backs of other telephones live of it. Owned by the engine; called with the phone lock held.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <vector>

#include "telephone/calls/Call.h"
#include "telephone/calls/LineDirectory.h"
#include "telephone/sip/Subscription.h"
#include "telephone/sip/Timer.h"

namespace telephone {

class DialogPublisher
{
public:
    using CallsOfLine = std::function<std::vector<Call const*>(int lineNumber)>;

    DialogPublisher(sip::EventLoop& loop, CallsOfLine callsOfLine);

    // Accepts, and tells the state as it is.
    void add(LineAccount const& line, std::unique_ptr<sip::Notifier> notifier);
    // A call of the line has changed; told a moment later, several changes as one.
    void lineChanged(int lineNumber);
    void clear();

private:
    struct Watched
    {
        LineAccount line;
        std::uint32_t version = 0;
        std::vector<std::unique_ptr<sip::Notifier>> notifiers;
    };

    std::string document(Watched& watched) const;
    void publish();

    CallsOfLine callsOfLine_;
    std::map<int, Watched> watched_;  // by line number
    std::set<int> changed_;
    sip::Timer timer_;
};

}  // namespace telephone
