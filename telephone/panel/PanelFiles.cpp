#include "telephone/panel/PanelFiles.h"

#include <algorithm>
#include <array>

namespace telephone {

namespace {

// kFiles, a PanelFile for each file of the page (cmake/Embed.cmake).
#include "PanelFiles.inc"

}  // namespace

PanelFile const* findPanelFile(std::string_view name)
{
    auto const* const found =
        std::find_if(kFiles.begin(), kFiles.end(), [name](PanelFile const& each) { return each.name == name; });
    return found == kFiles.end() ? nullptr : found;
}

}  // namespace telephone
