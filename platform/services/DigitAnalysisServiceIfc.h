/// @file
/// The dial plan.
#pragma once

#include <string>

/// Knows the dial plan. The telephone owns it and registers it with the framework as "DigitAnalysisServiceIfc"; without
/// it a locked phone dials nothing, and no number is an emergency number. Thread: any.
///
/// A number may be written with separators or as a SIP address.
class DigitAnalysisServiceIfc
{
public:
    /// Asks whether a number may be dialled while the phone is locked: an emergency number, for example. The service
    /// asks both questions, and dials when either answer is true.
    /// @return true when it may.
    virtual bool isPermittedNumber(std::string const& number) = 0;
    /// The same in a dial context.
    /// @param number the number
    /// @param context 0: the phone's own, the only one that the service asks for
    /// @return true when it may.
    virtual bool isPermittedNumberInContext(std::string const& number, int context) = 0;
    /// Asks whether a number is an emergency number.
    /// @param number the number
    /// @param answer "false" beforehand; receives "true" for an emergency number, else "false" or nothing
    virtual void queryNumberFlag(std::string const& number, std::string& answer) = 0;

protected:
    /// Never deleted through this interface.
    ~DigitAnalysisServiceIfc() = default;
};
