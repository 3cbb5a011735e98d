#include "telephone/lines/TelephoneLineData.h"

#include <utility>

namespace telephone {

TelephoneLineData::TelephoneLineData(LineConfiguration const& line, std::string uri)
    : line_(line)
    , uri_(std::move(uri))
{}

bool TelephoneLineData::takeManualMark()
{
    return manual_.exchange(false);
}

}  // namespace telephone
