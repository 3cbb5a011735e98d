// Call operations on an appearance of a multi-call-appearance line: line 17, primary 4, appearance 2 once it is taken.
#pragma once

#include "ServiceTest.h"

class CallsTest : public ServiceTest
{
protected:
    void SetUp() override;

    // Expects at this point of the sequence that the record is built and the call takes its appearance.
    void expectRecordBuilt(int callID);
    void expectLocked();
    void expectUnlocked();
    // Expects at this point of the sequence that the dial plan is asked about a number.
    void expectNumberAsked(std::string const& number, std::string const& answer);
    // The expected log lines: the entry, and the record.
    static std::vector<std::string> logOf(std::string const& entry, int callID);
    void withoutDialPlan();
};
