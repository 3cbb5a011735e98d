// Tells listeners and observers how the lines change: listeners at once, observers on a thread of their own.
//
// Lines owns it. Every operation takes the phone lock, or is called with it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/lines/ELineState.h"

class Executable;

namespace telephone {

class DssLine;
class LineListener;
class LineObserver;
class PhoneCalls;
class TelephoneLine;
class WorkQueue;

class LineNotifier
{
public:
    explicit LineNotifier(PhoneCalls& calls);
    ~LineNotifier();
    LineNotifier(LineNotifier const&) = delete;
    LineNotifier& operator=(LineNotifier const&) = delete;

    void addListener(LineListener& listener);
    void removeListener(LineListener& listener);
    // An observer that is added twice is told once.
    void addObserver(LineObserver& observer);
    // Observers are told nothing afterwards.
    void stop();

    // --- lock held
    void lineChanged(TelephoneLine& line, ELineState before);
    void stationChanged(DssLine& station);
    // Tells the observers alone.
    void repeat(TelephoneLine const& line);

private:
    void tellObservers(std::string const& lineURI, ELineState state, std::string const& remoteURI);

    PhoneCalls& calls_;
    std::vector<LineListener*> listeners_;
    std::vector<LineObserver*> observers_;
    std::unique_ptr<WorkQueue> queue_;  // from the first observer on
};

}  // namespace telephone
