// The command devices.
#include <algorithm>
#include <iostream>

#include <spdlog/fmt/fmt.h>

#include "telephone/media/SoundCard.h"
#include "telephone/program/Programs.h"

namespace telephone {

namespace {

std::string useOf(bool has, bool isDefault)
{
    return !has ? "" : isDefault ? "default" : "yes";
}

}  // namespace

Outcome<int> runDevices(CommandLine const&)
{
    auto const devices = soundDevices();
    if (devices.empty()) {
        return refuse(RefusalKind::kUnavailable, "this machine has no microphone and no loudspeaker");
    }
    std::size_t width = 0;
    for (auto const& device : devices) {
        width = std::max(width, device.name.size());
    }
    std::cout << fmt::format("{:<{}}  microphone  loudspeaker\n", "name", width);
    for (auto const& device : devices) {
        std::cout << fmt::format("{:<{}}  {:<10}  {}\n", device.name, width,
                                 useOf(device.hasMicrophone, device.isDefaultMicrophone),
                                 useOf(device.hasLoudspeaker, device.isDefaultLoudspeaker));
    }
    return 0;
}

}  // namespace telephone
