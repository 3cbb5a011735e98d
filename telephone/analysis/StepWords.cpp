#include "telephone/analysis/StepWords.h"

#include <algorithm>
#include <optional>

#include <spdlog/fmt/fmt.h>

#include "CommunicationsServiceEnumerations.h"
#include "telephone/base/Names.h"
#include "telephone/display/LampWords.h"
#include "telephone/display/Parties.h"
#include "telephone/display/SafeText.h"
#include "telephone/protocol/Vocabulary.h"

namespace telephone {

namespace {

constexpr std::string_view kEnumeratorPrefixes[] = {"sfi", "CSTA"};

// The enumerator without "sfi" and the name of its enumeration; nothing if it is not of this enumeration.
std::optional<std::string_view> enumeratorOf(Enumeration const& enumeration, std::string_view text)
{
    for (std::string_view const prefix : kEnumeratorPrefixes) {
        std::string const begin = std::string(prefix) + std::string(enumeration.name);
        if (text.starts_with(begin)) {
            return text.substr(begin.size());
        }
    }
    return std::nullopt;
}

// Arguments that say which call or line it is, and those whose numbers are dialled: other numbers are modes.
constexpr std::string_view kPlaceArguments[] = {"call", "callID", "lineURI"};
constexpr std::string_view kDialledArguments[] = {"destination", "digits", "target"};
// No value.
constexpr std::string_view kSilentValues[] = {"", "0", "-1", "null", "false"};

template <typename Names>
bool isOneOf(Names const& names, std::string_view name)
{
    return std::find(std::begin(names), std::end(names), name) != std::end(names);
}

// As it stands; empty: it has none of that name.
std::string argumentOf(TracedStep const& step, std::string_view name)
{
    auto const found = std::find_if(step.arguments.begin(), step.arguments.end(),
                                    [name](auto const& argument) { return argument.first == name; });
    return found != step.arguments.end() ? found->second : std::string();
}

// What CSfi::CallFeature does when its feature names nothing: the destination decides.
std::string_view unnamedFeature(TracedStep const& step)
{
    return argumentOf(step, "destination").empty() ? "hold" : "conference";
}

struct ActionWords
{
    std::string_view action;
    std::string_view words;
};

constexpr ActionWords kHookActions[] = {{"up", "handset lifted"}, {"down", "handset replaced"}};
constexpr ActionWords kPlugActions[] = {{"in", "plugged in"}, {"out", "unplugged"}};

template <typename Rows>
std::string wordsOf(Rows const& rows, std::string_view action)
{
    auto const* const found = std::find_if(std::begin(rows), std::end(rows),
                                           [action](ActionWords const& each) { return each.action == action; });
    return found != std::end(rows) ? std::string(found->words) : safeText(action);
}

struct LampOfItsOwn
{
    std::string_view number;
    std::string_view name;
};

constexpr LampOfItsOwn kLampsOfTheirOwn[] = {{"10", "Hold"}, {"69", "SecondAlert"}};

std::string withLabel(std::string text, std::string const& label)
{
    return label.empty() ? text : text + " " + quotedText(label);
}

}  // namespace

std::vector<ArgumentWords> argumentWords(TracedStep const& step, DisplayOptions const& options)
{
    std::vector<ArgumentWords> words;
    for (auto const& [name, value] : step.arguments) {
        if (step.text("name") == "CSfi::CallFeature" && name == "feature" && wholeNumber(value)) {
            words.push_back({name, std::string(unnamedFeature(step)), true});
            continue;
        }
        if (isOneOf(kPlaceArguments, name) || isOneOf(kSilentValues, value)) {
            continue;
        }
        bool const isAddress = beginsIgnoringCase(value, "sip:");
        bool const isFlag = value == "true" || (wholeNumber(value) && !isOneOf(kDialledArguments, name));
        words.push_back({safeWord(name), isAddress ? addressText(value, options) : enumeratorInWords(value), !isFlag});
    }
    return words;
}

std::string callOfPlatform(TracedStep const& step)
{
    std::string const call = argumentOf(step, "call");
    return call.empty() ? argumentOf(step, "callID") : call;
}

std::string lineOfPlatform(TracedStep const& step)
{
    return argumentOf(step, "lineURI");
}

std::string enumeratorInWords(std::string_view enumerator)
{
    if (!enumerator.starts_with("sfi") && !enumerator.starts_with("CSTA")) {
        return safeText(enumerator);
    }
    std::string_view words;
    std::size_t shortest = enumerator.size();
    for (Enumeration const* const each : kEnumerations) {
        // sfiFeatureFailureNone begins as an enumerator of Feature does.
        auto const rest = enumeratorOf(*each, enumerator);
        EnumerationValue const* const value = rest ? lookUpValue(*each, *rest) : each->findWord(enumerator);
        if (value != nullptr && rest.value_or("").size() < shortest) {
            words = value->name;
            shortest = rest.value_or("").size();
        }
    }
    return words.empty() ? safeText(enumerator) : std::string(words);
}

bool isSipAnswer(TracedStep const& step)
{
    return step.kind == StepKind::kSip && step.has("status");
}

bool isSent(TracedStep const& step)
{
    return step.text("direction") == "sent";
}

std::string sipLabel(TracedStep const& step)
{
    std::string label = isSipAnswer(step) ? step.text("status") + " " + step.text("phrase") : step.text("method");
    std::string const& audio = step.text("audio");
    return safeText(audio.empty() || audio == "sendrecv" ? label : label + " " + audio);
}

std::string farEndOf(TracedStep const& step, TracedCalls const& calls, DisplayOptions const& options)
{
    TracedCall const* const call = calls.withDialog(step.text("dialog"));
    if (call != nullptr && !call->party.empty()) {
        return addressText(call->party, options);
    }
    return step.has("peer") ? safeWord(step.text("peer")) : "the far end";
}

std::string keyNameOf(TracedStep const& step)
{
    return withLabel("key " + step.text("key"), step.text("label"));
}

std::string keyInWords(TracedStep const& step)
{
    if (step.has("hook")) {
        return wordsOf(kHookActions, step.text("hook"));
    }
    if (step.has("plug")) {
        return safeText(step.text("plug")) + " " + wordsOf(kPlugActions, step.text("action"));
    }
    return keyNameOf(step) + " " + safeText(step.text("action"));
}

std::string lampNameOf(TracedStep const& step)
{
    auto const* const own = std::find_if(std::begin(kLampsOfTheirOwn), std::end(kLampsOfTheirOwn),
                                         [&](LampOfItsOwn const& each) { return each.number == step.text("lamp"); });
    return step.text("label").empty() && own != std::end(kLampsOfTheirOwn)
               ? std::string(own->name)
               : withLabel(step.text("lamp"), step.text("label"));
}

std::string lampModeOf(TracedStep const& step)
{
    LampState lamp;
    lamp.mode = safeText(step.text("mode"));
    lamp.colour = safeText(step.text("colour"));
    return lampWords(lamp);
}

}  // namespace telephone
