#include "telephone/console/Terminal.h"

#include <cstdlib>
#include <string_view>

#include <langinfo.h>
#include <locale.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace telephone {

namespace {

std::string_view environment(char const* name)
{
    char const* const value = std::getenv(name);
    return value == nullptr ? std::string_view() : std::string_view(value);
}

bool wantsColour(ColourUse use)
{
    switch (use) {
    case ColourUse::kAlways:
        return true;
    case ColourUse::kNever:
        return false;
    case ColourUse::kAuto:
        break;
    }
    return isatty(STDOUT_FILENO) == 1 && environment("NO_COLOR").empty() && environment("TERM") != "dumb";
}

// A locale that is not installed counts as "C".
bool writesUtf8()
{
    locale_t const locale = newlocale(LC_CTYPE_MASK, "", nullptr);
    if (locale == nullptr) {
        return false;
    }
    bool const isUtf8 = std::string_view(nl_langinfo_l(CODESET, locale)) == "UTF-8";
    freelocale(locale);
    return isUtf8;
}

}  // namespace

std::size_t terminalWidth()
{
    winsize size{};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

void fitToTerminal(DisplayOptions& options, ColourUse colour)
{
    options.colour = wantsColour(colour);
    options.ascii = !writesUtf8();
    options.width = terminalWidth();
}

}  // namespace telephone
