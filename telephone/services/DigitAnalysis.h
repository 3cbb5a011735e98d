// The dial plan: the numbers that may be dialled while the telephone is locked, and the emergency numbers. Registered
// with the framework as "DigitAnalysisServiceIfc"; the composition root owns it. Constant; any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/framework/Executable.h"
#include "platform/services/DigitAnalysisServiceIfc.h"
#include "telephone/configuration/Configuration.h"

namespace telephone {

class DigitAnalysis : public Executable, public DigitAnalysisServiceIfc
{
public:
    explicit DigitAnalysis(CallConfiguration const& calls);

    // Executable
    void init(Context& /*context*/) override {}
    void shutdown() override {}

    // DigitAnalysisServiceIfc. A number may be a sip: or tel: address; visual separators (RFC 3966 section 5.1.1) are
    // ignored. Emergency numbers are permitted in every context, the other permitted numbers in context 0.
    bool isPermittedNumber(std::string const& number) override;
    bool isPermittedNumberInContext(std::string const& number, int context) override;
    void queryNumberFlag(std::string const& number, std::string& answer) override;

private:
    std::vector<std::string> const permitted_;
    std::vector<std::string> const emergency_;
};

}  // namespace telephone
