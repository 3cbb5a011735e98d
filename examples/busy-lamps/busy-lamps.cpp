// Shows the lamps of the keys that watch other parties (function "blf"), and how they change, until it is stopped.
//
//     busy-lamps [SOCKET or http://HOST:PORT]
//
// On a terminal the lamps are drawn in place, else each change is a line.
#include <csignal>
#include <iostream>
#include <map>
#include <string>

#include <sys/signalfd.h>
#include <unistd.h>

#include "TelephoneClient.h"

using namespace telephone_client;

namespace {

// Some lamps change without an event: they are looked at so often.
constexpr auto kPause = std::chrono::milliseconds(500);

// What a watched party does, as its lamp says.
std::string meaningOf(state::Lamp const& lamp)
{
    return lamp.mode == LampMode::kOff ? "free" : lamp.mode == LampMode::kSteady ? "busy" : "ringing";
}

using Lamps = std::map<std::string, std::string>;  // what is shown for a party
Lamps lampsOf(state::State const& state)
{
    Lamps lamps;
    for (state::Key const& key : state.keys) {
        if (key.function == "blf" && key.target) {
            lamps[key.label.value_or(*key.target)] = meaningOf(key.lamp);
        }
    }
    return lamps;
}

void show(Lamps const& lamps, Lamps const& before)
{
    bool const isTerminal = isatty(STDOUT_FILENO) != 0;
    if (isTerminal) {
        std::cout << "\033[H\033[2J";
    }
    for (auto const& [party, meaning] : lamps) {
        auto const old = before.find(party);
        if (isTerminal || old == before.end() || old->second != meaning) {
            std::cout << party << ": " << meaning << '\n';
        }
    }
    std::cout.flush();
}

// Readable when the program shall end.
int stopDescriptor()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    return signalfd(-1, &signals, SFD_CLOEXEC);
}

}  // namespace

int main(int count, char** arguments)
{
    Options options;
    options.address = count > 1 ? arguments[1] : "";
    options.name = "busy-lamps";
    options.stop = stopDescriptor();
    auto phone = Telephone::connect(options, std::chrono::seconds(1));
    if (!phone) {
        std::cerr << "busy-lamps: " << phone.error().reason << '\n';
        return 1;
    }
    phone->onConnection([](bool isConnected, std::string const& reason) {
        std::cerr << "busy-lamps: " << (isConnected ? "connected" : reason) << '\n';
    });
    Lamps shown;
    for (auto event = phone->nextEvent(kPause); event || event.error().kind == Error::Kind::kTimeout;
         event = phone->nextEvent(kPause)) {
        Lamps lamps = lampsOf(event ? phone->state() : phone->refresh().valueOr(phone->state()));
        if (lamps != shown) {
            show(lamps, shown);
            shown.swap(lamps);
        }
    }
}
