// Call operations on an appearance of a multi-call-appearance line: line 17, primary 4, appearance 2 once it is taken.
#pragma once

#include "ServiceTest.h"

class CallsTest : public ServiceTest
{
protected:
    void SetUp() override;

    // The record is built, and the call takes its appearance, at this point of the sequence.
    void expectRecordBuilt(int callID);
    void expectLocked();
    void expectUnlocked();
    // The dial plan answers for a number at this point of the sequence.
    void expectNumberAsked(std::string const& number, std::string const& answer);
    // What is logged: the entry, and the record.
    static std::vector<std::string> logOf(std::string const& entry, int callID);
    void withoutDialPlan();
};
