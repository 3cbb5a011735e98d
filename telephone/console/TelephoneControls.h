// What a person can do to the telephone itself and see of it, beside the requests of applications: its keys, lamps,
// plugs and settings. The composition root implements it; the console and the script player call it on their thread.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace telephone {

class TelephoneControls
{
public:
    // Nothing: done. Otherwise why not, for a person.
    using Refusal = std::optional<std::string>;
    using Rows = std::vector<std::string>;

    virtual ~TelephoneControls() = default;

    // One text a row, without line end.
    virtual Rows lines() = 0;
    virtual Rows calls() = 0;
    virtual Rows keys() = 0;
    virtual Rows lamps() = 0;

    // A key is named by its number in the layout, its label or its function.
    virtual Refusal press(std::string const& key) = 0;
    virtual Refusal release(std::string const& key) = 0;
    virtual Refusal hook(bool up) = 0;
    virtual Refusal plug(std::string const& plug, bool in) = 0;
    virtual Refusal lock(bool locked) = 0;
    // The recording of a line's calls, by the service.
    virtual Refusal record(std::string const& line, bool on) = 0;
    // "off", "steady", "flashing" or "fluttering"; nothing: there is no such lamp.
    virtual std::optional<std::string> lampMode(std::string const& lamp) = 0;

    // The configuration store: "key = value" rows, one value, and what a write was refused for.
    virtual Rows settings() = 0;
    virtual std::optional<std::string> setting(std::string const& key) = 0;
    virtual Refusal set(std::string const& key, std::string const& value) = 0;
};

}  // namespace telephone
