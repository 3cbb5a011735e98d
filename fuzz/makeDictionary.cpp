// Writes the dictionary of the request fuzzer: every name, tag and word of the request table.
#include <cstdio>
#include <set>
#include <string>

#include "CommunicationsServiceRequests.h"

int main()
{
    std::set<std::string> words = {
        "SigEvent:",  "<Method>",          "</Method>",      "TRUE",      "true",     "-1",    "0",
        "2147483648", "bluetoothDeviceID", "loggedOn",       "loggedOff", "notReady", "ready", "workingAfterCall",
        "Hold",       "SecondAlert",       "CallView-Normal"};
    for (auto const& request : kRequestDescriptions) {
        words.insert(std::string(request.name));
        for (auto const& parameter : request.parameters) {
            if (parameter.kind != RequestParameterKind::body) {
                words.insert("<" + std::string(parameter.tag) + ">");
                words.insert("</" + std::string(parameter.tag) + ">");
            }
        }
    }
    for (auto const& state : kRequestServiceStates) {
        words.insert(std::string(state));
    }
    for (auto const& word : words) {
        std::printf("\"%s\"\n", word.c_str());
    }
}
