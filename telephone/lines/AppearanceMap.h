// The calls on the appearances of multi-call-appearance lines.
//
// Each appearance has a virtual line number of its own. An outgoing call is mapped when a request names it, before it
// exists; an incoming call when it arrives. The mapping ends with the call, or when call control finds that there is no
// such call. A mapping that never reaches call control expires.
//
// LineTable owns it; any thread.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "platform/sfi/SfiMCAMapper.h"
#include "telephone/time/SteadyClock.h"

namespace telephone {

class AppearanceMap final : public SfiMCAMapper
{
public:
    using Clock = std::function<SteadyClock::time_point()>;

    // A mapping expires when its call has not begun by then.
    static constexpr std::chrono::seconds kMappingTimeout{10};

    explicit AppearanceMap(Clock clock = &SteadyClock::now);

    // Adds a multi-call-appearance line with the virtual line numbers of its appearances, the first one first. Before
    // any use.
    // Its identifier names the line where all its appearances are taken.
    void addLine(int lineNumber, std::string lineID, std::vector<int> virtualLines);

    // lineID: a virtual line number, or a line number for the first free appearance of that line. Nothing changes for
    // any other number, nor for a line without a free appearance, which is reported.
    void assignCallToLine(int lineID, int callID, int& appearanceIndex) override;
    // A reserved appearance if there is one, else the first free one. When all are taken: 0, and a refusal is reported.
    int findFirstFreeVirtualLine(int lineID) const override;
    bool findVirtualLineforCallID(int callID, int& lineID, int& appearanceIndex) const override;

    // Maps an incoming call to the first appearance that is neither taken nor reserved; 0 when there is none.
    int seizeForIncoming(int lineNumber, int callID);
    void callBegan(int callID, int virtualLine);
    void callEnded(int callID);
    // Call control knows no such call. The mapping of one that has begun stays.
    void callUnknown(int callID);

    // Keeps an appearance for the next outgoing call of its line, unless it is taken.
    void reserve(int virtualLine);
    void unreserve(int virtualLine);

    // Whether another telephone of a shared line has the appearance, which is then not free.
    void setElsewhere(int virtualLine, bool elsewhere);

private:
    struct Appearances
    {
        std::string lineID;
        std::vector<int> virtualLines;
    };
    struct Appearance
    {
        int lineNumber = 0;
        int index = 0;
    };
    struct Mapping
    {
        int virtualLine = 0;
        bool callExists = false;
        SteadyClock::time_point madeAt;
    };

    bool isCurrent(Mapping const& mapping) const;
    bool carriesCall(int virtualLine) const;
    int firstFree(int lineNumber) const;
    void removeExpired();

    Clock clock_;
    mutable std::mutex mutex_;
    std::map<int, Appearances> lines_;       // by line number
    std::map<int, Appearance> appearances_;  // by virtual line number
    std::map<int, Mapping> mappings_;        // by call id
    std::set<int> reserved_;                 // virtual line numbers
    std::set<int> elsewhere_;                // virtual line numbers
};

}  // namespace telephone
