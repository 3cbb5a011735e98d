#include "telephone/configuration/Configuration.h"

namespace telephone {

namespace {

LineConfiguration lineOf(char const* id, int number, bool primary)
{
    LineConfiguration line;
    line.id = id;
    line.number = number;
    line.displayName = std::string("Line ") + id;
    line.description = id;
    line.primary = primary;
    line.overviewPosition = number;
    return line;
}

}  // namespace

Configuration Configuration::standard()
{
    Configuration configuration;
    configuration.lines = {lineOf("4711", 1, true), lineOf("4712", 2, false)};
    // 102 rings without answering: its busy-lamp field flashes, and its calls can be picked up.
    configuration.keys = {
        {1, "line", "4711", "4711", false},      {2, "line", "4712", "4712", false},
        {3, "dss", "4712", "Desk 4712", false},  {4, "blf", "102", "Watch 102", false},
        {5, "forwarding", "", "Forward", false}, {6, "dnd", "", "Do not disturb", false},
        {7, "hold", "", "Hold", false},          {8, "mute", "", "Mute", false},
        {9, "headset", "", "Headset", false},    {10, "messages", "", "Messages", false},
        {11, "toggle", "1", "Feature 1", false}, {12, "release", "", "Release", false},
        {13, "preview", "", "Preview", false},   {14, "ignore", "", "Ignore", false},
        {15, "transfer", "", "Transfer", false},
    };
    return configuration;
}

}  // namespace telephone
