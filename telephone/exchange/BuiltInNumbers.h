// The numbers that every exchange has, as a configuration would write them.
#pragma once

#include <array>
#include <string_view>

namespace telephone::exchange {

struct BuiltInNumber
{
    std::string_view number;
    std::string_view description;
    std::string_view does;
};

// clang-format off
inline constexpr std::array kBuiltInNumbers{
    BuiltInNumber{"100", "answers and echoes what it hears",                            "ring, answer"},
    BuiltInNumber{"101", "is busy",                                                     "busy"},
    BuiltInNumber{"102", "rings and never answers",                                     "ring"},
    BuiltInNumber{"103", "answers after two seconds",                                   "ring 2s, answer"},
    BuiltInNumber{"104", "declines",                                                    "refuse 603"},
    BuiltInNumber{"105", "answers and hangs up after two seconds",                      "ring, answer 2s, hang-up"},
    BuiltInNumber{"106", "answers, holds after one second and retrieves after another", "ring, answer 1s, hold 1s, retrieve"},
    BuiltInNumber{"199", "answers, hangs up after one second and calls back",           "ring, answer 1s, hang-up, call caller"},
};
// clang-format on

}  // namespace telephone::exchange
