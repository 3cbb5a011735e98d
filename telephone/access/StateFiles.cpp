#include "telephone/access/StateFiles.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

#include "telephone/base/OwnerOnly.h"
#include "telephone/display/StateDifference.h"

namespace telephone {

namespace {

Outcome<std::string> readStateFile(std::string const& name, TelephoneState const& present)
{
    if (name == kPresentState) {
        return stateJson(present);
    }
    std::ifstream file(name);
    std::ostringstream text;
    text << file.rdbuf();
    return file ? Outcome<std::string>(text.str())
                : refuse(RefusalKind::kNotFound, "cannot read " + name + ": " + std::strerror(errno));
}

}  // namespace

Outcome<> saveState(TelephoneState const& state, std::string const& file)
{
    if (auto closed = makeOwnerOnly(file); !closed) {
        return closed;
    }
    std::ofstream written(file);
    written << stateJson(state) << '\n' << std::flush;
    return written ? Outcome<>()
                   : refuse(RefusalKind::kUnavailable, "cannot write " + file + ": " + std::strerror(errno));
}

Outcome<std::vector<std::string>> compareStates(std::string const& first, std::string const& second,
                                                TelephoneState const& present)
{
    return readStateFile(first, present).and_then([&](std::string const& before) {
        return readStateFile(second, present).and_then([&](std::string const& after) {
            return stateDifferences(before, after);
        });
    });
}

}  // namespace telephone
