// The command exchange.
#include <iostream>

#include "telephone/CallServer.h"
#include "telephone/exchange/Exchange.h"
#include "telephone/framework/StopSignal.h"
#include "telephone/program/Programs.h"
#include "telephone/program/StartConfiguration.h"
#include "telephone/sip/EventLoop.h"

namespace telephone {

Outcome<int> runExchange(CommandLine const& line, StopSignal const& stop)
{
    auto configuration = startConfiguration(line);
    if (!configuration) {
        return tl::unexpected(configuration.error());
    }
    if (line.port != 0) {
        configuration->exchange.port = line.port;
    }
    sip::EventLoop loop;
    loop.start();
    exchange::Exchange const exchange(loop, valueOrThrow(exchangeConfigOf(*configuration)));
    std::cout << "the exchange is sip:" << exchange.hostPort() << std::endl;
    for (std::string const& row : exchange.numbers()) {
        std::cout << "  " << row << std::endl;
    }
    stop.wait();
    return 0;
}

}  // namespace telephone
