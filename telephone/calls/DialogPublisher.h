// Reports the calls of a line to its watchers (event package "dialog", RFC 4235): the busy-lamp fields, pick-ups and
// call-backs of other telephones. Owned by CallEngine; called with the phone lock held.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <vector>

#include "telephone/calls/CallList.h"
#include "telephone/calls/LineDirectory.h"
#include "telephone/sip/Subscription.h"
#include "telephone/sip/Timer.h"

namespace telephone {

class DialogPublisher
{
public:
    DialogPublisher(sip::EventLoop& loop, CallList const& calls);

    // Accepts a watcher and sends it the present state.
    void add(LineAccount const& line, std::unique_ptr<sip::Notifier> notifier);
    // A call on the line has changed. Published a moment later, several changes at once.
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

    CallList const& calls_;
    std::map<int, Watched> watched_;  // by line number
    std::set<int> changed_;
    sip::Timer timer_;
};

}  // namespace telephone
