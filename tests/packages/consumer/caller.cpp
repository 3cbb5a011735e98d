// Asks the telephone at a socket, which its argument names, whether it is in service, with the installed client.
#include <iostream>

#include "TelephoneClient.h"

int main(int count, char** arguments)
{
    if (count != 2) {
        return 2;
    }
    telephone_client::Options options;
    options.address = arguments[1];
    auto phone = telephone_client::Telephone::connect(options);
    if (!phone) {
        std::cerr << phone.error().reason << "\n";
        return 1;
    }
    auto const state = phone->ask(telephone_client::requests::getServiceState());
    bool const serves = state && *state == telephone_client::ServiceState::kInService;
    std::cout << (serves ? "in service\n" : "out of service\n");
    return serves ? 0 : 1;
}
