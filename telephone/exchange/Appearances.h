// The appearances of shared lines, and who has each: the one place that decides which of two telephones has seized one.
// Owned by the exchange; used under the lock.
//
// A call of the exchange has its appearance from seize to the end of the call. A telephone has one for a call that it
// begins here, until it reports that call itself; from then on its report counts.
#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "telephone/base/Refusal.h"
#include "telephone/sip/DialogInfo.h"

namespace telephone::exchange {

class Appearances
{
public:
    // count: the number of appearances of a number; 0: it is not shared, and never without a free one. reported: the
    // calls that the telephone of a number reports.
    Appearances(std::function<int(std::string const& number)> count,
                std::function<std::vector<sip::DialogEntry>(std::string const& number)> reported);

    // Takes the wanted appearance, or the first free one for 0. Returns it, from 1; 0 for a number that is not shared.
    // kLimit: it is not free, or none is. owner: of the appearance; the Call-ID of a telephone's call, else any text.
    [[nodiscard]] Outcome<int> take(std::string const& number, std::string const& owner, int wanted = 0);
    void release(std::string const& number, std::string const& owner);
    // The telephone of the number has reported its calls.
    void noteReport(std::string const& number);

private:
    std::set<int> reportedOnes(std::string const& number) const;

    std::function<int(std::string const& number)> count_;
    std::function<std::vector<sip::DialogEntry>(std::string const& number)> reported_;
    std::map<std::string, std::map<std::string, int>> taken_;  // by number, then owner
};

}  // namespace telephone::exchange
