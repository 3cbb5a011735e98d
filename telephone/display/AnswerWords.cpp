#include "telephone/display/AnswerWords.h"

#include <vector>

#include <spdlog/fmt/fmt.h>
#include <spdlog/fmt/ranges.h>

#include "telephone/display/ElementWords.h"
#include "telephone/display/SafeText.h"
#include "telephone/protocol/MessageText.h"
#include "telephone/protocol/Vocabulary.h"

namespace telephone {

namespace {

constexpr std::string_view kFailure = "sfiFailure";  // the answer to a request that cannot be run

struct DeviceKind
{
    std::string_view opening;  // of its text in an answer
    std::string_view name;
};

constexpr DeviceKind kDeviceKinds[] = {
    {"<prime:", "line"},
    {"<groupPickup:", "group pickup"},
};

std::string resultWord(std::string_view word)
{
    EnumerationValue const* const result = enumerations::kResult.findWord(word);
    return result != nullptr ? std::string(result->name) : safeText(word);
}

// "<prime:4711><groupPickup:*98>"; the whole text for any other form.
std::string deviceWords(std::string_view answer)
{
    std::vector<std::string> devices;
    std::string_view rest = answer;
    for (auto end = rest.find('>'); end != std::string_view::npos; end = rest.find('>')) {
        for (auto const& [opening, name] : kDeviceKinds) {
            if (rest.starts_with(opening)) {
                devices.push_back(
                    fmt::format("{} {}", name, safeWord(rest.substr(opening.size(), end - opening.size()))));
            }
        }
        rest.remove_prefix(end + 1);
    }
    return devices.empty() ? safeText(answer) : fmt::format("{}", fmt::join(devices, ", "));
}

std::string joinedWords(MessageWords const& words)
{
    std::string const details = words.detailText();
    return words.what.empty() || details.empty() ? words.what + details : words.what + ", " + details;
}

// The result word stands before the comma, or nowhere; the value is the only element.
std::string valueWords(RequestDescription const& request, std::string_view result, std::string_view value,
                       DisplayOptions const& options)
{
    std::string const what = result.empty() ? "" : resultWord(result);
    return joinedWords(elementWords(request.name, what, {{request.answerElements.begin(), value}}, options));
}

std::string allElementWords(RequestDescription const& request, std::string_view answer, DisplayOptions const& options)
{
    std::vector<EventValue> values;
    std::string_view rest = answer;
    for (auto const& element : request.answerElements) {
        auto const taken = takeElement(rest);
        if (!taken || taken->name != element.tag) {
            return safeText(answer);
        }
        values.push_back({&element, taken->value});
    }
    return joinedWords(elementWords(request.name, "", values, options));
}

std::string wordsFor(RequestDescription const& request, std::string_view answer, DisplayOptions const& options)
{
    switch (request.answer) {
    case RequestAnswer::wordAndValue: {
        auto const comma = answer.find(',');
        return comma == std::string_view::npos
                   ? resultWord(answer)
                   : valueWords(request, answer.substr(0, comma), answer.substr(comma + 1), options);
    }
    case RequestAnswer::truth:
        return answer == kFailure ? resultWord(answer) : valueWords(request, "", answer, options);
    case RequestAnswer::elements:
        return answer == kFailure ? resultWord(answer) : allElementWords(request, answer, options);
    case RequestAnswer::texts:
        return answer == kFailure ? resultWord(answer) : deviceWords(answer);
    case RequestAnswer::resultWord:
    case RequestAnswer::fixedText:
    case RequestAnswer::nothing:
        break;
    }
    return resultWord(answer);
}

}  // namespace

AnswerWords answerWords(RequestDescription const* request, std::optional<std::string_view> answer,
                        DisplayOptions const& options)
{
    if (!answer) {
        return {"finished", false};
    }
    return {request != nullptr ? wordsFor(*request, *answer, options) : resultWord(*answer), reportsFailure(*answer)};
}

}  // namespace telephone
