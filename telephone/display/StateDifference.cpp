#include "telephone/display/StateDifference.h"

#include <algorithm>
#include <array>
#include <vector>

#include <nlohmann/json.hpp>
#include <spdlog/fmt/fmt.h>

#include "telephone/display/SafeText.h"

namespace telephone {

namespace {

using StateObject = nlohmann::json;

// Different at every moment.
constexpr std::array kPassing{"start", "event", "time", "since", "began"};

// Lists whose entries have a name of their own, by which they are compared.
struct NamedList
{
    char const* member;
    char const* entry;           // one of them, for people
    char const* name;            // the member that names it
    char const* otherName = "";  // of an entry whose name is null
};
constexpr std::array<NamedList, 5> kNamedLists{{
    {"lines", "line", "id"},
    {"calls", "call", "id"},
    {"keys", "key", "number", "function"},  // a lamp outside the keys has no number
    {"appearances", "appearance", "id"},
    {"forwarding", "forwarding", "name"},
}};

NamedList const* namedList(std::string_view member)
{
    auto const* const found = std::find_if(kNamedLists.begin(), kNamedLists.end(),
                                           [member](NamedList const& each) { return each.member == member; });
    return found == kNamedLists.end() ? nullptr : found;
}

std::string wordOf(StateObject const& value)
{
    if (value.is_string()) {
        return safeText(value.get<std::string>());
    }
    if (value.is_boolean()) {
        return value.get<bool>() ? "yes" : "no";
    }
    return value.is_null() ? "none" : value.dump();
}

// "100, 103" of a list; what is not empty of an object.
std::string wordsOf(StateObject const& value)
{
    if (!value.is_structured()) {
        return wordOf(value);
    }
    std::string words;
    for (StateObject const& each : value) {
        std::string const word = each.is_null() ? "" : wordsOf(each);
        words += (words.empty() || word.empty() ? "" : value.is_array() ? ", " : " ") + word;
    }
    return words.empty() ? "none" : words;
}

std::string nameOf(StateObject const& entry, NamedList const& list)
{
    StateObject const first = entry.value(list.name, StateObject());
    std::string const name = wordOf(first.is_null() ? entry.value(list.otherName, first) : first);
    return entry.value("over", false) ? name + " that is over" : name;  // another call may have its id
}

// The same state with its named lists as objects, and any other list as one text.
StateObject comparable(StateObject const& value)
{
    if (!value.is_object()) {
        return value;
    }
    StateObject result = StateObject::object();
    for (auto const& [name, member] : value.items()) {
        if (std::find(kPassing.begin(), kPassing.end(), name) != kPassing.end()) {
            continue;
        }
        NamedList const* const list = namedList(name);
        StateObject& made = result[name];
        if (list != nullptr && member.is_array()) {
            made = StateObject::object();
            for (StateObject const& each : member) {
                made[nameOf(each, *list)] = comparable(each);
            }
        } else {
            made = member.is_array() ? StateObject(wordsOf(member)) : comparable(member);
        }
    }
    return result;
}

std::string spaced(std::string name)
{
    std::replace(name.begin(), name.end(), '_', ' ');
    return name;
}

// "line 4711, appearance 4711#2: state" of /lines/4711/appearances/4711#2/state.
std::string placeOf(StateObject::json_pointer path)
{
    std::vector<std::string> tokens;
    for (; !path.empty(); path.pop_back()) {
        tokens.insert(tokens.begin(), path.back());
    }
    std::string place;
    for (std::size_t i = 0; i < tokens.size(); ++i) {
        bool const isLast = i + 1 == tokens.size();
        NamedList const* const list = isLast ? nullptr : namedList(tokens[i]);
        place += place.empty() ? "" : isLast ? ": " : ", ";
        place += list == nullptr ? spaced(tokens[i]) : std::string(list->entry) + " " + safeText(tokens[++i]);
    }
    return place;
}

std::string onlyIn(char const* which, StateObject const& value)
{
    std::string const state = value.is_object() && value.contains("state") ? " (" + wordOf(value["state"]) + ")" : "";
    return fmt::format("only in the {}{}", which, state);
}

Outcome<StateObject> readState(std::string_view text, char const* which)
{
    constexpr bool kThrows = false;
    StateObject state = StateObject::parse(text, nullptr, kThrows);
    if (!state.is_object() || !state.contains("lines")) {
        return refuse(RefusalKind::kBadInput,
                      fmt::format("the {} is not a state of a telephone, as the command state returns it", which));
    }
    return comparable(state);
}

TableRows differencesBetween(StateObject const& first, StateObject const& second)
{
    TableRows rows;
    for (StateObject const& each : StateObject::diff(first, second)) {
        StateObject::json_pointer const path(each.at("path").get<std::string>());
        std::string const operation = each.at("op");
        std::string what;
        if (operation == "add") {
            what = onlyIn("second", each.at("value"));
        } else if (operation == "remove") {
            what = onlyIn("first", first.at(path));
        } else {
            what = wordOf(first.at(path)) + " → " + wordOf(each.at("value"));
        }
        rows.push_back(placeOf(path) + ": " + what);
    }
    return rows;
}

}  // namespace

Outcome<TableRows> stateDifferences(std::string_view first, std::string_view second)
{
    return readState(first, "first").and_then([second](StateObject const& before) {
        return readState(second, "second").map([&before](StateObject const& after) {
            return differencesBetween(before, after);
        });
    });
}

}  // namespace telephone
