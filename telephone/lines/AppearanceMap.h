// Which call is on which appearance of a multi-call-appearance line.
//
// Each appearance has a virtual line number of its own beside the numbers of the lines. A call is mapped when a request
// names it, before it exists, or when it comes in; it leaves the map when it ends. A mapping whose call never came to
// be (the request was refused) is forgotten after a while.
//
// Owned by Lines; any thread.
#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <vector>

#include "platform/sfi/SfiMCAMapper.h"

namespace telephone {

class AppearanceMap final : public SfiMCAMapper
{
public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    // How long a mapping waits for its call.
    static constexpr std::chrono::seconds kPatience{10};

    explicit AppearanceMap(Clock clock = &std::chrono::steady_clock::now);

    // Makes a line a multi-call-appearance line with these virtual line numbers, appearance 1 first. Before any use.
    void addLine(int lineNumber, std::vector<int> virtualLines);

    // A number that is no virtual line leaves everything as it is and is logged; that of the line itself means its
    // first free appearance.
    void assignCallToLine(int lineID, int callID, int& appearanceIndex) override;
    // A reserved appearance comes before the free ones. 0: all are taken.
    int findFirstFreeVirtualLine(int lineID) const override;
    bool findVirtualLineforCallID(int callID, int& lineID, int& appearanceIndex) const override;

    // Maps a call that comes in to the first appearance that is free and not reserved; 0: there is none.
    int seizeForIncoming(int lineNumber, int callID);
    // The call exists now, on that virtual line.
    void callBegan(int callID, int virtualLine);
    void callEnded(int callID);

    // Keeps an appearance for the next call of its line; false when it is taken, or is none.
    bool reserve(int virtualLine);
    void unreserve(int virtualLine);
    bool isReserved(int virtualLine) const;

    std::size_t mappedCalls() const;

private:
    struct Appearance
    {
        int lineNumber = 0;
        int index = 0;
    };
    struct Mapping
    {
        int virtualLine = 0;
        bool callExists = false;
        std::chrono::steady_clock::time_point madeAt;
    };

    bool isCurrent(Mapping const& mapping) const;
    bool carriesCall(int virtualLine) const;
    int firstFree(int lineID) const;
    void forgetStale();

    Clock clock_;
    mutable std::mutex mutex_;
    std::map<int, std::vector<int>> virtualLines_;  // by line number
    std::map<int, Appearance> appearances_;         // by virtual line number
    std::map<int, Mapping> mappings_;               // by call id
    std::set<int> reserved_;                        // virtual line numbers
};

}  // namespace telephone
