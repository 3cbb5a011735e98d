// A part of the platform, compiled with the texts of the former ABI: no library of today finds it.
#define _GLIBCXX_USE_CXX11_ABI 0
#include <string>

#include "platform/sfi/SfiConfiguration.h"

void sfiGetCPUAddr(std::string& address)
{
    address.clear();
}

int main() {}
