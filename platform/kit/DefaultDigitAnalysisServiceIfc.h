/// @file
/// DigitAnalysisServiceIfc, answering "not there".
#pragma once

#include "platform/framework/Executable.h"
#include "platform/kit/Missing.h"
#include "platform/services/DigitAnalysisServiceIfc.h"

namespace kit {

/// A dial plan that permits no number on a locked phone and knows no emergency number.
///
/// It is an executable, because the service finds it by the name "DigitAnalysisServiceIfc"; give it to
/// ServiceHost::provide.
class DefaultDigitAnalysisServiceIfc : public Executable, public DigitAnalysisServiceIfc
{
public:
    /// Deleted by whoever made it.
    ~DefaultDigitAnalysisServiceIfc() override = default;

    void init(Context& /*context*/) override {}
    void shutdown() override {}

    bool isPermittedNumber(std::string const& /*number*/) override
    {
        kMissing.report("isPermittedNumber", "tell whether a locked phone may dial the number");
        return false;
    }
    bool isPermittedNumberInContext(std::string const& /*number*/, int /*context*/) override
    {
        kMissing.report("isPermittedNumberInContext", "tell whether a locked phone may dial the number");
        return false;
    }
    void queryNumberFlag(std::string const& /*number*/, std::string& /*answer*/) override
    {
        kMissing.report("queryNumberFlag", "answer \"true\" for an emergency number");
    }

private:
    static constexpr Missing kMissing{"DigitAnalysisServiceIfc", "platform/services/DigitAnalysisServiceIfc.h"};
};

}  // namespace kit
