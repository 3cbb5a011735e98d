// The panel: the telephone as a page for a browser. Its files (HTML, CSS, JavaScript modules) are in
// telephone/panel/page, and are compiled into the program as they are. The HTTP server serves them. Constant: any
// thread.
#pragma once

#include <string_view>

namespace telephone {

struct PanelFile
{
    std::string_view name;  // "panel.js"
    std::string_view type;  // for the header Content-Type
    std::string_view content;
};

// Null: there is no such file.
PanelFile const* findPanelFile(std::string_view name);

}  // namespace telephone
