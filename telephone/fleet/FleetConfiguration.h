// How the telephones of a fleet are configured: one file for all of them, in which {number} stands for the number of
// the telephone in three digits, 007. Without lines in it each telephone has one, 1007. Constant once read: any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "telephone/base/Refusal.h"
#include "telephone/configuration/Configuration.h"

namespace telephone {

// "007"
[[nodiscard]] std::string fleetNumber(int number);
// A text with this in place of each {number}.
[[nodiscard]] std::string withFleetNumber(std::string_view text, int number);

class FleetConfiguration
{
public:
    // An empty path: no file. Refused as ConfigurationFile refuses the file of telephone 1, and for what each of the
    // telephones needs for itself: the reason names the setting.
    [[nodiscard]] static Outcome<FleetConfiguration> read(std::string const& path, int count);

    // As telephone 1 has it: what it says of the exchange and of HTTP is meant for the fleet.
    [[nodiscard]] Configuration const& common() const { return first_; }

    // The file of a telephone that registers at this server; with these passwords where the lines have none.
    [[nodiscard]] std::string textFor(int number, ServerConfiguration const& server, std::string const& password) const;

private:
    FleetConfiguration(std::string path, std::string text)
        : path_(std::move(path))
        , text_(std::move(text))
    {}
    [[nodiscard]] Outcome<Configuration> configurationOf(int number) const;

    std::string path_;
    std::string text_;
    Configuration first_;
};

}  // namespace telephone
