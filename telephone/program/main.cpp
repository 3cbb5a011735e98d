#include <iostream>

#include <sys/stat.h>

#include "telephone/framework/Log.h"
#include "telephone/framework/StopSignal.h"
#include "telephone/framework/TelephoneProcess.h"
#include "telephone/program/CommandLine.h"
#include "telephone/program/Programs.h"

namespace {

telephone::Outcome<int> run(telephone::CommandLine const& line, telephone::StopSignal const& stop)
{
    using telephone::Action;
    switch (line.action) {
    case Action::kConsole:
    case Action::kTour:
    case Action::kPlay:
    case Action::kServe:
    case Action::kPanel:
        return telephone::runTelephone(line, stop);
    case Action::kChaos:
        return telephone::runChaos(line, stop);
    case Action::kReplay:
        return telephone::runReplay(line, stop);
    case Action::kTrace:
        return telephone::runTrace(line, stop);
    case Action::kWhy:
        return telephone::runWhy(line);
    case Action::kLadder:
        return telephone::runLadder(line);
    case Action::kTest:
        return telephone::runTest(line, stop);
    case Action::kExchange:
        return telephone::runExchange(line, stop);
    case Action::kFleet:
        return telephone::runFleet(line, stop);
    case Action::kDo:
        return telephone::runDo(line, stop);
    case Action::kRequest:
        return telephone::runRequest(line, stop);
    case Action::kWatch:
        return telephone::runWatch(line, stop);
    case Action::kStore:
        return telephone::runStore(line);
    case Action::kDevices:
        return telephone::runDevices(line);
    case Action::kDescribe:
        return telephone::runDescribe(line);
    }
    return 1;
}

}  // namespace

int main(int count, char** arguments)
{
    // Logs, stores, recordings and sockets are their owner's alone; for files that exist: base/OwnerOnly.h.
    ::umask(S_IRWXG | S_IRWXO);
    telephone::TelephoneProcess::endWithStarter();
    try {
        int exitStatus = 0;
        auto const line = telephone::CommandLine::read(count, arguments, exitStatus);
        if (!line) {
            return exitStatus;
        }
        telephone::StopSignal const stop;
        auto const status = run(*line, stop);
        telephone::flushLog();
        if (!status) {
            std::cerr << "telephone: " << status.error().reason << std::endl;
        }
        return status.value_or(1);
    } catch (std::exception const& error) {
        std::cerr << "telephone: " << error.what() << std::endl;
        return 1;
    }
}
