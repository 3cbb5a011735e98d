// How much memory this process has in use.
#pragma once

#include <fstream>
#include <string>

// VmRSS of the process, in kB; 0 if it cannot be read.
inline long residentKilobytes()
{
    std::ifstream status("/proc/self/status");
    std::string word;
    long kilobytes = 0;
    while (status >> word) {
        if (word == "VmRSS:") {
            status >> kilobytes;
        }
    }
    return kilobytes;
}
