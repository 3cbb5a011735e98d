// The description as text for people.
#include "telephone/protocol/ProtocolDescription.h"

#include <algorithm>
#include <utility>

#include "telephone/base/Names.h"
#include "telephone/protocol/Phrases.h"
#include "telephone/protocol/Vocabulary.h"

namespace telephone {

namespace {

constexpr std::size_t kWidth = 100;
constexpr std::size_t kIndent = 2;

// Breaks a text at blanks; every line but the first is indented.
std::string wrapped(std::string_view text, std::size_t indent)
{
    std::string result;
    std::size_t column = indent;
    while (!text.empty()) {
        std::string_view const word = text.substr(0, text.find(' '));
        text.remove_prefix(std::min(text.size(), word.size() + 1));
        if (column > indent && column + 1 + word.size() > kWidth) {
            result += "\n" + std::string(indent, ' ');
            column = indent;
        } else if (column > indent) {
            result += ' ';
            ++column;
        }
        result += word;
        column += word.size();
    }
    return result;
}

// "  title   text", the text in a column of its own.
std::string row(std::string_view title, std::string_view text, std::size_t column)
{
    std::string line = std::string(kIndent, ' ').append(title);
    line.resize(std::max(kIndent + column, line.size() + kIndent), ' ');
    return line + wrapped(text, line.size()) + "\n";
}

// One line of the overview, which is not broken: people search it.
std::string entry(std::string_view name, std::string_view meaning)
{
    constexpr std::size_t kColumn = 38;
    std::string line = std::string(kIndent, ' ').append(name);
    line.resize(std::max(kIndent + kColumn, line.size() + kIndent), ' ');
    return line.append(meaning) + "\n";
}

std::string head(std::string_view name, std::string_view what, std::string_view meaning)
{
    return std::string(name).append(": ").append(what).append("\n  ") + wrapped(meaning, kIndent) + "\n\n";
}

template <typename Tagged>
std::size_t columnOf(Tagged const& list)
{
    constexpr std::size_t kGap = 2;
    constexpr std::size_t kLeast = 18;
    std::size_t column = kLeast;
    for (auto const& each : list) {
        column = std::max(column, each.tag.size() + kGap);
    }
    return column;
}

template <typename Element>
std::string typeOf(Element const& element)
{
    return valueForm(element, element.values != nullptr ? std::string(element.values->name) : std::string());
}

std::string textOf(EventElements const& elements)
{
    std::size_t const column = columnOf(elements);
    std::string text;
    for (auto const& element : elements) {
        text += row(element.tag, typeOf(element), column);
        text += row("", element.meaning, column);
    }
    return text;
}

std::string textOf(RequestParameters const& parameters)
{
    std::size_t const column = columnOf(parameters);
    std::string text;
    for (auto const& parameter : parameters) {
        std::string const type = typeOf(parameter);
        bool const isUsed = parameter.need != RequestNeed::unused;
        text += row(parameter.tag, isUsed ? type + "; " + std::string(needName(parameter.need)) : type, column);
        text += row("", parameter.meaning, column);
        if (isUsed) {
            text += row("", "If missing, " + missingText(parameter) + ".", column);
        }
        if (std::string const wrong = wrongText(parameter); isUsed && !wrong.empty()) {
            text += row("", "If wrong, " + wrong + ".", column);
        }
    }
    return text;
}

std::string textOf(RequestEvents const& events)
{
    std::string text;
    for (auto const event : events) {
        text.append(text.empty() ? "" : ", ").append(event);
    }
    return text.empty() ? "none" : text;
}

std::string textOf(RequestDescription const& request)
{
    constexpr std::size_t kColumn = 18;
    std::string text = head(request.name, "request", request.meaning);
    if (request.parameters.size() > 0) {
        text += textOf(request.parameters) + "\n";
    }
    text += row("What counts", request.addressing, kColumn);
    text += row("Answer", answerText(request), kColumn);
    for (auto const& element : request.answerElements) {
        std::string const type = typeOf(element);
        text += row("  " + std::string(element.tag), type + ": " + std::string(element.meaning), kColumn);
    }
    text += row("Promises", request.promise, kColumn);
    if (!request.noPromise.empty()) {
        text += row("Does not promise", request.noPromise, kColumn);
    }
    text += row("Events", textOf(request.events), kColumn);
    text += row("Sample", sampleOf(request), kColumn);
    return text;
}

std::string textOf(EventDescription const& event)
{
    std::string_view const name = event.method.empty() ? event.operation : event.method;
    std::string text = head(name, "event", event.meaning);
    if (event.elements.size() > 0) {
        text += textOf(event.elements) + "\n";
    }
    return text + row("When", event.when, columnOf(event.elements));
}

std::string textOf(CommandDescription const& command)
{
    return head(command.name, "command", command.help) + row("Write", command.name + " " + command.arguments, 8);
}

// Calls `take(where, element)` for every parameter of a request, element of an answer and element of an event.
template <typename Take>
void forEachElement(Take take)
{
    for (auto const& request : kRequestDescriptions) {
        for (auto const& parameter : request.parameters) {
            take(std::string(request.name), parameter);
        }
        for (auto const& element : request.answerElements) {
            take("answer of " + std::string(request.name), element);
        }
    }
    for (auto const& event : kEventDescriptions) {
        for (auto const& element : event.elements) {
            take(std::string(event.method), element);
        }
    }
}

std::string usesOf(Enumeration const& enumeration)
{
    std::string uses;
    forEachElement([&](std::string const& where, auto const& element) {
        if (element.values == &enumeration) {
            uses += (uses.empty() ? "" : ", ") + std::string(element.tag) + " in " + where;
        }
    });
    return uses.empty() ? "every answer that is a result word" : uses;
}

std::string textOf(Enumeration const& enumeration)
{
    std::size_t valueColumn = 0;
    std::size_t nameColumn = 0;
    for (auto const& value : enumeration) {
        valueColumn = std::max(valueColumn, textOfValue(enumeration, value).size() + kIndent);
        nameColumn = std::max(nameColumn, value.name.size() + kIndent);
    }
    std::string text = head(enumeration.name, "enumeration", enumeration.meaning);
    for (auto const& value : enumeration) {
        std::string title = textOfValue(enumeration, value);
        title.resize(valueColumn, ' ');
        text += row(title.append(value.name), value.meaning, valueColumn + nameColumn);
    }
    return text + "\n" + row("Used by", usesOf(enumeration), 9);
}

std::string textOf(Enumeration const& enumeration, EnumerationValue const& value)
{
    std::string const title = std::string(enumeration.name) + " " + textOfValue(enumeration, value);
    return head(title, value.name, value.meaning) + row("Used by", usesOf(enumeration), 9);
}

void append(std::string& text, std::string const& part)
{
    text += (text.empty() || part.empty() ? "" : "\n") + part;
}

bool isNamed(EventDescription const& event, std::string_view name)
{
    return equalIgnoringCase(event.operation, name) ||
           (!event.method.empty() && equalIgnoringCase(event.method, name)) ||
           equalIgnoringCase(event.method, std::string(name) + "Event");
}

// Where a tag occurs, and what it means there.
std::string occurrencesOf(std::string_view tag)
{
    std::string text;
    forEachElement([&](std::string const& where, auto const& element) {
        if (equalIgnoringCase(element.tag, tag)) {
            text += row("in " + where, typeOf(element), 0);
            text += row("", element.meaning, kIndent * 2);
        }
    });
    return text.empty() ? text : std::string(tag) + ": element\n" + text;
}

// The enumerations of an element or of that name, each once.
std::vector<Enumeration const*> enumerationsOf(std::string_view name)
{
    std::vector<Enumeration const*> found;
    auto const add = [&found](Enumeration const* enumeration) {
        if (enumeration != nullptr && std::find(found.begin(), found.end(), enumeration) == found.end()) {
            found.push_back(enumeration);
        }
    };
    for (auto const* const enumeration : kEnumerations) {
        add(equalIgnoringCase(enumeration->name, name) ? enumeration : nullptr);
    }
    forEachElement([&](std::string const& /*where*/, auto const& element) {
        add(equalIgnoringCase(element.tag, name) ? element.values : nullptr);
    });
    return found;
}

// "CallState 6", "Reason busy".
Outcome<std::string> valueOfName(std::string_view name)
{
    auto const blank = name.find(' ');
    auto const enumerations = enumerationsOf(name.substr(0, blank));
    if (blank == std::string_view::npos || enumerations.empty()) {
        return std::string();
    }
    std::string text;
    Outcome<EnumerationValue const*> value;
    for (auto const* const enumeration : enumerations) {
        value = findValue(*enumeration, name.substr(blank + 1));
        if (value) {
            append(text, textOf(*enumeration, **value));
        }
    }
    return text.empty() ? Outcome<std::string>(tl::make_unexpected(value.error())) : text;
}

// Every value that is called so.
std::string valuesNamed(std::string_view name)
{
    bool const isNumber = name.find_first_not_of("-0123456789") == std::string_view::npos;
    std::string text;
    for (auto const* const enumeration : kEnumerations) {
        EnumerationValue const* const value = isNumber ? nullptr : lookUpValue(*enumeration, name);
        append(text, value != nullptr ? textOf(*enumeration, *value) : "");
    }
    return text;
}

}  // namespace

ProtocolDescription::ProtocolDescription(std::string version, std::vector<CommandDescription> commands)
    : version_(std::move(version))
    , commands_(std::move(commands))
{}

std::string ProtocolDescription::overview() const
{
    std::string text = "The protocol of telephone " + version_ + "\n\nRequests\n";
    for (auto const& request : kRequestDescriptions) {
        text += entry(request.name, request.meaning);
    }
    text += "\nEvents\n";
    for (auto const& event : kEventDescriptions) {
        std::string_view const name = event.method.empty() ? event.operation : event.method;
        bool const isSent = event.source == EventSource::telephone;
        text += entry(name, std::string(event.meaning) + (isSent ? "" : " Not sent by this telephone."));
    }
    text += "\nEnumerations\n";
    for (auto const* const enumeration : kEnumerations) {
        text += entry(enumeration->name, enumeration->meaning);
    }
    text += commands_.empty() ? "" : "\nCommands\n";
    for (auto const& command : commands_) {
        text += entry(command.name + " " + command.arguments, command.help);
    }
    return text;
}

std::string ProtocolDescription::commandList() const
{
    constexpr std::size_t kColumn = 32;
    std::string text;
    for (auto const& command : commands_) {
        std::string const title = command.arguments.empty() ? command.name : command.name + " " + command.arguments;
        bool const fits = title.size() + kIndent <= kColumn;
        text += fits ? "" : std::string(kIndent, ' ') + title + "\n";
        text += row(fits ? title : "", command.help, kColumn);
    }
    return text;
}

Outcome<std::string> ProtocolDescription::describe(std::string_view name) const
{
    std::string text;
    for (auto const& request : kRequestDescriptions) {
        append(text, equalIgnoringCase(request.name, name) ? textOf(request) : "");
    }
    for (auto const& event : kEventDescriptions) {
        append(text, isNamed(event, name) ? textOf(event) : "");
    }
    for (auto const& command : commands_) {
        append(text, equalIgnoringCase(command.name, name) ? textOf(command) : "");
    }
    for (auto const* const enumeration : kEnumerations) {
        append(text, equalIgnoringCase(enumeration->name, name) ? textOf(*enumeration) : "");
    }
    append(text, occurrencesOf(name));
    append(text, valuesNamed(name));
    if (!text.empty()) {
        return text;
    }
    auto const value = valueOfName(name);
    if (!value || !value->empty()) {
        return value;
    }
    return refuse(RefusalKind::kNotFound, "\"" + std::string(name) +
                                              "\" is not a request, event, command, enumeration, element or word" +
                                              suggestion(name, names()));
}

std::vector<std::string_view> ProtocolDescription::names() const
{
    std::vector<std::string_view> names = namesOf(kRequestDescriptions, &RequestDescription::name);
    for (auto const& event : kEventDescriptions) {
        names.push_back(event.method.empty() ? event.operation : event.method);
    }
    for (auto const& command : commands_) {
        names.emplace_back(command.name);
    }
    forEachElement([&names](std::string const& /*where*/, auto const& element) { names.push_back(element.tag); });
    for (auto const* const enumeration : kEnumerations) {
        names.push_back(enumeration->name);
        auto const values = namesOf(*enumeration, &EnumerationValue::name);
        names.insert(names.end(), values.begin(), values.end());
    }
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

}  // namespace telephone
