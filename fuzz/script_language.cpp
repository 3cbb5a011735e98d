// Plays any text as a script, on a telephone that only records its requests. Steps that would wait are played with a
// time of zero.
#include <sstream>

#include "FuzzInput.h"
#include "telephone/access/Completion.h"
#include "telephone/access/Words.h"
#include "telephone/console/ScriptPlayer.h"
#include "tests/unit/console/ConsoleDoubles.h"

namespace {
// A request in a script waits until the telephone is at rest, so only few scripts contain requests.
constexpr std::size_t kScriptsWithRequests = 16;

bool waits(telephone::Words const& words)
{
    return words[0] == "wait" || words[0] == "never" || words[0] == "pause" || words[0] == "expect";
}

// The line to play: a step that waits gets a time of zero.
std::string withoutWaiting(std::string const& line)
{
    auto const words = telephone::splitWords(line);
    if (!words || words->empty() || !waits(*words)) {
        return line;
    }
    std::string played;
    for (auto const& word : *words) {
        bool const isTime = !played.empty() && word.find_first_of("0123456789") == 0;
        played += (played.empty() ? "" : " ") + (isTime ? std::string("0") : "\"" + word + "\"");
    }
    bool const hasTime = words->front() == "pause" || played.find("\"within\"") != std::string::npos;
    return hasTime ? played : played + " within 0";
}

// Runs the line as if typed: it succeeds, or is refused with a reason.
void typeLine(TalkingTelephone& phone, std::string const& line)
{
    (void)telephone::completions(line, {phone.controls.present, {}, phone.description});
    auto const result = phone.conversation->run(line);
    require(result || !result.error().reason.empty(), "a refusal has no reason");
}
}  // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    static TalkingTelephone phone;
    phone.written.clear();
    phone.failures.clear();
    phone.controls.asked.clear();
    phone.invoker.requests.clear();
    std::istringstream text(std::string(reinterpret_cast<char const*>(data), size));
    std::string line;
    std::ostringstream script;
    bool const withRequests = size % kScriptsWithRequests == 0;
    while (std::getline(text, line)) {
        typeLine(phone, line);
        auto const played = withoutWaiting(line);
        script << (withRequests || played != line ? played : "") << "\n";
    }
    phone.held(1);

    std::istringstream played(script.str());
    telephone::ScriptPlayer player(*phone.conversation);
    bool const held = player.play(played, "fuzz").passed();
    require(held || phone.failures.find("fuzz:") != std::string::npos, "a script failed and nothing says where");
    for (auto const& request : phone.invoker.requests) {
        require(!request.empty(), "an empty request was sent");
    }
    return 0;
}
