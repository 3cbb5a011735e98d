// The description of the protocol: requests, events, enumerations and the telephone's own commands. Made from the
// tables in include/, its only source. Constant once made: any thread may read it.
//
//     ProtocolDescription const description("1.0.0", commands);
//     std::cout << description.overview();
//     if (auto const text = description.describe("HoldCall")) { std::cout << *text; }
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "telephone/base/Refusal.h"

namespace telephone {

// Of the messages and their description; higher when an application may have to change.
constexpr int kProtocolVersion = 1;

// A command of the telephone itself ("press KEY"), which is not a request of the protocol.
struct CommandDescription
{
    std::string name;
    std::string arguments;
    std::string help;
};

class ProtocolDescription
{
public:
    // The version is the telephone's, "1.0.0".
    explicit ProtocolDescription(std::string version, std::vector<CommandDescription> commands = {});

    // Everything that can be described, one line each.
    [[nodiscard]] std::string overview() const;

    // The commands with their meanings, in two columns of at most 100 characters together.
    [[nodiscard]] std::string commandList() const;

    // Everything known under a name: a request, an event (also without "Event", or its operation), a command, an
    // enumeration, a parameter or element ("CallState"), a value of one ("CallState 6", "Reason busy") or a word
    // ("remote ringing"). Capitals do not matter. If a name has several meanings, all are described. An unknown name is
    // refused, with the nearest one.
    [[nodiscard]] Outcome<std::string> describe(std::string_view name) const;

    // All of it as one JSON document; docs/protocol.schema.json is its schema.
    [[nodiscard]] std::string json() const;

    // Every name that describe() takes, for completion.
    [[nodiscard]] std::vector<std::string_view> names() const;

private:
    std::string version_;
    std::vector<CommandDescription> commands_;
};

}  // namespace telephone
