// Knows the dial plan. Registered with the framework as "DigitAnalysisServiceIfc".
#pragma once

#include <string>

class DigitAnalysisServiceIfc
{
public:
    // Whether a number may be dialled while the phone is locked (emergency numbers, for example).
    virtual bool isPermittedNumber(std::string const& number) = 0;
    // The same in a dial context; 0 is the phone's own.
    virtual bool isPermittedNumberInContext(std::string const& number, int context) = 0;
    // Sets `answer` to "true" for an emergency number; else leaves it or sets it to "false".
    virtual void queryNumberFlag(std::string const& number, std::string& answer) = 0;

protected:
    ~DigitAnalysisServiceIfc() = default;
};
