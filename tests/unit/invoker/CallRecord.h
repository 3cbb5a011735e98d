// Records each call of an ObservedService as a list of its name and arguments, and fills its outputs with the values of
// the test. The golden texts are compared with it.
#pragma once

#include <cstddef>
#include <string>
#include <type_traits>
#include <vector>

#include <nlohmann/json.hpp>

#include "platform/framework/Executable.h"

struct CallRecord
{
    nlohmann::json calls = nlohmann::json::array();
    nlohmann::json outputs = nlohmann::json::array();
    Executable* eventProxy = nullptr;

    template <typename... Arguments>
    void called(char const* name, Arguments const&... arguments)
    {
        calls.push_back(nlohmann::json::array({name, plain(arguments)...}));
    }

    template <typename... Outputs>
    void fill(Outputs&... values)
    {
        std::size_t next = 0;
        ((values = outputs.at(next++).template get<Outputs>()), ...);
    }
    void fill(std::vector<std::string>& texts) { texts = outputs.get<std::vector<std::string>>(); }

private:
    template <typename Argument>
    nlohmann::json plain(Argument const& argument) const
    {
        if constexpr (std::is_enum_v<Argument>) {
            return static_cast<int>(argument);
        } else if constexpr (std::is_same_v<Argument, Executable*>) {
            return argument == eventProxy ? "event proxy of the requester" : "something else";
        } else {
            return argument;
        }
    }
};
