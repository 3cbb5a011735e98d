// The lines of a telephone without a SIP stack: two plain lines, one with three appearances, and the keys of a test.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "FakeCalls.h"
#include "telephone/configuration/Configuration.h"
#include "telephone/framework/TimerService.h"
#include "telephone/lines/Lines.h"
#include "telephone/management/ConfigurationStore.h"
#include "telephone/management/Settings.h"

namespace telephone {

inline LineConfiguration plainLine(std::string const& id)
{
    LineConfiguration line;
    line.id = id;
    line.registers = false;
    return line;
}

class LinesFixture : public testing::Test
{
protected:
    // 4711 (primary) and 4712 are plain; 4713 has three appearances.
    LinesFixture()
    {
        configuration_.lines = {plainLine("4711"), plainLine("4712"), plainLine("4713")};
        configuration_.lines[0].primary = true;
        configuration_.lines[2].appearances = 3;
    }

    // Makes the lines of the present configuration.
    Lines& build(std::chrono::milliseconds warmLineDelay = LineActions::kWarmLineDelay)
    {
        settings_ = std::make_unique<Settings>(ConfigurationStore::open({}).value(), configuration_);
        table_ = std::make_unique<LineTable>(configuration_);
        table_->setServer({"sip:127.0.0.1:5070", "127.0.0.1:5070", "secret"});
        lines_ = std::make_unique<Lines>(*table_, configuration_, *settings_, calls_, timers_, warmLineDelay);
        return *lines_;
    }

    // recordLine: a line number or virtual line number.
    CallSnapshot callOn(int recordLine, int callID, sfiCallState state)
    {
        CallSnapshot call;
        call.callID = callID;
        call.line = lines_->byNumber(recordLine)->place();
        call.state = state;
        call.remoteURI = "sip:100@127.0.0.1";
        return call;
    }
    void change(int recordLine, int callID, sfiCallState state)
    {
        calls_.change(*lines_, callOn(recordLine, callID, state));
    }
    void offer(int recordLine, int callID)
    {
        auto call = callOn(recordLine, callID, sfiCallStateRinging);
        call.incoming = true;
        calls_.change(*lines_, call);
    }
    ELineState stateOf(std::string const& lineURI) { return lines_->getLine(lineURI)->getLineState(); }

    Configuration configuration_;
    FakeCalls calls_;
    TimerService timers_;
    std::unique_ptr<Settings> settings_;
    std::unique_ptr<LineTable> table_;
    std::unique_ptr<Lines> lines_;
};

}  // namespace telephone
